// The ranks of m-mers, and the least of some, against their definitions.
#include "kmer/seeds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "tests/kmer/kmerModel.h"

namespace velk::test {
namespace {

constexpr std::size_t kWords = 12;
constexpr std::size_t kWordBases = 32;

uint64_t merAt(const std::vector<uint64_t>& words, std::size_t at, int m) {
  uint64_t mer = 0;
  for (std::size_t i = at; i < at + static_cast<std::size_t>(m); ++i) {
    mer = mer << 2 | (words[i / kWordBases] >> (62 - 2 * (i % kWordBases)) & 3U);
  }
  return mer;
}

TEST(MerRanks, AreThoseOfTheKinds) {
  std::mt19937_64 random(1);
  std::vector<uint64_t> words(kWords);
  for (uint64_t& word : words) word = random();
  words[3] = words[4] = 0;  // a stretch of one m-mer
  for (int m = 1; m <= kLongestMer; ++m) {
    for (std::size_t n = 0; n + 1 < kWords; ++n) {
      std::array<uint32_t, kWordBases> ranks{};
      rankMers(words[n], words[n + 1], m, ranks.data());
      for (uint64_t i = 0; i < kWordBases; ++i) {
        const uint64_t mer = merAt(words, n * kWordBases + i, m);
        ASSERT_EQ(ranks[i], rankOf(std::min(mer, modelOfReversing(mer, m)))) << m << ' ' << i;
      }
    }
  }
}

// Whether the first of the least ranks is chosen, and whether there are others is known.
void expectLeast(const std::vector<uint32_t>& ranks, unsigned count) {
  const auto end = ranks.begin() + count;
  const auto least = std::min_element(ranks.begin(), end);
  const LeastRank chosen = leastRank(ranks.data(), count);
  ASSERT_EQ(chosen.rank, *least);
  ASSERT_EQ(chosen.offset, least - ranks.begin());
  ASSERT_EQ(chosen.isTied, std::count(ranks.begin(), end, *least) > 1);
}

TEST(LeastRank, FirstOfThoseThatTie) {
  std::mt19937_64 random(3);
  for (int turn = 0; turn < 20000; ++turn) {
    const auto count = static_cast<unsigned>(1 + random() % kMostOffsets);
    const uint64_t kinds = turn % 2 == 0 ? 1 + random() % 40 : uint64_t{1} << 32;
    std::vector<uint32_t> ranks(32);
    // also those behind the last one, which count for nothing
    for (uint32_t& rank : ranks) rank = static_cast<uint32_t>(random() % kinds);
    SCOPED_TRACE(turn);
    expectLeast(ranks, count);
  }
}

TEST(LeastRank, OfTheLargestRanks) {
  for (unsigned count = 1; count <= kMostOffsets; ++count) {
    std::vector<uint32_t> ranks(32, 0);
    std::fill(ranks.begin(), ranks.begin() + count, ~uint32_t{0});
    expectLeast(ranks, count);
    ranks[count - 1] = 0x80000000U;  // the least, though not as a signed number
    expectLeast(ranks, count);
  }
}

}  // namespace
}  // namespace velk::test
