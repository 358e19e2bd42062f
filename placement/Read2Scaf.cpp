#include "placement/Read2Scaf.h"

#include <cassert>
#include <utility>

#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "kmer/machine.h"
#include "placement/batchScan.h"
#include "placement/engine.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

// Writes the reverse complement of the `length` characters at `source` to `target`.
VELK_VECTORISED void reverseComplement(char* __restrict target, const char* __restrict source,
                                       std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const char upper = static_cast<char>(source[length - 1 - i] & 0xDF);
    target[i] = upper == 'A' ? 'T' : upper == 'C' ? 'G' : upper == 'G' ? 'C' : 'A';
  }
}

// velk's own sink: writes records to row t, and drops the rest.
struct RowSink {
  static constexpr bool kTakesRefusals = false;

  int t;
  uint32_t& n;  // of the row's records

  void found(const Found& found, const std::string& bases) {
    const auto& [kind, gap, position, unmoved] = found.place;
    const ContigInfo& behind = scaffoldInfo[found.hit.scaffold].contigsInfo[gap];
    recordFound(t, n, bases,
                {found.hit.scaffold, gap - 1, position, behind.frontGapNum, behind.frontGapSize});
  }
  static void anchored(const Anchored&) {}
};

// Reads that are given one by one: nothing is known of them.
struct Given {
  Engine engine = engineOfRun();
  Engine::Prepared unknown{};
  RowSink sink;

  ReadStrand<Engine> strandOf(const std::string& read) { return {engine, unknown, read, {}}; }

  int64_t place(Direction direction, const std::string& anchor, const std::string& mate) {
    ReadStrand<Engine> anchorRead = strandOf(anchor);
    ReadStrand<Engine> mateRead = strandOf(mate);
    return placePair(direction, anchorRead, mateRead, scaffoldInfo, optionsOfRun(), sink);
  }
};

}  // namespace

PlacementOptions optionsOfRun() {
  const bool areOutward = insertLength > kLongestShortInsert;
  return {Kmer, insertLength, BIGGAPLEN, readLen, mapCut, OverRatio, areOutward};
}

Engine engineOfRun() {
#ifdef VELK_PLAIN_ENGINE
  assert(kmerHash != nullptr);
  return {PlainIndex(*kmerHash, scaffoldInfo, scaffoldSum, Kmer), Kmer};
#else
  assert(seedIndex != nullptr);
  return {*seedIndex, Kmer};
#endif
}

void FindReads(int t) {
  Engine engine = engineOfRun();
  uint32_t n = 0;
  RowSink sink{t, n};
  const Batch batch{readsA, readsB, bufferNum, t, threadNum, scaffoldInfo, optionsOfRun()};
  scanBatch(engine, batch, sink);
  foundReadNum[t] = n;
}

void checkSingleRead(int64_t& i, const std::string& read, uint32_t& n, int t) {
  Given given{.sink = {t, n}};
  ReadStrand<Engine> strand = given.strandOf(read);
  i = placeSingle(strand, scaffoldInfo, optionsOfRun(), given.sink);
}

void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = Given{.sink = {t, n}}.place(Direction::kForward, anchor, mate);
}

void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = Given{.sink = {t, n}}.place(Direction::kReverse, anchor, mate);
}

void ReverseComplementSeq(std::string& dest, const std::string& src) {
  assert(dest.size() == src.size());
  reverseComplement(dest.data(), src.data(), src.size());
}

void LongReverseComplement(std::string& a, std::string& b) {
  assert(&a != &b);
  std::string ofA(a.size(), 'A');
  ReverseComplementSeq(ofA, a);
  a.resize(b.size());
  ReverseComplementSeq(a, b);
  b = std::move(ofA);
}

int MapRead2Lcontig(const std::string& contig, const std::string& read, int64_t offset) {
  return checkOverRightEnd(contig, read, offset, optionsOfRun()) == Refusal::kNone ? 1 : 0;
}

int MapRead2Rcontig(const std::string& contig, const std::string& read, int64_t offset) {
  return checkOverLeftEnd(contig, read, offset, optionsOfRun()) == Refusal::kNone ? 1 : 0;
}

int MapRead2Contig(const std::string& contig, const std::string& read, int64_t offset) {
  return checkOnContig(contig, read, offset, optionsOfRun()) == Refusal::kNone ? 1 : 0;
}

}  // namespace velk
