#include "placement/Read2Scaf.h"

#include <cassert>

#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "placement/batchScan.h"
#include "placement/engine.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

// velk's own sink: writes records to row t, and ignores the rest.
struct RowSink {
  static constexpr bool kTakesRefusals = false;

  int t;
  uint32_t& n;  // of the row's records

  void found(const Found& found, const std::string& bases) {
    const auto& [kind, gap, position, unmoved] = found.place;
    const ContigInfo& right = scaffoldInfo[found.hit.scaffold].contigsInfo[gap];
    recordFound(t, n, bases,
                {found.hit.scaffold, gap - 1, position, right.frontGapNum, right.frontGapSize});
  }
  static void anchored(const Anchored&) {}
};

// Places a pair that is not prepared.
int64_t placeOnePair(Direction direction, const std::string& anchor, const std::string& mate,
                     RowSink sink) {
  Engine engine = engineOfRun();
  Engine::Prepared unprepared{};
  ReadStrand<Engine> anchorRead(engine, unprepared, anchor, {});
  ReadStrand<Engine> mateRead(engine, unprepared, mate, {});
  return placePair(direction, anchorRead, mateRead, scaffoldInfo, optionsOfRun(), sink);
}

}  // namespace

PlacementOptions optionsOfRun() {
  const bool areOutward = insertLength > kLongestShortInsert;
  return {Kmer, insertLength, BIGGAPLEN, readLen, mapCut, OverRatio, areOutward};
}

Engine engineOfRun() {
#ifdef VELK_PLAIN_ENGINE
  assert(kmerHash != nullptr);
  return {PlainIndex(*kmerHash, scaffoldInfo, scaffoldSum), Kmer};
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
  Engine engine = engineOfRun();
  Engine::Prepared unprepared{};
  ReadStrand<Engine> strand(engine, unprepared, read, {});
  RowSink sink{t, n};
  i = placeSingle(strand, scaffoldInfo, optionsOfRun(), sink);
}

void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = placeOnePair(Direction::kForward, anchor, mate, RowSink{t, n});
}

void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = placeOnePair(Direction::kReverse, anchor, mate, RowSink{t, n});
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
