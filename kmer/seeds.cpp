#include "kmer/seeds.h"

#include <bit>
#include <cassert>

#include "kmer/vectorised.h"

namespace velk {
namespace {

// The ranks of the first m-mers of 32 bases, 16 of them. REQUIRES: m is at most 16.
[[gnu::always_inline]] inline void rankShort(uint64_t bases, int m, uint32_t* ranks) {
  const uint64_t reversed = reversedKey(bases, DATA_LEN);
  const auto high = static_cast<uint32_t>(bases >> 32);
  const auto low = static_cast<uint32_t>(bases);
  const auto reversedHigh = static_cast<uint32_t>(reversed >> 32);
  const auto reversedLow = static_cast<uint32_t>(reversed);
  const int unused = 32 - LEN_TO_BITLEN * m;
  const uint32_t mask = ~uint32_t{0} >> unused;
#pragma GCC unroll 1
  for (uint32_t i = 0; i < 16; ++i) {
    const uint32_t bit = LEN_TO_BITLEN * i;
    const uint32_t mer = (high << bit | low >> 1 >> (31 - bit)) >> unused;
    const uint32_t other = (reversedLow >> bit | reversedHigh << 1 << (31 - bit)) & mask;
    ranks[i] = rankOf(std::min(mer, other));
  }
}

// The same, 8 of them. REQUIRES: m is at most 25.
[[gnu::always_inline]] inline void rankLong(uint64_t bases, int m, uint32_t* ranks) {
  const uint64_t reversed = reversedKey(bases, DATA_LEN);
  const int unused = 64 - LEN_TO_BITLEN * m;
  const uint64_t mask = ~uint64_t{0} >> unused;
#pragma GCC unroll 1
  for (uint64_t i = 0; i < 8; ++i) {
    // As signed numbers, which more processors compare; the highest bit of both is clear.
    const auto mer = static_cast<int64_t>(bases << LEN_TO_BITLEN * i >> unused);
    const auto other = static_cast<int64_t>(reversed >> LEN_TO_BITLEN * i & mask);
    ranks[i] = rankOf(static_cast<uint64_t>(std::min(mer, other)));
  }
}

}  // namespace

VELK_VECTORISED void rankMers(uint64_t word, uint64_t behind, int m, uint32_t* ranks) {
  assert(1 <= m && m <= kLongestMer);
  const bool isShort = m <= kLongestInjective;
  const uint64_t step = isShort ? 16 : 8;
  for (uint64_t i = 0; i < DATA_LEN; i += step) {
    const uint64_t into = LEN_TO_BITLEN * i;
    const uint64_t bases = word << into | behind >> 1 >> (63 - into);
    isShort ? rankShort(bases, m, ranks + i) : rankLong(bases, m, ranks + i);
  }
}

VELK_VECTORISED LeastRank leastRank(const uint32_t* ranks, unsigned count) {
  std::array<uint32_t, kMostOffsets> kept;  // those behind the last one are all ones
  for (unsigned i = 0; i < kMostOffsets; ++i) kept[i] = ranks[i] | (i < count ? 0 : ~uint32_t{0});
  uint32_t rank = ~uint32_t{0};
  for (const uint32_t other : kept) rank = std::min(rank, other);
  uint32_t equal = 0;
  for (unsigned i = 0; i < kMostOffsets; ++i) equal |= kept[i] == rank ? uint32_t{1} << i : 0;
  equal &= ~uint32_t{0} >> (32 - count);
  return {rank, static_cast<unsigned>(std::countr_zero(equal)), (equal & (equal - 1)) != 0};
}

}  // namespace velk
