#include <optional>

#include "placement/edgeCheck.h"
#include "placement/lengths.h"
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

  const ContigInfo& contigAt(uint64_t index) const { return info.contigsInfo[index]; }
};

// Where the mate of an anchor must lie. A gap is named by the index of the contig behind it;
// positions count from the gap's first base to the mate's first base.
struct MateGeometry {
  uint64_t gap;              // the gap next to the anchor's contig
  int64_t matePosition;      // position of the mate in it
  bool hasFarGap;            // whether a gap follows beyond the neighbouring contig
  uint64_t farGap;           // that gap
  uint64_t between;          // the contig between the two gaps
  int64_t farMatePosition;   // position of the mate in the far gap
  bool mayRunOverRightEdge;  // whether the anchor may be recorded in the gap behind its contig
};

// The mate lies behind the contig: the fragment begins with the anchor's first base. Nothing for
// the last contig, which has no gap behind it.
std::optional<MateGeometry> forwardGeometry(const Anchor& anchor) {
  const uint64_t c = anchor.contig;
  if (c + 1 == anchor.info.contigsSum) return std::nullopt;
  MateGeometry mate{};
  mate.gap = c + 1;
  mate.matePosition =
      anchor.offset + anchor.insert - anchor.mateLength - lengthOf(anchor.contigAt(c).contigSeq);
  mate.hasFarGap = c + 2 < anchor.info.contigsSum;
  if (mate.hasFarGap) {
    mate.between = c + 1;
    mate.farGap = c + 2;
    mate.farMatePosition = mate.matePosition - gapBefore(anchor.contigAt(mate.gap)) -
                           lengthOf(anchor.contigAt(mate.between).contigSeq);
  }
  mate.mayRunOverRightEdge = true;
  return mate;
}

// The mate lies in front of the contig: the fragment ends with the anchor's last base. Nothing for
// the first contig, which has no gap in front of it.
std::optional<MateGeometry> reverseGeometry(const Anchor& anchor) {
  const uint64_t c = anchor.contig;
  if (c == 0) return std::nullopt;
  MateGeometry mate{};
  mate.gap = c;
  mate.matePosition =
      gapBefore(anchor.contigAt(mate.gap)) + anchor.offset + anchor.length - anchor.insert;
  mate.hasFarGap = c >= 2;
  if (mate.hasFarGap) {
    mate.between = c - 1;
    mate.farGap = c - 1;
    mate.farMatePosition = gapBefore(anchor.contigAt(mate.farGap)) +
                           lengthOf(anchor.contigAt(mate.between).contigSeq) + mate.matePosition;
  }
  // KEPT: narrower than the forward rule, the gap behind the last but one contig is passed over
  // (CheckReverseRead.AnchorOverTheRightEdgeOfTheLastButOneContig)
  mate.mayRunOverRightEdge = c < anchor.info.contigsSum - 2U;
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
// directions the mate must end on the gap's first base or behind it and start in front of its end.
bool reachesFarGap(const Anchor& anchor, const MateGeometry& mate, int readLength) {
  if (!mate.hasFarGap) return false;
  const int64_t twoReads = 2 * int64_t{readLength};
  const int64_t farGapLength = gapBefore(anchor.contigAt(mate.farGap));
  return twoReads > lengthOf(anchor.contigAt(mate.between).contigSeq) && twoReads < farGapLength &&
         twoReads < lengthOf(anchor.contigAt(anchor.contig).contigSeq) &&
         mate.farMatePosition + anchor.mateLength > 0 && mate.farMatePosition < farGapLength;
}

// The records of the mate, in the gap next to the anchor's contig and in the one beyond.
void addMate(Verdict& verdict, const Anchor& anchor, const MateGeometry& mate,
             const PlacementOptions& options) {
  const int64_t gapLength = gapBefore(anchor.contigAt(mate.gap));
  const int64_t position = snapped(mate.matePosition, anchor.mateLength, gapLength, options.kmer);
  if (-anchor.mateLength <= position && position <= gapLength) {
    verdict.add(RecordKind::kMate, mate.gap, position, mate.matePosition);
  }
  if (reachesFarGap(anchor, mate, options.readLength)) {
    verdict.add(RecordKind::kGapBeyond, mate.farGap, mate.farMatePosition);
  }
}

// The record of the anchor itself, if it reaches into a gap.
void addAnchor(Verdict& verdict, const Anchor& anchor, bool mayRunOverRightEdge) {
  const ContigInfo& contig = anchor.contigAt(anchor.contig);
  const int64_t contigLength = lengthOf(contig.contigSeq);
  const int64_t end = anchor.length + anchor.offset;
  if (anchor.offset > 0 && end > contigLength && mayRunOverRightEdge) {
    verdict.add(RecordKind::kAnchor, anchor.contig + 1, anchor.offset - contigLength);
  } else if (anchor.offset < 0 && end >= 1 && anchor.contig >= 1) {
    verdict.add(RecordKind::kAnchor, anchor.contig, gapBefore(contig) + anchor.offset);
  }
}

}  // namespace

Verdict judgePair(Direction direction, const Hit& hit, const std::string& anchorRead,
                  int64_t mateLength, const ScaffoldInfo& info, const PlacementOptions& options) {
  const Anchor anchor{info,       hit.contig,    hit.offset, lengthOf(anchorRead),
                      mateLength, options.insert};
  const std::optional<MateGeometry> mate =
      direction == Direction::kForward ? forwardGeometry(anchor) : reverseGeometry(anchor);
  Verdict verdict;
  if (!mate) {
    verdict.refusal = Refusal::kNoGap;
    return verdict;
  }
  if (gapBefore(anchor.contigAt(mate->gap)) < options.bigGapLength &&
      options.insert > options.bigGapLength) {
    verdict.refusal = Refusal::kSmallGap;
    return verdict;
  }
  const std::string& contig = anchor.contigAt(hit.contig).contigSeq;
  verdict.refusal = checkOnContig(contig, anchorRead, hit.offset, options);
  if (verdict.refusal != Refusal::kNone) return verdict;

  verdict.gap = mate->gap;
  verdict.matePosition = mate->matePosition;
  addMate(verdict, anchor, *mate, options);
  addAnchor(verdict, anchor, mate->mayRunOverRightEdge);
  return verdict;
}

}  // namespace velk
