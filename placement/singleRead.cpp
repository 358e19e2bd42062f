#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/gapRecord.h"
#include "placement/kmerWalk.h"

namespace velk {

void checkSingleRead(int64_t& i, const std::string& read, uint32_t& n, int t) {
  KmerWalk(*kmerHash, Kmer).uniqueHits(read, i, [&](const Hit& hit) {
    const ScaffoldInfo& info = scaffoldInfo[hit.scaffold];
    const ContigInfo& contig = info.contigsInfo[hit.contig];
    const bool hasGapBehind = hit.contig + 1 < info.contigsSum;
    const bool hasGapBefore = hit.contig >= 1;

    // KEPT: a read that starts on the contig's first base is not placed
    // (CheckSingleRead.OffsetZeroIsPassedOver)
    if (hit.offset > 0 && hasGapBehind) {
      if (MapRead2Lcontig(contig.contigSeq, read, hit.offset) == 0) return Walk::kGoOn;
      recordAtGap(t, n, read, hit.scaffold, hit.contig + 1,
                  hit.offset - lengthOf(contig.contigSeq));
      return Walk::kStop;
    }
    if (hit.offset < 0 && hasGapBefore) {
      if (MapRead2Rcontig(contig.contigSeq, read, hit.offset) == 0) return Walk::kGoOn;
      recordAtGap(t, n, read, hit.scaffold, hit.contig, hit.offset + gapBefore(contig));
      return Walk::kStop;
    }
    return Walk::kGoOn;
  });
}

}  // namespace velk
