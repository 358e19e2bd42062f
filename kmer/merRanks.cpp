#include "kmer/merRanks.h"

#include <algorithm>
#include <bit>

#include "driver/velk.h"
#include "kmer/packedBases.h"
#include "kmer/wideLetters.h"

namespace velk {
namespace {

// The DATA_LEN bases from base p of packed words on.
uint64_t wordFrom(const uint64_t* words, std::size_t p) {
  const unsigned into = LEN_TO_BITLEN * static_cast<unsigned>(p % DATA_LEN);
  const uint64_t* const word = words + p / DATA_LEN;
  return word[0] << into | word[1] >> 1 >> (63 - into);
}

#if defined(__x86_64__)

// The ranks of the m-mers at the bases first, ... first + 3 of a word, in the lower halves of the
// lanes. reversed: the word's reverse complement. unused: bits of a lane that no m-mer has.
[[gnu::target("avx2")]] inline __m256i rankFour(__m256i word, __m256i reversed, __m256i shifts,
                                                __m128i unused, __m256i mask) {
  const __m256i mers = _mm256_srl_epi64(_mm256_sllv_epi64(word, shifts), unused);
  const __m256i others = _mm256_and_si256(_mm256_srlv_epi64(reversed, shifts), mask);
  const __m256i kinds = _mm256_blendv_epi8(mers, others, _mm256_cmpgt_epi64(mers, others));
  const __m256i folded = _mm256_xor_si256(kinds, _mm256_srli_epi64(kinds, 27));
  const __m256i factor = _mm256_set1_epi64x(0x9E3779B1);
  return _mm256_xor_si256(_mm256_mul_epu32(folded, factor), _mm256_set1_epi64x(0x5BD1E995));
}

[[gnu::target("avx2")]] void rankMersWide(const uint64_t* words, std::size_t into,
                                          std::size_t count, int m, uint32_t* ranks) {
  const int unusedBits = 64 - LEN_TO_BITLEN * m;
  const __m128i unused = _mm_cvtsi32_si128(unusedBits);
  const __m256i mask = _mm256_set1_epi64x(static_cast<int64_t>(~uint64_t{0} >> unusedBits));
  const __m256i firstFour = _mm256_setr_epi64x(0, 2, 4, 6);
  const __m256i nextFour = _mm256_setr_epi64x(8, 10, 12, 14);
  for (std::size_t i = 0; i < count; i += kRanksPerStep) {
    const uint64_t bases = wordFrom(words, into + i);
    const __m256i word = _mm256_set1_epi64x(static_cast<int64_t>(bases));
    const __m256i reversed = _mm256_set1_epi64x(static_cast<int64_t>(reversedKey(bases, DATA_LEN)));
    const __m256i one = rankFour(word, reversed, firstFour, unused, mask);
    const __m256i other = rankFour(word, reversed, nextFour, unused, mask);
    const __m256 lower =
        _mm256_shuffle_ps(_mm256_castsi256_ps(one), _mm256_castsi256_ps(other), 0x88);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(ranks + i),
                        _mm256_permute4x64_epi64(_mm256_castps_si256(lower), 0xD8));
  }
}

[[gnu::target("avx2")]] LeastRank leastRankWide(const uint32_t* ranks, unsigned count) {
  const __m256i lanes = _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7);
  const auto load = [&](unsigned i) __attribute__((target("avx2"))) {
    const __m256i there = _mm256_set1_epi32(static_cast<int>(count) - static_cast<int>(i));
    const __m256i loaded = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(ranks + i));
    // Lanes behind the last rank are all ones.
    return _mm256_or_si256(
        loaded, _mm256_xor_si256(_mm256_cmpgt_epi32(there, lanes), _mm256_set1_epi32(-1)));
  };
  __m256i least = load(0);
  for (unsigned i = kRanksPerStep; i < count; i += kRanksPerStep) {
    least = _mm256_min_epu32(least, load(i));
  }
  least = _mm256_min_epu32(least, _mm256_permute2x128_si256(least, least, 1));
  least = _mm256_min_epu32(least, _mm256_shuffle_epi32(least, 0x4E));
  least = _mm256_min_epu32(least, _mm256_shuffle_epi32(least, 0xB1));
  uint32_t equal = 0;
  for (unsigned i = 0; i < count; i += kRanksPerStep) {
    const __m256i same = _mm256_cmpeq_epi32(load(i), least);
    equal |= static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(same))) << i;
  }
  equal &= ~uint32_t{0} >> (32 - count);
  return {static_cast<uint32_t>(_mm256_extract_epi32(least, 0)),
          static_cast<unsigned>(std::countr_zero(equal)), (equal & (equal - 1)) != 0};
}

#endif

}  // namespace

void rankMersPlainly(const uint64_t* words, std::size_t into, std::size_t count, int m,
                     uint32_t* ranks) {
  for (std::size_t i = 0; i < count; ++i) {
    const uint64_t mer = wordFrom(words, into + i) >> (64 - LEN_TO_BITLEN * m);
    ranks[i] = rankOf(std::min(mer, reversedKey(mer, m)));
  }
}

LeastRank leastRankPlainly(const uint32_t* ranks, unsigned count) {
  LeastRank least{ranks[0], 0, false};
  for (unsigned i = 1; i < count; ++i) {
    if (ranks[i] == least.rank) least.isTied = true;
    if (ranks[i] < least.rank) least = {ranks[i], i, false};
  }
  return least;
}

void rankMers(const uint64_t* words, std::size_t into, std::size_t count, int m, uint32_t* ranks) {
#if defined(__x86_64__)
  if (hasWideLetters) return rankMersWide(words, into, count, m, ranks);
#endif
  rankMersPlainly(words, into, count, m, ranks);
}

LeastRank leastRank(const uint32_t* ranks, unsigned count) {
#if defined(__x86_64__)
  if (hasWideLetters) return leastRankWide(ranks, count);
#endif
  return leastRankPlainly(ranks, count);
}

}  // namespace velk
