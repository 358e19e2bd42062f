// Judges one hit: its records, a mate moved to an edge among them, or the reason for refusal. And
// the sink to which placement reports.
// Pure functions of the model and the options.
//
// A gap has the index of the contig to its right. Positions count from the gap's first base to the
// first base of the recorded read.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "placement/edgeCheck.h"
#include "placement/kmerWalk.h"

namespace velk {

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
  int64_t unmoved;  // the position before a mate was snapped to the nearer end of the gap
};

/// A hit is refused, or accepted with up to three records.
struct Verdict {
  Refusal refusal = Refusal::kNone;
  uint64_t gap = 0;          // at which the read, or its mate, was judged; 0: no gap
  int64_t matePosition = 0;  // of a pair: expected position of the mate in the gap, before snapping
  std::size_t count = 0;     // records
  std::array<GapPlace, 3> places{};

  void add(RecordKind kind, uint64_t gapOfRecord, int64_t position, int64_t movedBy = 0) {
    assert(count < places.size());
    places[count++] = {kind, gapOfRecord, position, position - movedBy};
  }
};

/// A hit of a single read. `info`: the scaffold of the hit.
Verdict judgeSingle(const Hit& hit, const std::string& read, const ScaffoldInfo& info,
                    const PlacementOptions& options);

/// Where the mate of an anchor lies: to the right of the anchor's contig, or to its left.
enum class Direction : uint8_t { kForward, kReverse };

/// A hit of an anchor whose mate has `mateLength` bases.
Verdict judgePair(Direction direction, const Hit& hit, const std::string& anchor,
                  int64_t mateLength, const ScaffoldInfo& info, const PlacementOptions& options);

// A sink receives the results of every read. It is a template argument, so that what it drops costs
// nothing: a class with these members.
//   static constexpr bool kTakesRefusals;         false: refused() is never called, nor needed
//   void found(const Found&, const std::string& bases);   a record, and the bases to be recorded
//   void anchored(const Anchored&);    an anchor was accepted; its records follow
//   void refused(const Refused&);      once for every read, strand and diagonal

/// Where a strand that is tried comes from. It describes the read as it was sequenced, also in
/// outward pairs.
struct Origin {
  int64_t entry;    // of the batch
  int mate;         // 0: the entry's first read, 1: the second
  bool isReversed;  // whether the reverse complement of the read as sequenced was tried
};

/// A record.
struct Found {
  Origin origin;   // of the read that is recorded
  Hit hit;         // of the read itself, or of the mate's anchor
  GapPlace place;  // in the scaffold of the hit
};

/// An anchor that was accepted, whether it or its mate is recorded or not.
struct Anchored {
  Origin origin;
  Hit hit;
  uint64_t gap;          // in which the mate is expected
  int64_t matePosition;  // its position there, before snapping
};

/// A read that was refused on a diagonal.
struct Refused {
  Origin origin;
  Hit hit;
  Refusal reason;
  uint64_t gap;          // at which it was judged; 0: no gap
  int64_t matePosition;  // of an anchor: expected position of the mate in the gap, before snapping
};

}  // namespace velk
