#include "kmer/packedBases.h"

#include <array>
#include <cstring>

#include "kmer/vectorised.h"

namespace velk {

namespace {

// Packs the DATA_LEN letters of a word. Sets bits of `others` if one of them is no base.
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
  uint64_t word = 0;
  for (std::size_t i = 0; i < codes.size(); i += sizeof word) {
    uint64_t quarter = 0;
    std::memcpy(&quarter, &codes[i], sizeof quarter);
    quarter = __builtin_bswap64(quarter);
    quarter = (quarter | quarter >> 6) & 0x000F000F000F000FU;
    quarter = (quarter | quarter >> 12) & 0x000000FF000000FFU;
    word = word << 16 | ((quarter | quarter >> 24) & 0xFFFFU);
  }
  return word;
}

}  // namespace

VELK_VECTORISED bool packBases(std::string_view letters, uint64_t* words) {
  uint8_t others = 0;
  for (; letters.size() >= DATA_LEN; letters.remove_prefix(DATA_LEN)) {
    *words++ = packWord(letters.data(), others);
  }
  if (!letters.empty()) {
    std::array<char, DATA_LEN> last;
    last.fill('A');
    std::memcpy(last.data(), letters.data(), letters.size());
    *words = packWord(last.data(), others);
  }
  return others == 0;
}

bool PackedBases::fill(std::string_view bases) {
  words_.resize(bases.size() / DATA_LEN + 2);
  return packBases(bases, words_.data());
}

}  // namespace velk
