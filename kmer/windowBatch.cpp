#include "kmer/windowBatch.h"

#include <algorithm>

#include "driver/velk.h"
#include "kmer/Sequence.h"

namespace velk {
namespace {

constexpr std::size_t kMostBases = WindowBatch::kMost + 31;
constexpr std::size_t kMostWords = WindowBatch::kMost + kWordsPerKmer - 1;

constexpr uint64_t lowBases(int count) {
  return count >= DATA_LEN ? ~uint64_t{0} : (uint64_t{1} << (LEN_TO_BITLEN * count)) - 1;
}

constexpr int wordLength(int kmer) {
  return kmer - kWordsPerKmer + 1;
}

// The hash that orders words; the factor is 2^64 divided by the golden ratio.
constexpr uint64_t wordHash(uint64_t word, uint64_t reversed) {
  return std::min(word, reversed) * 0x9E3779B97F4A7C15U;
}

// least[i] = the least of hashes[i, i + kWordsPerKmer), for i in [0, count): the running least from
// each block's start and to each block's end, joined (M. van Herk, Pattern Recognition Letters 13,
// 1992).
void slidingLeast(const std::array<uint64_t, kMostWords>& hashes, std::size_t count,
                  std::array<uint64_t, WindowBatch::kMost>& least) {
  std::array<uint64_t, kMostWords> fromStart;
  std::array<uint64_t, kMostWords> toEnd;
  const std::size_t words = count + kWordsPerKmer - 1;
  for (std::size_t block = 0; block < words; block += kWordsPerKmer) {
    const std::size_t end = std::min(block + kWordsPerKmer, words);
    fromStart[block] = hashes[block];
    for (std::size_t i = block + 1; i < end; ++i) {
      fromStart[i] = std::min(fromStart[i - 1], hashes[i]);
    }
    toEnd[end - 1] = hashes[end - 1];
    for (std::size_t i = end - 1; i > block; --i) toEnd[i - 1] = std::min(toEnd[i], hashes[i - 1]);
  }
  for (std::size_t i = 0; i < count; ++i)
    least[i] = std::min(toEnd[i], fromStart[i + kWordsPerKmer - 1]);
}

}  // namespace

bool WindowBatch::fill(std::string_view bases, std::size_t count, int kmer) {
  const std::size_t length = count + static_cast<std::size_t>(kmer) - 1;
  std::array<uint8_t, kMostBases> codes;
  uint8_t seen = 0;
  for (std::size_t i = 0; i < length; ++i) seen |= codes[i] = baseCode(bases[i]);
  if (seen > 3) return false;

  const auto word = static_cast<std::size_t>(wordLength(kmer));
  const uint64_t wordBits = lowBases(wordLength(kmer));
  const uint64_t keyBits = lowBases(kmer);
  const auto top = static_cast<unsigned>(LEN_TO_BITLEN * (wordLength(kmer) - 1));
  std::array<uint64_t, kMostWords> hashes;
  uint64_t key = 0;
  uint64_t reversed = 0;
  const auto firstKey = static_cast<std::size_t>(kmer) - 1;
  for (std::size_t i = 0; i < length; ++i) {
    key = key << LEN_TO_BITLEN | codes[i];
    reversed = reversed >> LEN_TO_BITLEN | uint64_t{3U - codes[i]} << top;
    if (i + 1 >= word) hashes[i + 1 - word] = wordHash(key & wordBits, reversed);
    if (i >= firstKey) keys_[i - firstKey] = key & keyBits;
  }
  slidingLeast(hashes, count, minimizers_);
  return true;
}

uint64_t reversedKey(uint64_t key, int kmer) {
  // The complement of a code is its bits' inverse. Pairs, fours and bytes change places in turn.
  uint64_t turned = ~key;
  turned = (turned & 0x3333333333333333U) << 2 | (turned >> 2 & 0x3333333333333333U);
  turned = (turned & 0x0F0F0F0F0F0F0F0FU) << 4 | (turned >> 4 & 0x0F0F0F0F0F0F0F0FU);
  turned = __builtin_bswap64(turned);
  return turned >> (64 - LEN_TO_BITLEN * kmer);
}

uint64_t minimizerOf(uint64_t key, int kmer) {
  const int length = wordLength(kmer);
  uint64_t least = ~uint64_t{0};
  for (int i = 0; i < kWordsPerKmer; ++i) {
    const uint64_t word = key >> (LEN_TO_BITLEN * i) & lowBases(length);
    least = std::min(least, wordHash(word, reversedKey(word, length)));
  }
  return least;
}

}  // namespace velk
