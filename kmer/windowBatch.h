// The k-mers of a short stretch of bases, with what the k-mer filter asks of each.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velk {

/// Words (short k-mers) in a k-mer, out of which its minimizer is chosen.
inline constexpr int kWordsPerKmer = 17;

/// Bases in a word, at least: shorter words would choose the same few minimizers everywhere.
inline constexpr int kShortestWord = 8;

/// K-mer lengths for which minimizers are made: a k-mer fits one 64-bit word, its words are not too
/// short.
constexpr bool hasMinimizers(int kmer) {
  return kmer >= kWordsPerKmer + kShortestWord - 1 && kmer <= 32;
}

/// Up to 64 neighbouring k-mers.
class WindowBatch {
 public:
  static constexpr std::size_t kMost = 64;

  /// Takes the first `count` k-mers of `bases`. Returns false, and leaves nothing of use, when a
  /// letter among them is no base.
  /// REQUIRES: hasMinimizers(kmer), 1 <= count <= kMost, bases.size() >= count + kmer - 1.
  bool fill(std::string_view bases, std::size_t count, int kmer);

  /// The packed k-mer at offset i.
  uint64_t key(std::size_t i) const { return keys_[i]; }

  /// The hash of its minimizer: the least over its words, each read on the strand where it is less.
  /// A k-mer and its reverse complement have the same. M. Roberts et al., Bioinformatics 20 (2004).
  uint64_t minimizer(std::size_t i) const { return minimizers_[i]; }

 private:
  std::array<uint64_t, kMost> keys_;
  std::array<uint64_t, kMost> minimizers_;
};

/// The minimizer's hash of a packed k-mer, from its bits alone. REQUIRES: hasMinimizers(kmer).
uint64_t minimizerOf(uint64_t key, int kmer);

/// The packed reverse complement of a packed k-mer of bases alone. REQUIRES: 1 <= kmer <= 32.
uint64_t reversedKey(uint64_t key, int kmer);

}  // namespace velk
