// The read files of a run, opened, with a sample of each.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reads/readInput.h"
#include "run/library.h"
#include "run/search.h"

namespace velk::run {

/// An input whose sample has been taken.
struct OpenInput {
  uint32_t library;
  std::unique_ptr<reads::ReadInput> reads;
  std::string failure;  // of the sample: what is wrong with the file; empty if nothing is

  const reads::Sample& sample() const { return reads->sample(); }
};

class Inputs {
 public:
  /// Opens the files of all libraries, in their order, and takes samples. Throws reads::InputError
  /// where a file can't be opened; what is wrong with a sample is kept.
  /// `threads`: with one, no input has a helper.
  Inputs(const std::vector<Library>& libraries, int threads);

  /// Opens the files of all libraries, or of one input alone, and takes no samples.
  Inputs(const std::vector<Library>& libraries, int threads, std::optional<uint32_t> only);

  const std::vector<OpenInput>& all() const { return inputs_; }

  /// What the search takes.
  std::vector<SearchInput> toSearch() const;

  /// The longest read of a pair of the samples, bases; 0 without pairs.
  std::size_t longestPairedRead() const;

  /// Bytes of all files; 0 where one is a pipe.
  uint64_t bytes() const;

 private:
  void open(uint32_t library, uint32_t number, const reads::InputFiles& files, int threads);

  std::vector<OpenInput> inputs_;
};

}  // namespace velk::run
