// Eight letters of a sequence in one word, a byte each: the bases among them tell themselves apart
// by two bits.
#pragma once

#include <bit>
#include <cstdint>

namespace velk {

static_assert(std::endian::native == std::endian::little, "the lowest byte is the first letter");

/// A word with `value`, below 256, in each of its bytes.
constexpr uint64_t inEachByte(uint64_t value) {
  return value * 0x0101010101010101U;
}

/// Bits 1 and 2 of a letter tell the bases apart, in either case: A 00, C 01, T 10, G 11.
struct EightLetters {
  uint64_t upper;  // the letters in upper case
  uint64_t low;    // bit 1 of each
  uint64_t high;   // bit 2 of each

  /// letters: eight, as they lie in memory.
  explicit constexpr EightLetters(uint64_t letters)
      : upper(letters & inEachByte(0xDF)),
        low(upper >> 1 & inEachByte(1)),
        high(upper >> 2 & inEachByte(1)) {}

  /// 0 when all eight are bases.
  constexpr uint64_t notBases() const {
    const uint64_t rebuilt = inEachByte('A') + low * ('C' - 'A') + high * ('T' - 'A') -
                             (low & high) * (('C' - 'A') + ('T' - 'A') - ('G' - 'A'));
    return rebuilt ^ upper;
  }

  /// The complements in upper case, in place. REQUIRES: all are bases.
  constexpr uint64_t complements() const {
    return upper ^ inEachByte('C' ^ 'G') ^ (low ^ inEachByte(1)) * ('A' ^ 'T' ^ 'C' ^ 'G');
  }

  /// The codes of kmer/Sequence.h in 16 bits, the letter in the lowest byte foremost.
  /// REQUIRES: all are bases.
  constexpr uint64_t codes() const {
    uint64_t packed = __builtin_bswap64(high << 1 | (low ^ high));
    packed = (packed | packed >> 6) & 0x000F000F000F000FU;
    packed = (packed | packed >> 12) & 0x000000FF000000FFU;
    return (packed | packed >> 24) & 0xFFFFU;
  }
};

}  // namespace velk
