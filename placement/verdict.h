// What is made of one hit of a read: the gaps in which it, or its mate, is recorded, or why it is
// refused. Pure functions of the model and the options.
//
// A gap is named by the index of the contig behind it; positions count from the gap's first base to
// the first base of the read that is recorded.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "contig/contig.h"
#include "placement/kmerWalk.h"
#include "placement/placementOptions.h"

namespace velk {

enum class Refusal : uint8_t {
  kNone,
  kNoGap,         // there is no gap on the side on which the read, or its mate, would reach one
  kAtFirstBase,   // a single read that starts on the contig's first base
  kInsideContig,  // a single read that ends before the contig does
  kSmallGap,      // a large insert at a small gap: the walk ends, and the whole pair is given up
  kShortOverlap,  // too few bases of the read lie on the contig
  kUnlike         // too few of those are the contig's
};

enum class RecordKind : uint8_t {
  kEdge,       // a single read over a contig's end
  kMate,       // the mate of an anchor, in the gap next to the anchor's contig
  kGapBeyond,  // the same in the gap beyond the neighbouring contig
  kAnchor      // an anchor that itself reaches into a gap
};

/// A read recorded in a gap.
struct GapPlace {
  RecordKind kind;
  uint64_t gap;
  int64_t position;
  int64_t unmoved;  // the position before a mate was moved to the nearer end of the gap
};

/// A hit is refused, or accepted with up to three records.
struct Verdict {
  Refusal refusal = Refusal::kNone;
  uint64_t gap = 0;          // at which the read, or its mate, was judged; 0: at none
  int64_t matePosition = 0;  // of a pair: where in it the mate must lie, before it is moved
  std::size_t count = 0;     // records
  std::array<GapPlace, 3> places{};

  void add(RecordKind kind, uint64_t gapOfRecord, int64_t position, int64_t movedBy = 0) {
    places[count++] = {kind, gapOfRecord, position, position - movedBy};
  }
};

/// A hit of a single read. `info`: the scaffold of the hit.
Verdict judgeSingle(const Hit& hit, const std::string& read, const ScaffoldInfo& info,
                    const PlacementOptions& options);

/// Where the mate of an anchor lies: behind the anchor's contig, or in front of it.
enum class Direction : uint8_t { kForward, kReverse };

/// A hit of an anchor whose mate has `mateLength` bases.
Verdict judgePair(Direction direction, const Hit& hit, const std::string& anchor,
                  int64_t mateLength, const ScaffoldInfo& info, const PlacementOptions& options);

}  // namespace velk
