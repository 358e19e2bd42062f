#include <optional>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/gapRecord.h"
#include "placement/kmerWalk.h"

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

using Resolve = std::optional<MateGeometry> (*)(const Anchor&);

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

// The body of both directions; `resolve` says where the mate of an anchor lies.
void checkPairedRead(Resolve resolve, int64_t& i, const std::string& anchorRead,
                     const std::string& mateRead, uint32_t& n, int t) {
  KmerWalk(*kmerHash, Kmer).uniqueHits(anchorRead, i, [&](const Hit& hit) {
    const ScaffoldInfo& info = scaffoldInfo[hit.scaffold];
    const Anchor anchor{
        info, hit.contig, hit.offset, lengthOf(anchorRead), lengthOf(mateRead), insertLength};
    const std::optional<MateGeometry> mate = resolve(anchor);
    if (!mate) return Walk::kGoOn;
    const int64_t gapLength = gapBefore(info.contigsInfo[mate->gap]);

    // KEPT: a large insert at a small gap gives up the whole pair
    // (CheckForwardRead.LargeInsertAtASmallGapStopsTheWalk)
    if (gapLength < BIGGAPLEN && insertLength > BIGGAPLEN) return Walk::kStop;
    const ContigInfo& contig = info.contigsInfo[hit.contig];
    if (MapRead2Contig(contig.contigSeq, anchorRead, hit.offset) == 0) return Walk::kGoOn;

    const auto record = [&](const std::string& read, uint64_t contigBehind, int64_t position) {
      recordAtGap(t, n, read, hit.scaffold, contigBehind, position);
    };
    const int64_t position = snapped(mate->matePosition, anchor.mateLength, gapLength, Kmer);
    if (-anchor.mateLength <= position && position <= gapLength) {
      record(mateRead, mate->gap, position);
    }
    if (reachesFarGap(anchor, *mate, readLen)) {
      record(mateRead, mate->farGap, mate->farMatePosition);
    }

    const int64_t contigLength = lengthOf(contig.contigSeq);
    const int64_t anchorEnd = anchor.length + hit.offset;
    if (hit.offset > 0 && anchorEnd > contigLength && mate->mayRunOverRightEdge) {
      record(anchorRead, hit.contig + 1, hit.offset - contigLength);
    } else if (hit.offset < 0 && anchorEnd >= 1 && hit.contig >= 1) {
      record(anchorRead, hit.contig, gapBefore(contig) + hit.offset);
    }
    return Walk::kStop;
  });
}

}  // namespace

void checkForwardRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  checkPairedRead(forwardGeometry, i, anchor, mate, n, t);
}

void checkReverseRead(int64_t& i, const std::string& anchor, const std::string& mate, uint32_t& n,
                      int t) {
  checkPairedRead(reverseGeometry, i, anchor, mate, n, t);
}

}  // namespace velk
