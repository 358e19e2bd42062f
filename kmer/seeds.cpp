#include "kmer/seeds.h"

#include <bit>

#include "kmer/machine.h"

namespace velk {

VELK_VECTORISED void rankMers(uint64_t word, uint64_t next, int m, uint32_t* ranks) {
  assert(1 <= m && m <= kLongestMer);
  constexpr uint64_t kTogether = 8;  // m-mers of a word of bases
  const int unused = 64 - LEN_TO_BITLEN * m;
  const uint64_t mask = ~uint64_t{0} >> unused;
  for (uint64_t at = 0; at < DATA_LEN; at += kTogether) {
    const uint64_t into = LEN_TO_BITLEN * at;
    const uint64_t bases = word << into | next >> 1 >> (63 - into);
    const uint64_t reversed = reversedKey(bases, DATA_LEN);
#pragma GCC unroll 1
    for (uint64_t i = 0; i < kTogether; ++i) {
      // Compared as signed numbers, which more processors do; the highest bit of both is clear.
      const auto mer = static_cast<int64_t>(bases << LEN_TO_BITLEN * i >> unused);
      const auto other = static_cast<int64_t>(reversed >> LEN_TO_BITLEN * i & mask);
      ranks[at + i] = rankOf(static_cast<uint64_t>(std::min(mer, other)));
    }
  }
}

VELK_VECTORISED LeastRank leastRank(const uint32_t* ranks, unsigned count) {
  assert(1 <= count && count <= kMostOffsets);
  std::array<uint32_t, kMostOffsets> kept;  // all ones from `count` on
  for (unsigned i = 0; i < kMostOffsets; ++i) kept[i] = ranks[i] | (i < count ? 0 : ~uint32_t{0});
  uint32_t rank = ~uint32_t{0};
  for (const uint32_t other : kept) rank = std::min(rank, other);
  uint32_t equal = 0;
  for (unsigned i = 0; i < kMostOffsets; ++i) equal |= kept[i] == rank ? uint32_t{1} << i : 0;
  equal &= ~uint32_t{0} >> (32 - count);
  return {rank, static_cast<unsigned>(std::countr_zero(equal)), (equal & (equal - 1)) != 0};
}

}  // namespace velk
