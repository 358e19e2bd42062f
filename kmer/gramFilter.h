// A small filter in front of the hash set: it tells most k-mers that are found nowhere.
//
// It holds the grams of the indexed k-mers: shorter k-mers, or the k-mers themselves where they are
// no longer than a gram has to be. A gram that it does not hold rules out every k-mer around it, so
// a few questions settle the k-mers over a wrong base: with grams of 16 bases two where k is 30 to
// 32, four where it is 20 to 22. A Bloom filter (B. H. Bloom, 1970) in blocks of one cache line; a
// gram and its reverse complement share a block. Built once with the index; read without locks by
// the workers.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <utility>

#include "kmer/fetchLine.h"
#include "kmer/packedBases.h"
#include "kmer/tableMemory.h"

namespace velk {

inline constexpr int kShortestGram = 16;  // bases

/// K-mer lengths for which a filter is made: a k-mer fits one word, and has a gram.
constexpr bool hasGrams(int kmer) {
  return kmer >= kShortestGram && kmer <= DATA_LEN;
}

/// Bases in a gram of a filter for so many k-mers: short, to rule out many k-mers, and long enough
/// to be rare, where a k-mer is: one of 32 random grams at most is theirs. REQUIRES:
/// hasGrams(kmer), kmers <= kMaxSlots.
constexpr int gramLengthFor(int kmer, uint64_t kmers) {
  int length = kShortestGram;
  while (length < kmer && uint64_t{1} << (LEN_TO_BITLEN * length) < 32 * kmers) ++length;
  return length;
}

/// Grams in a k-mer.
constexpr std::size_t gramsOf(int kmer, int gramLength) {
  return static_cast<std::size_t>(kmer - gramLength) + 1;
}

/// The grams to ask for first where no window (k-mer offset) in [from, to) of a read is thought to
/// be in the index: the fewest whose absence rules all of them out. Where a single wrong base
/// spoils just these windows, and they are no fewer than a window has grams, every gram asked for
/// has that base, and the strides of the other strand are the same grams turned round, but for the
/// middle one of an odd number, which may be its neighbour. REQUIRES: from < to,
/// grams (in a window) > 0.
class Strides {
 public:
  constexpr Strides(std::size_t from, std::size_t to, std::size_t grams)
      : grams_(grams),
        first_(from != 0 || to - from >= grams_ ? from + grams_ - 1 : to - 1),
        last_(std::max(first_, to - 1)) {
    count_ = 1 + (last_ - first_ + grams_ - 1) / grams_;
  }

  constexpr std::size_t size() const { return count_; }

  /// The n-th gram, in ascending order, none further from the next than a window has grams.
  constexpr std::size_t operator[](std::size_t n) const {
    const std::size_t behind = count_ - 1 - n;
    if (n < behind) return first_ + n * grams_;
    if (n > behind) return last_ - behind * grams_;
    return (first_ + last_) / 2;
  }

 private:
  std::size_t grams_;
  std::size_t first_;
  std::size_t last_;
  std::size_t count_;
};

/// A packed gram and its packed reverse complement.
struct Gram {
  uint64_t forward = 0;
  uint64_t reversed = 0;

  Gram() = default;

  /// bases: packed, `length` of them.
  Gram(uint64_t bases, int length) : forward(bases), reversed(reversedKey(bases, length)) {}

  /// The gram one base on: it ends with the base of that code. REQUIRES: length < DATA_LEN.
  void roll(uint64_t code, int length) {
    const int bits = LEN_TO_BITLEN * length;
    forward = (forward << LEN_TO_BITLEN | code) & ((uint64_t{1} << bits) - 1);
    reversed = reversed >> LEN_TO_BITLEN | (code ^ 3U) << (bits - LEN_TO_BITLEN);
  }

  Gram turned() const {
    Gram other = *this;
    std::swap(other.forward, other.reversed);
    return other;
  }
};

class GramFilter {
 public:
  /// Makes an empty filter with room for the grams of so many k-mers. REQUIRES: as gramLengthFor.
  /// Throws std::bad_alloc without memory.
  void build(int kmer, uint64_t kmers) {
    blocks_.make(bytesFor(kmers) / sizeof(Block) + 1);
    gramLength_ = gramLengthFor(kmer, kmers);
    grams_ = gramsOf(kmer, gramLength_);
  }

  /// The bytes that it takes for so many k-mers, about.
  static uint64_t bytesFor(uint64_t kmers) { return kmers * kRoomPerKmer / 8; }

  void release() { blocks_.release(); }

  bool isBuilt() const { return blocks_.size() != 0; }

  // REQUIRES: isBuilt().
  int gramLength() const { return gramLength_; }
  std::size_t gramsOfKmer() const { return grams_; }

  void add(const Gram& gram) { add(gram, blockOf(gram)); }

  /// The same, of a gram whose block is known.
  void add(const Gram& gram, std::size_t blockNumber) {
    Block& block = blocks_[blockNumber];
    const uint64_t bits = bitsOf(gram);
    for (int i = 0; i < kBitsPerGram; ++i) {
      const uint64_t bit = bits >> (kBitsOfBitNumber * i) & (kBlockBits - 1);
      block.words[bit / 64] |= uint64_t{1} << (bit % 64);
    }
  }

  /// Whether the gram may have been added; false is certain. REQUIRES: isBuilt().
  bool mayHold(const Gram& gram) const { return mayHold(gram, blockOf(gram)); }

  /// The same, of a gram whose block is known.
  bool mayHold(const Gram& gram, std::size_t blockNumber) const {
    const Block& block = blocks_[blockNumber];
    const uint64_t bits = bitsOf(gram);
    uint64_t holds = 1;
    for (int i = 0; i < kBitsPerGram; ++i) {
      const uint64_t bit = bits >> (kBitsOfBitNumber * i) & (kBlockBits - 1);
      holds &= block.words[bit / 64] >> (bit % 64);
    }
    return (holds & 1U) != 0;
  }

  /// The number of the block of the gram and its reverse complement.
  std::size_t blockOf(const Gram& gram) const {
    const uint64_t spread = std::min(gram.forward, gram.reversed) * 0xD6E8FEB86659FD93U;
    // cppcheck-suppress shiftTooManyBits ; it takes 128 bits for 64
    return static_cast<std::size_t>((Uint128{spread ^ spread >> 32} * blocks_.size()) >> 64);
  }

  /// Has that block fetched.
  void prefetch(std::size_t blockNumber) const { fetchLine(&blocks_[blockNumber]); }
  void prefetch(const Gram& gram) const { prefetch(blockOf(gram)); }

 private:
  static constexpr int kBitsOfBitNumber = 9;  // bits that name a bit of a block
  static constexpr uint64_t kBlockBits = uint64_t{1} << kBitsOfBitNumber;
  static constexpr int kBitsPerGram = 2;       // bits that a gram sets
  static constexpr uint64_t kRoomPerKmer = 8;  // bits; a k-mer adds about one gram

  struct alignas(64) Block {
    std::array<uint64_t, kBlockBits / 64> words;
  };

  // The factors are odd numbers with about as many set as clear bits.
  static uint64_t bitsOf(const Gram& gram) { return (gram.forward * 0xC2B2AE3D27D4EB4FU) >> 32; }

  __extension__ using Uint128 = unsigned __int128;

  ZeroedArray<Block> blocks_;
  int gramLength_ = 0;
  std::size_t grams_ = 0;  // in a k-mer
};

}  // namespace velk
