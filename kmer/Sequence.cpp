#include "kmer/Sequence.h"

namespace velk {
namespace {

constexpr std::array<uint8_t, 256> makeAlphabet() {
  std::array<uint8_t, 256> codes{};
  codes.fill(4);
  codes['A'] = codes['a'] = 0;
  codes['C'] = codes['c'] = 1;
  codes['G'] = codes['g'] = 2;
  codes['T'] = codes['t'] = 3;
  return codes;
}

constexpr std::array<char, 128> makeComplementAlphabet() {
  std::array<char, 128> complements{};
  complements.fill('A');
  complements['A'] = complements['a'] = 'T';
  complements['C'] = complements['c'] = 'G';
  complements['G'] = complements['g'] = 'C';
  return complements;
}

constexpr std::string_view kLetters = "ACGT";  // by code

}  // namespace

constinit const std::array<uint8_t, 256> alphabet = makeAlphabet();
constinit const std::array<char, 128> complementAlphabet = makeComplementAlphabet();

void Seq2Kmer(uint64_t& kmer, std::string_view seq) {
  for (const char base : seq) kmer = (kmer << LEN_TO_BITLEN) | baseCode(base);
}

std::string Kmer2Seq(uint64_t kmer) {
  if (Kmer > DATA_LEN) return "";
  std::string letters(static_cast<std::size_t>(Kmer), ' ');
  for (auto letter = letters.rbegin(); letter != letters.rend(); ++letter) {
    *letter = kLetters[kmer & 3U];
    kmer >>= LEN_TO_BITLEN;
  }
  return letters;
}

}  // namespace velk
