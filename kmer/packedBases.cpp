#include "kmer/packedBases.h"

#include <algorithm>
#include <array>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

#include "kmer/Sequence.h"
#include "kmer/wideLetters.h"

namespace velk {
namespace {

#if defined(__x86_64__)

// Packs DATA_LEN letters, if all are bases. Returns whether they are.
[[gnu::target("avx2")]] bool packWide(const char* letters, uint64_t& word) {
  const __m256i wide = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(letters));
  // Bits 1 and 2 of a letter, A 00, C 01, T 10, G 11, make its code when the higher flips the
  // lower.
  const __m256i bits = _mm256_and_si256(_mm256_srli_epi16(wide, 1), _mm256_set1_epi8(3));
  const __m256i high = _mm256_and_si256(_mm256_srli_epi16(bits, 1), _mm256_set1_epi8(1));
  const __m256i codes = _mm256_xor_si256(bits, high);
  // Two codes to four bits, two of these to a byte, four of these to half a word.
  const __m256i pairs = _mm256_maddubs_epi16(codes, _mm256_set1_epi16(0x0104));
  const __m256i fours = _mm256_madd_epi16(pairs, _mm256_set1_epi32(0x00010010));
  const __m256i halves =
      _mm256_shuffle_epi8(fours, _mm256_broadcastsi128_si256(_mm_setr_epi8(
                                     12, 8, 4, 0, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1, -1)));
  word = static_cast<uint64_t>(static_cast<uint32_t>(_mm256_extract_epi32(halves, 0))) << 32 |
         static_cast<uint32_t>(_mm256_extract_epi32(halves, 4));
  // A base is the letter of its code, in either case.
  const __m256i upper = _mm256_and_si256(wide, _mm256_set1_epi8(static_cast<char>(0xDF)));
  const __m256i bases =
      _mm256_shuffle_epi8(_mm256_set1_epi32('T' << 24 | 'G' << 16 | 'C' << 8 | 'A'), codes);
  return _mm256_movemask_epi8(_mm256_cmpeq_epi8(bases, upper)) == -1;
}

#else

bool packWide(const char*, uint64_t&) {
  return false;
}

#endif

}  // namespace

bool packBases(std::string_view letters, uint64_t& word, bool isPlain) {
  std::array<char, DATA_LEN> room;
  if (letters.size() < room.size()) {
    room.fill('A');
    std::copy(letters.begin(), letters.end(), room.begin());
    letters = {room.data(), room.size()};
  }
  if (hasWideLetters && !isPlain && packWide(letters.data(), word)) return true;
  word = 0;
  bool areBases = true;
  for (const char letter : letters) {
    const uint8_t code = baseCode(letter);
    word = word << LEN_TO_BITLEN | (code & 3U);
    areBases &= code < 4;
  }
  return areBases;
}

bool PackedBases::fill(std::string_view bases) {
  words_.resize(bases.size() / DATA_LEN + 2);
  bool areBases = true;
  for (std::size_t i = 0; i < bases.size(); i += DATA_LEN) {
    areBases &= packBases(bases.substr(i, DATA_LEN), words_[i / DATA_LEN]);
  }
  return areBases;
}

}  // namespace velk
