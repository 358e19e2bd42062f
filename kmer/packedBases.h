// A stretch of bases, packed once. The key of any of its k-mers is cut out of it.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "driver/velk.h"

namespace velk {

/// The `count` bases from position p on. words.wordAt(n): the DATA_LEN bases from DATA_LEN * n on,
/// the first in the highest bits. REQUIRES: 1 <= count <= DATA_LEN; the word after that of position
/// p can be read.
template <class Words>
uint64_t packedAt(const Words& words, uint64_t p, int count) {
  assert(1 <= count && count <= DATA_LEN);
  const unsigned into = LEN_TO_BITLEN * static_cast<unsigned>(p % DATA_LEN);
  const uint64_t n = p / DATA_LEN;
  const uint64_t bits = words.wordAt(n) << into | words.wordAt(n + 1) >> 1 >> (63 - into);
  return bits >> (64 - LEN_TO_BITLEN * count);
}

/// Packs letters into words of DATA_LEN bases, the first in the highest bits. A non-ACGT letter is
/// stored as an A. The last word is padded with A. Returns whether all letters are ACGT.
bool packBases(std::string_view letters, uint64_t* words);

class PackedBases {
 public:
  /// Packs `bases`. Returns whether all letters are ACGT.
  bool fill(std::string_view bases) {
    words_.resize(bases.size() / DATA_LEN + 2);
    return packBases(bases, words_.data());
  }

  /// The `count` bases from `offset` on, packed as Seq2Kmer packs them.
  /// REQUIRES: 1 <= count <= DATA_LEN, offset + count <= bases packed.
  uint64_t at(std::size_t offset, int count) const {
    assert((offset + static_cast<std::size_t>(count) - 1) / DATA_LEN + 1 < words_.size());
    return packedAt(*this, offset, count);
  }

  /// The n-th word of the bases, the first base in its highest bits.
  uint64_t wordAt(std::size_t n) const { return words_[n]; }

 private:
  std::vector<uint64_t> words_;  // and one more, which packedAt reads
};

/// The packed reverse complement of `count` packed bases. REQUIRES: 1 <= count <= DATA_LEN.
inline uint64_t reversedKey(uint64_t key, int count) {
  assert(1 <= count && count <= DATA_LEN);
  // Inverting a code's bits complements the base. The rest reverses the order of the bases.
  key = ~key;
  key = (key & 0x3333333333333333U) << 2 | (key >> 2 & 0x3333333333333333U);
  key = (key & 0x0F0F0F0F0F0F0F0FU) << 4 | (key >> 4 & 0x0F0F0F0F0F0F0F0FU);
  return __builtin_bswap64(key) >> (64 - LEN_TO_BITLEN * count);
}

/// A hash of a packed k-mer or m-mer: two rounds of multiplying and folding, as in the finalisers
/// of Steele, Lea and Flood, "Fast splittable pseudorandom number generators" (2014).
inline uint64_t mixed(uint64_t key) {
  key = (key ^ 0x5851F42D4C957F2DU) * 0x9E3779B97F4A7C15U;
  key = (key ^ key >> 29) * 0xD6E8FEB86659FD93U;
  return key ^ key >> 32;
}

}  // namespace velk
