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
  const __m256i upper = _mm256_and_si256(letters, _mm256_set1_epi8(static_cast<char>(0xDF)));
  const __m256i a = _mm256_cmpeq_epi8(upper, _mm256_set1_epi8('A'));
  const __m256i c = _mm256_cmpeq_epi8(upper, _mm256_set1_epi8('C'));
  const __m256i g = _mm256_cmpeq_epi8(upper, _mm256_set1_epi8('G'));
  const __m256i t = _mm256_cmpeq_epi8(upper, _mm256_set1_epi8('T'));
  const __m256i bases = _mm256_or_si256(_mm256_or_si256(a, c), _mm256_or_si256(g, t));
  return _mm256_movemask_epi8(bases) == -1;
}

#else

inline constexpr bool hasWideLetters = false;

#endif

}  // namespace velk
