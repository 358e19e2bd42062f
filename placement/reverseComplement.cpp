#include "placement/reverseComplement.h"

#include <cstdint>
#include <cstring>

#include "kmer/Sequence.h"

namespace velk {
namespace {

constexpr uint64_t inEachByte(uint64_t value) {
  return value * 0x0101010101010101U;
}

// Whether the eight letters are A, C, G or T in either case, and if so their complements in upper
// case, in place. Bits 1 and 2 of a letter tell the four apart: A 00, C 01, T 10, G 11.
bool complementEight(uint64_t& letters) {
  const uint64_t upper = letters & inEachByte(0xDF);
  const uint64_t low = upper >> 1 & inEachByte(1);
  const uint64_t high = upper >> 2 & inEachByte(1);
  const uint64_t rebuilt = inEachByte('A') + low * ('C' - 'A') + high * ('T' - 'A') -
                           (low & high) * (('C' - 'A') + ('T' - 'A') - ('G' - 'A'));
  if (rebuilt != upper) return false;
  letters = upper ^ inEachByte('C' ^ 'G') ^ (low ^ inEachByte(1)) * ('A' ^ 'T' ^ 'C' ^ 'G');
  return true;
}

}  // namespace

void reverseComplement(char* target, const char* source, std::size_t length) {
  constexpr std::size_t kAtOnce = sizeof(uint64_t);
  char* end = target + length;
  std::size_t i = 0;
  for (; i + kAtOnce <= length; i += kAtOnce) {
    end -= kAtOnce;
    uint64_t letters = 0;
    std::memcpy(&letters, source + i, kAtOnce);
    if (complementEight(letters)) {
      letters = __builtin_bswap64(letters);
      std::memcpy(end, &letters, kAtOnce);
    } else {
      for (std::size_t j = 0; j < kAtOnce; ++j) end[kAtOnce - 1 - j] = complementOf(source[i + j]);
    }
  }
  for (; i < length; ++i) *--end = complementOf(source[i]);
}

}  // namespace velk
