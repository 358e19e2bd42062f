#include "run/gapWatch.h"

#include <algorithm>

#include "placement/lengths.h"

namespace velk::run {

void GapWatch::refused(const Refused& refused, int64_t length, int64_t mateLength) {
  const Hit& hit = refused.hit;
  switch (refused.reason) {
    case Refusal::kNone:
    case Refusal::kNoGap:
    case Refusal::kAtFirstBase:
      return;
    case Refusal::kInsideContig:
      isAccepted_ = true;
      place(hit, length);
      return;
    case Refusal::kSmallGap:
      place(hit, length);
      break;
    case Refusal::kShortOverlap:
    case Refusal::kUnlike:
      break;
  }
  const ScaffoldInfo& info = assembly_.model()[hit.scaffold];
  // 1. The read itself runs over an end of the contig.
  if (hit.offset < 0 && hit.contig > 0) note(hit.scaffold, hit.contig, refused.reason);
  const bool isOverRight = hit.offset + length > lengthOf(info.contigsInfo[hit.contig].bases());
  if (isOverRight && hit.contig + 1 < info.contigsSum) {
    note(hit.scaffold, hit.contig + 1, refused.reason);
  }
  // 2. Its mate would lie in the gap.
  if (mateLength == 0 || refused.gap == 0) return;
  const int64_t gapLength = gapBefore(info.contigsInfo[refused.gap]);
  if (-mateLength < refused.matePosition && refused.matePosition < gapLength) {
    note(hit.scaffold, refused.gap, refused.reason);
  }
}

void GapWatch::note(uint64_t scaffold, uint64_t contigBehind, Refusal why) {
  const AtGap here{assembly_.gapInFront(scaffold, contigBehind), why};
  if (std::find(refused_.begin(), refused_.end(), here) == refused_.end()) {
    refused_.push_back(here);
  }
}

void GapWatch::anchored(const Hit& hit, int64_t length) {
  isAccepted_ = true;
  place(hit, length);
}

void GapWatch::place(const Hit& hit, int64_t length) {
  if (isPlaced_) return;
  isPlaced_ = true;
  const ScaffoldInfo& info = assembly_.model()[hit.scaffold];
  const int64_t behind =
      lengthOf(info.contigsInfo[hit.contig].bases()) - hit.offset - length;  // to the right end
  if (hit.offset < Evidence::kFlankBases && hit.contig > 0) {
    evidence_.addFlankRead(assembly_.gapInFront(hit.scaffold, hit.contig));
  }
  if (behind < Evidence::kFlankBases && hit.contig + 1 < info.contigsSum) {
    evidence_.addFlankRead(assembly_.gapInFront(hit.scaffold, hit.contig + 1));
  }
}

void GapWatch::endEntry(bool isFound) {
  if (isFound || isPlaced_) ++placedEntries_;
  if (!isFound && !isAccepted_) {
    for (const AtGap& one : refused_) evidence_.addRefused(one.gap, library_, one.why);
  }
  refused_.clear();
  isPlaced_ = false;
  isAccepted_ = false;
}

}  // namespace velk::run
