// Assemblies for tests of the seed index: random ones with all that real ones have, and those that
// are hard on an index.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/kmer/kmerModel.h"

namespace velk::test {

/// Random contigs out of pieces that come back, changed here and there, or as their reverse
/// complement, and of tandem repeats; some contigs with other letters, in lower case, or with CR at
/// the end of each line.
class RandomAssemblies {
 public:
  explicit RandomAssemblies(uint64_t seed) : random_(seed) {}

  /// A number below `end`.
  uint64_t below(uint64_t end) { return random_() % end; }

  /// Up to five scaffolds of up to four contigs of up to `longest` letters.
  Assembly next(std::size_t longest);

  /// `length` bases of which each is random, or a tandem repeat with errors.
  std::string bases(std::size_t length);
  std::string tandem(std::size_t length);

  /// Replaces up to four letters by random bases.
  void change(std::string& letters);

 private:
  std::string piece(std::size_t longest);
  std::string contig(std::size_t length);

  std::mt19937_64 random_;
  std::vector<std::string> pieces_;  // that may come back
};

struct HardText {
  const char* name;
  Assembly assembly;
};

/// The inputs that are hard on an index, of about `length` letters each.
std::vector<HardText> hardTexts(std::size_t length);

}  // namespace velk::test
