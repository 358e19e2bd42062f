#include "placement/verdict.h"

namespace velk {
namespace {

// An anchor on its contig, and the fragment it begins or ends.
struct Anchor {
  const ScaffoldInfo& info;  // scaffold of the hit
  uint64_t contig;           // index of the contig in it
  int64_t offset;            // contig position of the anchor's first base
  int64_t length;            // bases of the anchor
  int64_t mateLength;        // bases of the mate
  int64_t insert;            // bases of the whole fragment, both reads included

  int64_t contigLength(uint64_t index) const { return lengthOf(info.contigsInfo[index].bases()); }
  int64_t gapLength(uint64_t index) const { return gapBefore(info.contigsInfo[index]); }
};

// Where the mate of an anchor is expected.
struct MateGeometry {
  uint64_t gap;              // the gap next to the anchor's contig
  int64_t position;          // of the mate in it
  bool mayRunOverRightEdge;  // whether the anchor may be recorded in its contig's right gap
  bool hasFarGap;            // whether a gap follows beyond the neighbouring contig
  uint64_t between;          // that contig; the members below are 0 without such a gap
  uint64_t farGap = 0;
  int64_t farPosition = 0;  // of the mate in it
};

// The mate lies to the right of the contig: the fragment begins with the anchor's first base.
MateGeometry forwardGeometry(const Anchor& anchor) {
  const uint64_t c = anchor.contig;
  const int64_t position =
      anchor.offset + anchor.insert - anchor.mateLength - anchor.contigLength(c);
  MateGeometry mate{c + 1, position, true, c + 2 < anchor.info.contigsSum, c + 1};
  if (mate.hasFarGap) {
    mate.farGap = c + 2;
    mate.farPosition = position - anchor.gapLength(mate.gap) - anchor.contigLength(mate.between);
  }
  return mate;
}

// The mate lies to the left of the contig: the fragment ends with the anchor's last base.
MateGeometry reverseGeometry(const Anchor& anchor) {
  const uint64_t c = anchor.contig;
  const int64_t position = anchor.gapLength(c) + anchor.offset + anchor.length - anchor.insert;
  // KEPT: narrower than the forward rule, the gap to the right of the last but one contig is left
  // out (CheckReverseRead.AnchorOverTheRightEdgeOfTheLastButOneContig)
  const bool mayRunOverRightEdge = c < anchor.info.contigsSum - 2U;
  MateGeometry mate{c, position, mayRunOverRightEdge, c >= 2, c - 1};
  if (mate.hasFarGap) {
    mate.farGap = c - 1;
    mate.farPosition = anchor.gapLength(mate.farGap) + anchor.contigLength(mate.between) + position;
  }
  return mate;
}

// `position` moved to the nearer end of a gap of `gapLength` bases when the mate would miss the gap
// by up to two k-mers.
int64_t snapped(int64_t position, int64_t mateLength, int64_t gapLength, int kmer) {
  const int64_t tolerance = 2 * int64_t{kmer};
  if (-tolerance - mateLength < position && position <= -mateLength) position = -mateLength;
  if (position >= gapLength && position < gapLength + tolerance) position = gapLength;
  return position;
}

// Whether the mate lies in the far gap, beyond a short contig between long neighbours. In both
// directions the mate must end on the gap's first base or after it, and start before its end.
bool reachesFarGap(const Anchor& anchor, const MateGeometry& mate, int readLength) {
  if (!mate.hasFarGap) return false;
  const int64_t twoReads = 2 * int64_t{readLength};
  const int64_t farGapLength = anchor.gapLength(mate.farGap);
  return twoReads > anchor.contigLength(mate.between) && twoReads < farGapLength &&
         twoReads < anchor.contigLength(anchor.contig) &&
         mate.farPosition + anchor.mateLength > 0 && mate.farPosition < farGapLength;
}

// The records of the mate, in the gap next to the anchor's contig and in the one beyond.
void addMate(Verdict& verdict, const Anchor& anchor, const MateGeometry& mate,
             const PlacementOptions& options) {
  const int64_t gapLength = anchor.gapLength(mate.gap);
  const int64_t position = snapped(mate.position, anchor.mateLength, gapLength, options.kmer);
  if (-anchor.mateLength <= position && position <= gapLength) {
    verdict.add(RecordKind::kMate, mate.gap, position, position - mate.position);
  }
  if (reachesFarGap(anchor, mate, options.readLength)) {
    verdict.add(RecordKind::kGapBeyond, mate.farGap, mate.farPosition);
  }
}

// The record of the anchor itself, if it reaches into a gap.
void addAnchor(Verdict& verdict, const Anchor& anchor, bool mayRunOverRightEdge) {
  const int64_t contigLength = anchor.contigLength(anchor.contig);
  const int64_t end = anchor.length + anchor.offset;
  if (anchor.offset > 0 && end > contigLength && mayRunOverRightEdge) {
    verdict.add(RecordKind::kAnchor, anchor.contig + 1, anchor.offset - contigLength);
  } else if (anchor.offset < 0 && end >= 1 && anchor.contig >= 1) {
    verdict.add(RecordKind::kAnchor, anchor.contig,
                anchor.gapLength(anchor.contig) + anchor.offset);
  }
}

}  // namespace

Verdict judgeSingle(const Hit& hit, const std::string& read, const ScaffoldInfo& info,
                    const PlacementOptions& options) {
  const ContigInfo& contig = info.contigsInfo[hit.contig];
  // KEPT: a read that starts on the contig's first base is not placed
  // (CheckSingleRead.OffsetZeroIsNotPlaced)
  if (hit.offset == 0) return {.refusal = Refusal::kAtFirstBase};
  const bool isRightEnd = hit.offset > 0;
  const bool hasGap = isRightEnd ? hit.contig + 1 < info.contigsSum : hit.contig >= 1;
  if (!hasGap) return {.refusal = Refusal::kNoGap};

  Verdict verdict{.gap = isRightEnd ? hit.contig + 1 : hit.contig};
  const auto check = isRightEnd ? checkOverRightEnd : checkOverLeftEnd;
  verdict.refusal = check(contig.bases(), read, hit.offset, options);
  const int64_t gapStart = isRightEnd ? lengthOf(contig.bases()) : -gapBefore(contig);
  verdict.add(RecordKind::kEdge, verdict.gap, hit.offset - gapStart);
  return verdict;
}

Verdict judgePair(Direction direction, const Hit& hit, const std::string& anchorRead,
                  int64_t mateLength, const ScaffoldInfo& info, const PlacementOptions& options) {
  const Anchor anchor{info,       hit.contig,    hit.offset, lengthOf(anchorRead),
                      mateLength, options.insert};
  const bool isForward = direction == Direction::kForward;
  const bool hasGap = isForward ? hit.contig + 1 != info.contigsSum : hit.contig != 0;
  if (!hasGap) return {.refusal = Refusal::kNoGap};
  const MateGeometry mate = isForward ? forwardGeometry(anchor) : reverseGeometry(anchor);
  const bool isSmallGap = anchor.gapLength(mate.gap) < options.bigGapLength;
  Verdict verdict{.gap = mate.gap, .matePosition = mate.position};
  verdict.refusal =
      isSmallGap && options.insert > options.bigGapLength
          ? Refusal::kSmallGap
          : checkOnContig(info.contigsInfo[hit.contig].bases(), anchorRead, hit.offset, options);
  if (verdict.refusal != Refusal::kNone) return verdict;
  addMate(verdict, anchor, mate, options);
  addAnchor(verdict, anchor, mate.mayRunOverRightEdge);
  return verdict;
}

}  // namespace velk
