// A second, naive account of which k-mers a scaffold model has and where, for comparison with the
// seed index: every window is packed letter by letter and kept in a map.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include "contig/contig.h"
#include "kmer/contigWindows.h"
#include "kmer/seedIndex.h"

namespace velk::test {

using Assembly = std::vector<std::vector<std::string>>;  // the contigs of every scaffold

/// A scaffold model with the k-mers that it has under the Kmer and CONTIGLEN of its making.
class KmerModel {
 public:
  struct Known {
    KmerPlace first;
    uint64_t times;  // occurrences
  };

  enum Content { kWithKmers, kWithoutKmers };

  /// Without its k-mers it is a scaffold model to build an index from, and no more.
  explicit KmerModel(const Assembly& assembly, Content content = kWithKmers);

  const ScaffoldInfo* scaffolds() const { return scaffolds_.data(); }
  uint32_t size() const { return static_cast<uint32_t>(scaffolds_.size()); }

  /// All k-mers, by key.
  const std::unordered_map<uint64_t, Known>& kmers() const { return kmers_; }
  uint64_t windows() const { return windows_; }
  bool has(uint64_t key) const { return kmers_.contains(key); }

  /// Builds the index of this model; whether it had the memory.
  bool build(SeedIndex& index, int threads = 1, uint64_t placeBase = 0,
             uint64_t leastWindows = 0) const;

  /// What an index answers wrongly about a key, in words; empty when it is right.
  std::string wrongAnswer(const SeedIndex& index, uint64_t key) const;

  /// The first wrong answer about all keys, and about as many that are near to them: with one base
  /// changed, the reverse complement, both, with a bit above the k-mer's own.
  std::string firstWrongAnswer(const SeedIndex& index) const;

 private:
  void addKmers(const Assembly& assembly);

  std::vector<std::vector<ContigInfo>> contigs_;  // of each scaffold
  std::vector<ScaffoldInfo> scaffolds_;
  std::unordered_map<uint64_t, Known> kmers_;
  uint64_t windows_ = 0;
};

/// Bytes of all memory that an index has.
uint64_t bytesOf(const SeedIndex& index);

/// The reverse complement of `count` packed bases, base by base. REQUIRES: count <= 32.
uint64_t modelOfReversing(uint64_t key, int count);

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
