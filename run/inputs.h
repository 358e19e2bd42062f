// The read files of a run, opened, with a sample of each; and the libraries' fragments, measured on
// the samples of their pairs.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "reads/readInput.h"
#include "run/library.h"
#include "run/search.h"
#include "survey/boundedIndex.h"

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

/// Pairs on one contig that a measurement takes at least.
inline constexpr uint64_t kLeastPairs = 100;

/// Measures the libraries of pairs, and fixes insert, spread and orientation (inout): as they are
/// given, else as they are measured. One that is neither keeps an insert of 0. `options`: of the
/// run; `scaffolds`: of which the index has the first ones.
void measureLibraries(std::vector<Library>& libraries, const Inputs& inputs,
                      const survey::BoundedIndex& index, survey::Scaffolds scaffolds,
                      const PlacementOptions& options, int threads);

}  // namespace velk::run
