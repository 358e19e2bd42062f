#include "placement/edgeCheck.h"
#include "placement/lengths.h"
#include "placement/verdict.h"

namespace velk {
namespace {

Verdict refusedFor(Refusal reason) {
  Verdict verdict;
  verdict.refusal = reason;
  return verdict;
}

}  // namespace

Verdict judgeSingle(const Hit& hit, const std::string& read, const ScaffoldInfo& info,
                    const PlacementOptions& options) {
  const ContigInfo& contig = info.contigsInfo[hit.contig];
  // KEPT: a read that starts on the contig's first base is not placed
  // (CheckSingleRead.OffsetZeroIsPassedOver)
  if (hit.offset == 0) return refusedFor(Refusal::kAtFirstBase);
  const bool isRightEnd = hit.offset > 0;
  const bool hasGap = isRightEnd ? hit.contig + 1 < info.contigsSum : hit.contig >= 1;
  if (!hasGap) return refusedFor(Refusal::kNoGap);

  Verdict verdict;
  if (isRightEnd) {
    verdict.refusal = checkOverRightEnd(contig.contigSeq, read, hit.offset, options);
    verdict.add(RecordKind::kEdge, hit.contig + 1, hit.offset - lengthOf(contig.contigSeq));
  } else {
    verdict.refusal = checkOverLeftEnd(contig.contigSeq, read, hit.offset, options);
    verdict.add(RecordKind::kEdge, hit.contig, hit.offset + gapBefore(contig));
  }
  return verdict;
}

}  // namespace velk
