#include "placement/reverseComplement.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "kmer/Sequence.h"
#include "kmer/eightLetters.h"
#include "kmer/wideLetters.h"

namespace velk {
namespace {

#if defined(__x86_64__)

// Turns as many letters as it can, a register full at a time, and returns how many; none of a
// register full in which one has no complement of its own.
// cppcheck-suppress constParameter ; the letters are stored there
[[gnu::target("avx2")]] std::size_t turnWide(char* end, const char* source, std::size_t length) {
  // A base's low four bits tell it: A 1, C 3, T 4, G 7.
  const __m256i complements = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 'T', 0, 'G', 'A', 0, 0, 'C', 0, 0, 0, 0, 0, 0, 0, 0));
  const __m256i backwards = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
  std::size_t i = 0;
  while (i < length && kWide <= length) {
    const std::size_t from = std::min(i, length - kWide);  // the last register overlaps another
    const __m256i letters = wideLettersAt(source + from);
    if (!areWideBases(letters)) break;
    const __m256i low = _mm256_and_si256(letters, _mm256_set1_epi8(15));
    const __m256i turned = _mm256_shuffle_epi8(_mm256_shuffle_epi8(complements, low), backwards);
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(end - from - kWide),
                        _mm256_permute2x128_si256(turned, turned, 1));
    i = from + kWide;
  }
  return i;
}

#else

std::size_t turnWide(char*, const char*, std::size_t) {
  return 0;
}

#endif

}  // namespace

void reverseComplementPlainly(char* target, const char* source, std::size_t length) {
  constexpr std::size_t kAtOnce = sizeof(uint64_t);
  char* end = target + length;
  std::size_t i = 0;
  for (; i + kAtOnce <= length; i += kAtOnce) {
    end -= kAtOnce;
    uint64_t letters = 0;
    std::memcpy(&letters, source + i, kAtOnce);
    if (const EightLetters eight(letters); eight.notBases() == 0) {
      letters = __builtin_bswap64(eight.complements());
      std::memcpy(end, &letters, kAtOnce);
    } else {
      for (std::size_t j = 0; j < kAtOnce; ++j) end[kAtOnce - 1 - j] = complementOf(source[i + j]);
    }
  }
  for (; i < length; ++i) *--end = complementOf(source[i]);
}

void reverseComplement(char* target, const char* source, std::size_t length) {
  const std::size_t turned = hasWideLetters ? turnWide(target + length, source, length) : 0;
  reverseComplementPlainly(target, source + turned, length - turned);
}

void reverseComplementInPlace(char* letters, std::size_t length) {
  std::array<char, 256> front;
  char* end = letters + length;
  while (end - letters > 1) {
    const auto half = static_cast<std::size_t>(end - letters) / 2;
    const std::size_t count = std::min(half, front.size());
    std::copy_n(letters, count, front.begin());
    reverseComplement(letters, end - count, count);
    reverseComplement(end - count, front.data(), count);
    letters += count;
    end -= count;
  }
  if (letters < end) *letters = complementOf(*letters);
}

}  // namespace velk
