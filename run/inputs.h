// The read files of a run, opened, with a sample of each.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "reads/readInput.h"
#include "run/library.h"
#include "run/search.h"

namespace velk::run {

/// An input whose sample has been taken.
struct OpenInput {
  uint32_t library;
  std::unique_ptr<reads::ReadInput> reads;
  const reads::Sample* sample;  // of `reads`
};

class Inputs {
 public:
  /// Opens the files of all libraries, in their order, and takes samples. Throws Failure.
  /// `threads`: with one, no input has a helper.
  Inputs(const std::vector<Library>& libraries, int threads);

  const std::vector<OpenInput>& all() const { return inputs_; }

  /// What the search takes.
  std::vector<SearchInput> toSearch() const;

  /// The longest read of a pair of the samples, bases; 0 without pairs.
  std::size_t longestPairedRead() const;

  /// Bytes of all files; 0 where one is a pipe.
  uint64_t bytes() const;

 private:
  std::vector<OpenInput> inputs_;
};

}  // namespace velk::run
