// The libraries' fragments, measured on samples of their pairs.
#pragma once

#include <vector>

#include "run/inputs.h"
#include "run/library.h"
#include "survey/boundedIndex.h"

namespace velk::run {

/// Pairs on one contig that a measurement takes at least.
inline constexpr uint64_t kLeastPairs = 100;

/// Measures the libraries of pairs, and fixes insert, spread and orientation (inout): as they are
/// given, else as they are measured. One that is neither keeps an insert of 0. `options`: of the
/// run; `scaffolds`: of which the index has the first ones.
void measureLibraries(std::vector<Library>& libraries, const Inputs& inputs,
                      const survey::BoundedIndex& index, survey::Scaffolds scaffolds,
                      const PlacementOptions& options, int threads);

}  // namespace velk::run
