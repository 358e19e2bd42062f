// Thirty-two letters of a sequence at once, on processors that have AVX2. Others go eight by eight
// (kmer/eightLetters.h); both give the same.
#pragma once

#include <cstddef>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace velk {

inline constexpr std::size_t kWide = 32;  // letters

#if defined(__x86_64__)

inline const bool hasWideLetters = __builtin_cpu_supports("avx2");

/// The letters at `letters`, which need not be aligned. REQUIRES, as below: hasWideLetters.
[[gnu::target("avx2")]] inline __m256i wideLettersAt(const char* letters) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(letters));
}

/// Whether all are A, C, G or T, in either case.
[[gnu::target("avx2")]] inline bool areWideBases(__m256i letters) {
  // The base that a letter's low four bits tell; where they tell none, no letter with these bits.
  const __m256i bases = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(-1, 'A', 0, 'C', 'T', 0, 0, 'G', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i upper = _mm256_and_si256(letters, _mm256_set1_epi8(static_cast<char>(0xDF)));
  const __m256i same = _mm256_cmpeq_epi8(_mm256_shuffle_epi8(bases, upper), upper);
  return _mm256_movemask_epi8(same) == -1;
}

#else

inline constexpr bool hasWideLetters = false;

#endif

}  // namespace velk
