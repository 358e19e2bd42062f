// A stretch of bases, packed once, from which the key of any of its k-mers is cut out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "driver/velk.h"

namespace velk {

/// Packs 32 letters as Seq2Kmer does. Returns false, and a word of no use, when one is no base.
bool packBases(const char* letters, uint64_t& word);

class PackedBases {
 public:
  /// Packs `bases`. Returns false, and leaves nothing of use, when a letter among them is no base.
  bool fill(std::string_view bases);

  /// As fill, without what only some processors have.
  bool fillPlainly(std::string_view bases);

  /// The `count` bases from `offset` on, packed as Seq2Kmer packs them.
  /// REQUIRES: 1 <= count <= DATA_LEN, offset + count <= bases packed.
  uint64_t at(std::size_t offset, int count) const {
    const uint64_t* word = &words_[offset / DATA_LEN];
    const unsigned inWord = LEN_TO_BITLEN * static_cast<unsigned>(offset % DATA_LEN);
    uint64_t bits = word[0] << inWord;
    if (inWord != 0) bits |= word[1] >> (64 - inWord);
    return bits >> (64 - LEN_TO_BITLEN * static_cast<unsigned>(count));
  }

  /// The n-th word of the bases, the first base in its highest bits.
  uint64_t wordAt(std::size_t n) const { return words_[n]; }

  /// The key of the k-mer at `offset`: of one longer than a word, the last bases.
  uint64_t key(std::size_t offset, int kmer) const {
    if (kmer == 0) return 0;
    if (kmer <= DATA_LEN) return at(offset, kmer);
    return at(offset + static_cast<std::size_t>(kmer - DATA_LEN), DATA_LEN);
  }

 private:
  bool fillBy(bool (*pack)(const char*, uint64_t&), std::string_view bases);

  std::vector<uint64_t> words_;  // DATA_LEN bases each, the first in the highest bits; and one more
};

/// The packed reverse complement of `count` packed bases. REQUIRES: 1 <= count <= DATA_LEN.
inline uint64_t reversedKey(uint64_t key, int count) {
  // The complement of a code is its bits' inverse. Pairs, fours and bytes change places in turn.
  uint64_t turned = ~key;
  turned = (turned & 0x3333333333333333U) << 2 | (turned >> 2 & 0x3333333333333333U);
  turned = (turned & 0x0F0F0F0F0F0F0F0FU) << 4 | (turned >> 4 & 0x0F0F0F0F0F0F0F0FU);
  turned = __builtin_bswap64(turned);
  return turned >> (64 - LEN_TO_BITLEN * count);
}

}  // namespace velk
