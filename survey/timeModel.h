// The time that a run takes, from a short search of samples.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "placement/edgeCheck.h"
#include "survey/boundedIndex.h"

namespace velk::survey {

/// Some reads or pairs of a library, as they were sequenced.
struct Sample {
  int insert = 0;              // bases of a fragment; 0 for single reads
  std::vector<std::string> a;  // reads, or the first reads of pairs
  std::vector<std::string> b;  // the second reads; empty without an insert
};

/// What a search of samples has come to.
struct SearchTrial {
  uint64_t reads = 0;  // that were searched
  uint64_t found = 0;  // records
  double seconds = 0;  // on one thread

  double secondsPerRead() const { return reads == 0 ? 0 : seconds / static_cast<double>(reads); }
  double foundPerRead() const {
    return reads == 0 ? 0 : static_cast<double>(found) / static_cast<double>(reads);
  }
};

/// Searches `samples` as a run does, each with `options` and its own insert. REQUIRES: the index is
/// one of contigs of `scaffolds`; as many second reads as first ones where there is an insert.
SearchTrial trySearch(const BoundedIndex& index, Scaffolds scaffolds,
                      const PlacementOptions& options, std::vector<Sample> samples);

/// The reads, or pairs, of an input.
struct InputCost {
  uint64_t records = 0;
  bool arePairs = false;
  double secondsToRead = 0;  // one of them from its file
};

/// The seconds in which an input is read and searched by so many threads.
double inputSeconds(const InputCost& input, double secondsPerRead, int threads);

}  // namespace velk::survey
