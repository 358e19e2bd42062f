// Base and k-mer coding: 2 bits a base, and the complement of a base.
//
// Seq2Kmer says what the key of a k-mer is; PackedBases makes the same keys faster. Pure functions
// over constant tables; any thread may call them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "driver/velk.h"

namespace velk {

/// Code of every byte: A a 0, C c 1, G g 2, T t 3, all others 4.
inline constinit const std::array<uint8_t, 256> alphabet = [] {
  std::array<uint8_t, 256> codes{};
  codes.fill(4);
  codes['A'] = codes['a'] = 0;
  codes['C'] = codes['c'] = 1;
  codes['G'] = codes['g'] = 2;
  codes['T'] = codes['t'] = 3;
  return codes;
}();

/// Complement of every character below 128, in upper case; characters other than A, C and G (a, c
/// and g) give 'A', T and N included.
inline constinit const std::array<char, 128> complementAlphabet = [] {
  std::array<char, 128> complements{};
  complements.fill('A');
  complements['A'] = complements['a'] = 'T';
  complements['C'] = complements['c'] = 'G';
  complements['G'] = complements['g'] = 'C';
  return complements;
}();

/// Returns the code of `base`: alphabet indexed by the byte's value.
inline uint8_t baseCode(char base) {
  return alphabet[static_cast<unsigned char>(base)];
}

/// Returns the complement of `base`; bytes of 128 and above give 'A'.
inline char complementOf(char base) {
  const auto byte = static_cast<unsigned char>(base);
  return byte < complementAlphabet.size() ? complementAlphabet[byte] : 'A';
}

/// Packs `seq` into `kmer` (inout): the last base in the lowest two bits, earlier ones above; bases
/// before the last 32 are shifted out. The code 4 is ORed in unchanged: it reads as A in its own
/// place and sets the low bit of the base before it. A word that is not 0 is not cleared.
inline void Seq2Kmer(uint64_t& kmer, std::string_view seq) {
  for (const char base : seq) kmer = (kmer << LEN_TO_BITLEN) | baseCode(base);
}

/// The key of a k-mer, as Seq2Kmer packs it.
inline uint64_t packedKmer(std::string_view bases) {
  uint64_t key = 0;
  Seq2Kmer(key, bases);
  return key;
}

/// Returns the `Kmer` letters of a packed k-mer; empty when Kmer is above 32.
inline std::string Kmer2Seq(uint64_t kmer) {
  if (Kmer > DATA_LEN) return "";
  std::string letters(static_cast<std::size_t>(Kmer), ' ');
  for (auto letter = letters.rbegin(); letter != letters.rend(); ++letter) {
    *letter = "ACGT"[kmer & 3U];
    kmer >>= LEN_TO_BITLEN;
  }
  return letters;
}

}  // namespace velk
