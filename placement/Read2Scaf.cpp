#include "placement/Read2Scaf.h"

#include "contig/contig.h"
#include "driver/velk.h"
#include "placement/batchScan.h"
#include "placement/edgeCheck.h"
#include "placement/engine.h"
#include "placement/place.h"
#include "placement/reverseComplement.h"
#include "placement/rowSink.h"
#include "streaming/readBuffer.h"

namespace velk {
namespace {

// A read as it is passed, of which nothing is known.
class GivenRead {
 public:
  GivenRead(Engine& engine, const std::string& bases) : engine_(engine), bases_(bases) {}

  std::size_t size() const { return bases_.size(); }
  const std::string& bases() const { return bases_; }
  const Origin& origin() const { return origin_; }
  Engine::Windows windows() { return engine_.windows(unknown_, bases_, false); }

 private:
  Engine& engine_;
  const std::string& bases_;
  Origin origin_{};
  Engine::Prepared unknown_{};
};

int64_t placeGiven(Direction direction, const std::string& anchor, const std::string& mate,
                   uint32_t& n, int t) {
  Engine engine = engineOfRun();
  RowSink sink(t, n, scaffoldInfo);
  GivenRead anchorRead(engine, anchor);
  GivenRead mateRead(engine, mate);
  return placePair(direction, anchorRead, mateRead, scaffoldInfo, optionsOfRun(), sink);
}

int asNumber(Refusal refusal) {
  return refusal == Refusal::kNone ? 1 : 0;
}

}  // namespace

PlacementOptions optionsOfRun() {
  return {Kmer, insertLength, BIGGAPLEN, readLen, mapCut, OverRatio};
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
  GivenRead given(engine, read);
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
  reverseComplement(dest.data(), src.data(), src.size());
}

void LongReverseComplement(std::string& a, std::string& b) {
  a.swap(b);
  reverseComplementInPlace(a.data(), a.size());
  reverseComplementInPlace(b.data(), b.size());
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
