// Where the reads of a found entry lie: each at the places that velk found, compared with the
// contigs around, and beside them the read of its pair that was not found. Pure functions.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "run/alignment.h"
#include "run/found.h"
#include "run/library.h"
#include "run/placeCheck.h"

namespace velk::run {

/// A read at one place.
struct Laid {
  int mate = 0;
  bool isReversed = false;
  char kind = 'M';       // 'E'dge, 'M'ate, 'A'nchor
  bool isFound = false;  // by velk, at this gap
  Certainty certainty = Certainty::kEstimate;
  int64_t gap = -1;         // its own, or for one that was not found the first of its pair
  int64_t gapPosition = 0;  // as velk writes it
  int64_t scaffold = -1;
  int64_t start = 0;    // of its first base, clipped or not
  Alignment alignment;  // empty: unmapped

  bool isMapped() const { return !alignment.isEmpty(); }
};

/// The places of the first reads and of the second ones; of each read the primary one first, which
/// alone may be unmapped.
using LaidReads = std::array<std::vector<Laid>, 2>;

/// `mapCut`: the least share of equal bases in an overlap.
LaidReads layReads(const FoundEntry& entry, const Library& library, const Assembly& assembly,
                   double mapCut);

}  // namespace velk::run
