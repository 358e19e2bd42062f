#include "placement/Read2Scaf.h"

#include <cassert>
#include <utility>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "placement/batchScan.h"
#include "placement/edgeCheck.h"
#include "placement/engine.h"
#include "placement/place.h"
#include "placement/readStrand.h"
#include "placement/reverseComplement.h"
#include "placement/sink.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

// velk's own sink: writes records to a worker's row and drops the rest.
class RowSink {
 public:
  static constexpr bool kTakesRefusals = false;

  // Writes to row t from slot n on; n (inout) counts the row's records.
  RowSink(int t, uint32_t& n, const ScaffoldInfo* scaffolds)
      : t_(t), n_(n), scaffolds_(scaffolds) {}

  void found(const Found& found, const std::string& bases) {
    const auto& [kind, gap, position, unmoved] = found.place;
    const ContigInfo& behind = scaffolds_[found.hit.scaffold].contigsInfo[gap];
    recordFound(t_, n_, bases,
                {found.hit.scaffold, gap - 1, position, behind.frontGapNum, behind.frontGapSize});
  }

  static void anchored(const Anchored&) {}

 private:
  int t_;
  uint32_t& n_;
  const ScaffoldInfo* scaffolds_;
};

using GivenRead = ReadStrand<Engine>;

int64_t placeGiven(Direction direction, const std::string& anchor, const std::string& mate,
                   uint32_t& n, int t) {
  Engine engine = engineOfRun();
  RowSink sink(t, n, scaffoldInfo);
  Engine::Prepared unknown;
  GivenRead anchorRead(engine, unknown, anchor, {});
  GivenRead mateRead(engine, unknown, mate, {});
  return placePair(direction, anchorRead, mateRead, scaffoldInfo, optionsOfRun(), sink);
}

int asNumber(Refusal refusal) {
  return refusal == Refusal::kNone ? 1 : 0;
}

}  // namespace

PlacementOptions optionsOfRun() {
  return {Kmer,
          insertLength,
          BIGGAPLEN,
          readLen,
          mapCut,
          OverRatio,
          insertLength > kLongestShortInsert};
}

Engine engineOfRun() {
#ifdef VELK_PLAIN_ENGINE
  return {PlainIndex(*kmerHash, scaffoldInfo, scaffoldSum, Kmer), Kmer};
#else
  assert(seedIndex != nullptr);
  return {*seedIndex, Kmer};
#endif
}

void FindReads(int t) {
  Engine engine = engineOfRun();
  uint32_t n = 0;
  RowSink sink(t, n, scaffoldInfo);
  const Batch batch{readsA, readsB, bufferNum, t, threadNum, scaffoldInfo, optionsOfRun()};
  scanBatch(engine, batch, sink);
  foundReadNum[t] = n;
}

void checkSingleRead(int64_t& i, const std::string& read, uint32_t& n, int t) {
  Engine engine = engineOfRun();
  RowSink sink(t, n, scaffoldInfo);
  Engine::Prepared unknown;
  GivenRead given(engine, unknown, read, {});
  i = placeSingle(given, scaffoldInfo, optionsOfRun(), sink);
}

void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = placeGiven(Direction::kForward, anchor, mate, n, t);
}

void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  i = placeGiven(Direction::kReverse, anchor, mate, n, t);
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
  return asNumber(checkOverRightEnd(contig, read, offset, optionsOfRun()));
}

int MapRead2Rcontig(const std::string& contig, const std::string& read, int64_t offset) {
  return asNumber(checkOverLeftEnd(contig, read, offset, optionsOfRun()));
}

int MapRead2Contig(const std::string& contig, const std::string& read, int64_t offset) {
  return asNumber(checkOnContig(contig, read, offset, optionsOfRun()));
}

}  // namespace velk
