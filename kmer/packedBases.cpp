#include "kmer/packedBases.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "kmer/machine.h"

namespace velk {

namespace {

// Packs the DATA_LEN letters of a word. Sets bits of `others` if one of them is non-ACGT.
[[gnu::always_inline]] inline uint64_t packWord(const char* letters, uint8_t& others) {
  std::array<uint8_t, DATA_LEN> codes;
  for (std::size_t i = 0; i < codes.size(); ++i) {
    const auto upper = static_cast<uint8_t>(letters[i] & 0xDF);
    // Bits 1 and 2, A 00, C 01, T 10, G 11, make the code when the higher flips the lower.
    const uint8_t code = (upper >> 1 ^ upper >> 2) & 3U;
    const auto base =
        static_cast<uint8_t>('A' + 2 * code + (code == 2 ? 2 : 0) + (code == 3 ? 13 : 0));
    codes[i] = upper == base ? code : 0;
    others |= upper ^ base;
  }
  // Two codes to four bits, two of these to a byte, two of these to a quarter of the word.
  std::array<uint64_t, 4> quarters;
  std::memcpy(quarters.data(), codes.data(), sizeof quarters);
#pragma GCC unroll 1
  for (uint64_t& quarter : quarters) {
    quarter = __builtin_bswap64(quarter);
    quarter = (quarter | quarter >> 6) & 0x000F000F000F000FU;
    quarter = (quarter | quarter >> 12) & 0x000000FF000000FFU;
    quarter = (quarter | quarter >> 24) & 0xFFFFU;
  }
  return quarters[0] << 48 | quarters[1] << 32 | quarters[2] << 16 | quarters[3];
}

}  // namespace

VELK_VECTORISED bool packBases(std::string_view letters, uint64_t* words) {
  const std::size_t count = letters.size();
  std::array<char, DATA_LEN> few;
  if (count < few.size()) {
    few.fill('A');
    std::copy(letters.begin(), letters.end(), few.begin());
    letters = {few.data(), few.size()};
  }
  uint8_t others = 0;
  for (std::size_t at = 0; at < count; at += DATA_LEN) {
    // The last word is packed together with letters of the word before, which are shifted out.
    const std::size_t from = std::min<std::size_t>(at, letters.size() - DATA_LEN);
    *words++ = packWord(&letters[from], others) << LEN_TO_BITLEN * (at - from);
  }
  return others == 0;
}

}  // namespace velk
