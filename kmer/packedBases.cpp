#include "kmer/packedBases.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "kmer/eightLetters.h"
#include "kmer/wideLetters.h"

namespace velk {
namespace {

static_assert(kWide == DATA_LEN);

constexpr std::size_t kAtOnce = sizeof(uint64_t);
constexpr unsigned kBitsAtOnce = LEN_TO_BITLEN * kAtOnce;

// Packs the letters of one word; returns whether all are bases.
bool packWord(const char* letters, uint64_t& word) {
  uint64_t notBases = 0;
  for (std::size_t i = 0; i < kWide; i += kAtOnce) {
    uint64_t eight = 0;
    std::memcpy(&eight, letters + i, kAtOnce);
    const EightLetters split(eight);
    notBases |= split.notBases();
    word = word << kBitsAtOnce | split.codes();
  }
  return notBases == 0;
}

#if defined(__x86_64__)

[[gnu::target("avx2")]] bool packWordWide(const char* letters, uint64_t& word) {
  const __m256i wide = wideLettersAt(letters);
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
  return areWideBases(wide);
}

const auto packWordBest = hasWideLetters ? packWordWide : packWord;

#else

constexpr auto packWordBest = packWord;

#endif

}  // namespace

bool packBases(const char* letters, uint64_t& word) {
  return packWordBest(letters, word);
}

bool PackedBases::fill(std::string_view bases) {
  return fillBy(packWordBest, bases);
}

bool PackedBases::fillPlainly(std::string_view bases) {
  return fillBy(packWord, bases);
}

bool PackedBases::fillBy(bool (*pack)(const char*, uint64_t&), std::string_view bases) {
  words_.resize(bases.size() / kWide + 2);
  bool areBases = true;
  std::size_t i = 0;
  for (; i + kWide <= bases.size(); i += kWide) {
    areBases &= pack(bases.data() + i, words_[i / kWide]);
  }
  const std::size_t rest = bases.size() - i;
  if (rest == 0) return areBases;
  uint64_t& last = words_[i / kWide];
  if (i != 0) {
    // the last 32 letters; those that have been packed are shifted out
    areBases &= pack(bases.data() + bases.size() - kWide, last);
    last <<= LEN_TO_BITLEN * (kWide - rest);
  } else {
    std::array<char, kWide> letters;
    letters.fill('A');
    std::copy(bases.begin(), bases.end(), letters.begin());
    areBases &= pack(letters.data(), last);
  }
  return areBases;
}

}  // namespace velk
