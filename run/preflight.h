// The look at the inputs before the search: what would make its result useless, or less.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/inputs.h"
#include "run/library.h"

namespace velk::run {

/// Files that are open beside those of the inputs or the shares.
inline constexpr uint64_t kOtherFiles = 32;

/// A kind of thing that is not as it should be, reported once.
struct Finding {
  bool isError;  // the run stops, unless it is forced
  std::string text;
  uint64_t places;    // how many there are
  std::string first;  // the first of them; empty where the text names it

  /// The whole line: the text, and how many places if there are several.
  std::string line() const;
};

/// What can be said of the files before any is opened. Throws Failure where a file does not exist.
std::vector<Finding> checkFiles(const std::string& assembly, const std::vector<Library>& libraries);

/// What is wrong with the samples.
std::vector<Finding> checkSamples(const Inputs& inputs);

/// What is wrong with the assembly. hasPlaceholders: whether some of its gaps should be such.
std::vector<Finding> checkAssembly(const Assembly& assembly, bool hasPlaceholders);

/// Whether there is memory to index this assembly, unless that is saved, and to search.
std::vector<Finding> checkMemory(const Assembly& assembly, int kmer);

/// What is wrong with the measured libraries. `given`: as they were before.
std::vector<Finding> checkLibraries(const std::vector<Library>& given,
                                    const std::vector<Library>& measured);

}  // namespace velk::run
