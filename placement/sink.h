// What placement finds out of every read, and who receives it.
//
// A sink is a class with these members; it is a template argument, so that what it drops costs
// nothing:
//   static constexpr bool kTakesRefusals;         false: refused() is never called, nor needed
//   void found(const Found&, const std::string& bases);   a record, and the bases to be recorded
//   void anchored(const Anchored&);    an anchor was accepted; its records follow
//   void refused(const Refused&);      once for every read, strand and diagonal
#pragma once

#include <cstdint>

#include "placement/kmerWalk.h"
#include "placement/verdict.h"

namespace velk {

/// Where a read that is tried comes from. It describes the read as it was sequenced, also in pairs
/// that point outwards.
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
  uint64_t gap;          // in which the mate must lie: the index of the contig behind it
  int64_t matePosition;  // where in it, before the mate is moved to an end of the gap
};

/// A read that was refused on a diagonal.
struct Refused {
  Origin origin;
  Hit hit;
  Refusal reason;
  uint64_t gap;          // at which it was judged: the index of the contig behind it; 0: at none
  int64_t matePosition;  // of an anchor: where in that gap the mate would lie
};

}  // namespace velk
