// A small filter in front of the hash set: it tells most k-mers that are found nowhere, for a
// fraction of a look-up's cost.
//
// A Bloom filter (B. H. Bloom, 1970) in blocks of one cache line. A k-mer's block follows from its
// minimizer, so neighbouring k-mers of a sequence, and their reverse complements, mostly share one.
// Built once after indexing; read without locks by the workers.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

namespace velk {

class KmerFilter {
 public:
  /// Makes an empty filter with room for `kmers` k-mers.
  void build(uint64_t kmers) { blocks_.assign(kmers * kRoomPerKmer / kBlockBits + 1, Block{}); }

  void add(uint64_t key, uint64_t minimizer);

  void release() { blocks_ = {}; }

  bool isBuilt() const { return !blocks_.empty(); }

  /// Whether the k-mer `key`, whose minimizer has this hash, may be in the index; false is certain.
  /// REQUIRES: isBuilt().
  bool mayHold(uint64_t key, uint64_t minimizer) const {
    const Block& block = blocks_[blockOf(minimizer)];
    const uint64_t bits = bitsOf(key);
    uint64_t holds = 1;
    for (int i = 0; i < kBitsPerKmer; ++i) {
      const uint64_t bit = bits >> (kBitNumber * i) & (kBlockBits - 1);
      holds &= block.words[bit / 64] >> (bit % 64);
    }
    return (holds & 1U) != 0;
  }

  /// Has the block of such k-mers fetched.
  void prefetch(uint64_t minimizer) const { __builtin_prefetch(&blocks_[blockOf(minimizer)]); }

 private:
  static constexpr int kBitNumber = 9;  // bits that name a bit of a block
  static constexpr uint64_t kBlockBits = uint64_t{1} << kBitNumber;
  static constexpr int kBitsPerKmer = 3;       // bits that a k-mer sets
  static constexpr uint64_t kRoomPerKmer = 8;  // bits that a filter has for each k-mer

  struct alignas(64) Block {
    std::array<uint64_t, kBlockBits / 64> words{};
  };

  // The factor is an odd number with as many set as clear bits.
  static uint64_t bitsOf(uint64_t key) { return (key * 0xC2B2AE3D27D4EB4FU) >> 32; }

  __extension__ using Uint128 = unsigned __int128;

  // Minimizers are least values, so they are spread anew.
  std::size_t blockOf(uint64_t minimizer) const {
    const uint64_t spread = (minimizer ^ minimizer >> 29) * 0xD6E8FEB86659FD93U;
    return static_cast<std::size_t>((Uint128{spread} * blocks_.size()) >> 64);
  }

  std::vector<Block> blocks_;
};

inline void KmerFilter::add(uint64_t key, uint64_t minimizer) {
  Block& block = blocks_[blockOf(minimizer)];
  const uint64_t bits = bitsOf(key);
  for (int i = 0; i < kBitsPerKmer; ++i) {
    const uint64_t bit = bits >> (kBitNumber * i) & (kBlockBits - 1);
    block.words[bit / 64] |= uint64_t{1} << (bit % 64);
  }
}

}  // namespace velk
