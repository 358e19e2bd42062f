#include "placement/countEqual.h"

#if defined(__x86_64__)
#include <emmintrin.h>
#endif

namespace velk {

std::size_t countEqualPlainly(const char* one, const char* other, std::size_t length) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < length; ++i) equal += one[i] == other[i] ? 1 : 0;
  return equal;
}

#if defined(__x86_64__)

// Sixteen at a time. Counts in bytes would overflow after 255 rounds, so the equal bases of each
// round are added up into two counts of 64 bits.
std::size_t countEqual(const char* one, const char* other, std::size_t length) {
  constexpr std::size_t kAtOnce = 16;
  __m128i sums = _mm_setzero_si128();
  std::size_t i = 0;
  for (; i + kAtOnce <= length; i += kAtOnce) {
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(one + i));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(other + i));
    const __m128i ones = _mm_and_si128(_mm_cmpeq_epi8(a, b), _mm_set1_epi8(1));
    sums = _mm_add_epi64(sums, _mm_sad_epu8(ones, _mm_setzero_si128()));
  }
  const auto low = static_cast<std::size_t>(_mm_cvtsi128_si64(sums));
  const auto high = static_cast<std::size_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(sums, sums)));
  return low + high + countEqualPlainly(one + i, other + i, length - i);
}

#else

std::size_t countEqual(const char* one, const char* other, std::size_t length) {
  return countEqualPlainly(one, other, length);
}

#endif

}  // namespace velk
