// The steps between preparing a run and writing what it found, which its verbs share.
#pragma once

#include <vector>

#include "kmer/seedIndex.h"
#include "run/arguments.h"
#include "run/assembly.h"
#include "run/fixed.h"
#include "run/inputs.h"
#include "run/search.h"
#include "run/session.h"

namespace velk::run {

/// What is searched, and how. All of it outlives the search.
struct ToSearch {
  const Arguments& arguments;
  const Assembly& assembly;
  const FixedValues& fixed;
  const Inputs& inputs;
};

/// Makes the index of an assembly, or takes its saved one. Throws std::bad_alloc, and Failure.
void setIndex(SeedIndex& index, const Assembly& assembly, int kmer, int threads);

/// Makes the index of the assembly, or takes its saved one, and searches the inputs for `receiver`.
/// Returns the counts of each library. Throws what Search::run() throws, and std::bad_alloc.
std::vector<ReadCounts> searchInputs(const ToSearch& toSearch, Session& session,
                                     FoundReceiver& receiver);

}  // namespace velk::run
