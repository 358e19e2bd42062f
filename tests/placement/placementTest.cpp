#include "tests/placement/placementTest.h"

#include <ostream>
#include <utility>

#include "contig/contig.h"
#include "kmer/plainIndex.h"
#include "placement/Read2Scaf.h"
#include "streaming/readBuffer.h"

namespace velk::test {
namespace {

// Rows as small as those of a run with this many workers: 101 entries, 303 records.
constexpr int kWorkersOfSmallRows = bufferSize / 100;

constexpr uint64_t kSlots = 4096;  // of the plain engine's table, at first

constexpr int64_t kNotSet = -77;  // a value of i that no walk returns

}  // namespace

HashSet* plainHash = nullptr;

void PrintTo(const TestRecord& record, std::ostream* out) {
  *out << "{" << record.read << ", scaffold " << record.scaffold << ", contig "
       << record.frontContig << ", position " << record.positionInGap << ", gap " << record.gapNum
       << " of " << static_cast<int64_t>(record.gapsSize) << "}";
}

std::string withMismatches(std::string bases, const std::vector<std::size_t>& at) {
  for (const std::size_t i : at) bases[i] = bases[i] == 'A' ? 'C' : 'A';
  return bases;
}

std::string readAt(const std::string& contig, int64_t offset, int64_t length) {
  std::string read = randomBases(static_cast<std::size_t>(length), 4711);
  const auto bases = static_cast<int64_t>(contig.size());
  for (int64_t i = 0; i < length; ++i) {
    const int64_t at = offset + i;
    if (at < 0 || at >= bases) continue;
    read[static_cast<std::size_t>(i)] = contig[static_cast<std::size_t>(at)];
  }
  return read;
}

PlacementTest::PlacementTest() {
  setWorkers(1);
}

PlacementTest::~PlacementTest() {
  unload();
  releaseRows(workers_);
  readsA = readsB = nullptr;
}

void PlacementTest::unload() {
  releaseAssembly();
  if (plainHash != nullptr) free_hash(plainHash);
  plainHash = nullptr;
}

void PlacementTest::assemble(const std::vector<TestScaffold>& scaffolds) {
  unload();
  load(scaffolds);
  plainHash = init_hashset(kSlots, LoadFactor);
  addContigKmers(plainHash, scaffoldInfo, scaffoldSum);
}

void PlacementTest::makeParameters(const PlainSettings& settings) {
  Kmer = settings.kmer;
  OverRatio = settings.overRatio;
  mapCut = settings.mapCut;
  readLen = settings.readLength;
  CONTIGLEN = settings.shortestContig;
  BIGGAPLEN = settings.bigGap;
  insertLength = settings.insert;
}

void PlacementTest::setWorkers(int workers) {
  if (workers_ != 0) releaseRows(workers_);
  workers_ = thread_num = threadNum = workers;
  allocateWorkerArrays(workers);
  for (int t = 0; t < workers; ++t) allocateRow(t, kWorkersOfSmallRows);
}

Outcome PlacementTest::single(const std::string& read) {
  int64_t stop = kNotSet;
  uint32_t n = 0;
  checkSingleRead(stop, read, n, 0);
  return {stop, recordsOf(0, n)};
}

Outcome PlacementTest::forward(const std::string& anchor, const std::string& mate) {
  int64_t stop = kNotSet;
  uint32_t n = 0;
  checkForwardRead(stop, anchor, mate, n, 0);
  return {stop, recordsOf(0, n)};
}

Outcome PlacementTest::reverse(const std::string& anchor, const std::string& mate) {
  int64_t stop = kNotSet;
  uint32_t n = 0;
  checkReverseRead(stop, anchor, mate, n, 0);
  return {stop, recordsOf(0, n)};
}

void PlacementTest::setBatch(std::vector<std::string> reads) {
  first_ = std::move(reads);
  readsA = first_.data();
  readsB = nullptr;
  bufferNum = static_cast<int>(first_.size());
}

void PlacementTest::setBatch(std::vector<std::string> first, std::vector<std::string> second) {
  first_ = std::move(first);
  second_ = std::move(second);
  readsA = first_.data();
  readsB = second_.data();
  bufferNum = static_cast<int>(first_.size());
}

std::vector<TestRecord> PlacementTest::scan(int t) {
  FindReads(t);
  return recordsOf(t, foundReadNum[t]);
}

}  // namespace velk::test
