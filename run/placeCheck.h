// The check of an estimate: the place that an insert size gives a mate, compared with the contigs
// that lie within the spread of the inserts. Pure functions.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "run/alignment.h"

namespace velk::run {

/// What of a place is known.
enum class Certainty : char {
  kExact = 'X',      // its bases agree with a contig that it overlaps
  kEstimate = 'E',   // nothing speaks for or against its place
  kContained = 'C',  // it lies wholly in a contig, and not in the gap
};

/// Fewer bases on a contig say nothing: by chance 16 agree once in four billion places.
constexpr int64_t kLeastOverlap = 16;

/// Where a read is expected at a gap.
struct Expected {
  std::string_view bases;  // on the scaffold's strand
  int64_t start;           // of its first base, on the scaffold
  int64_t spread;          // how far off it may lie
  bool isFromFront;        // whether the contig in front of the gap gave the place, or that behind
};

/// Where it lies, and the contig that says so (unless it is an estimate).
struct CheckedPlace {
  Certainty certainty;
  int64_t start;
  uint64_t contig;
};

/// Compares a read at a gap with the contigs around. Contained: a contig within the spread has all
/// of it; of several such places the one with the most equal bases, of these the nearest. Exact: it
/// overlaps an edge of the gap in one way; of both edges the one with the longer overlap.
CheckedPlace checkPlace(const ScaffoldText& scaffold, const Gap& gap, const Expected& expected,
                        double mapCut);

/// The place where a contig has all of a read that is expected around `start`.
std::optional<CheckedPlace> findContained(const ScaffoldText& scaffold, std::string_view bases,
                                          int64_t start, int64_t spread, double mapCut);

}  // namespace velk::run
