// The gram filter: what was added is held, in its own orientation; little else is.
#include "kmer/gramFilter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <utility>

namespace velk::test {
namespace {

TEST(GramFilter, KmerLengthsWithGrams) {
  EXPECT_FALSE(hasGrams(15));
  EXPECT_TRUE(hasGrams(16));
  EXPECT_TRUE(hasGrams(32));
  EXPECT_FALSE(hasGrams(33));
}

// 4^16 grams there are of 16 bases: too few when more than one in 32 is some k-mer's.
TEST(GramFilter, GramsAreAsShortAsTheyAreRare) {
  constexpr uint64_t kMost = uint64_t{1} << (2 * 16 - 5);
  EXPECT_EQ(gramLengthFor(31, 0), 16);
  EXPECT_EQ(gramLengthFor(31, kMost), 16);
  EXPECT_EQ(gramLengthFor(31, kMost + 1), 17);
  EXPECT_EQ(gramLengthFor(31, 4 * kMost), 17);
  EXPECT_EQ(gramLengthFor(31, 4 * kMost + 1), 18);
  EXPECT_EQ(gramLengthFor(32, uint64_t{1} << 40), 23);
  EXPECT_EQ(gramLengthFor(16, uint64_t{1} << 40), 16);
  EXPECT_EQ(gramLengthFor(19, uint64_t{1} << 40), 19);
}

TEST(GramFilter, ABuiltOneTellsItsGrams) {
  GramFilter filter;
  filter.build(31, 1000);
  EXPECT_EQ(filter.gramLength(), 16);
  EXPECT_EQ(filter.gramsOfKmer(), 16U);
  filter.build(16, 1000);
  EXPECT_EQ(filter.gramLength(), 16);
  EXPECT_EQ(filter.gramsOfKmer(), 1U);
}

// Lengths of a k-mer and of its grams.
class StridesOf : public testing::TestWithParam<std::pair<int, int>> {
 protected:
  int kmer_ = GetParam().first;
  int gramLength_ = GetParam().second;
  std::size_t grams_ = gramsOf(kmer_, gramLength_);
};

TEST_P(StridesOf, AreAsFewAsRuleAllWindowsOut) {
  for (std::size_t from = 0; from < 40; from += 13) {
    for (std::size_t to = from + 1; to < from + 100; ++to) {
      const Strides strides(from, to, grams_);
      EXPECT_EQ(strides.size(), (to - from + grams_ - 1) / grams_) << from << " " << to;
      std::size_t n = 0;
      for (std::size_t window = from; window < to; ++window) {
        while (n < strides.size() && strides[n] < window) ++n;
        ASSERT_LT(n, strides.size()) << from << " " << to << " " << window;
        EXPECT_LT(strides[n], window + grams_) << from << " " << to << " " << window;
      }
    }
  }
}

TEST_P(StridesOf, AreTheSameOnBothStrandsButForTheMiddleOne) {
  constexpr std::size_t kWindows = 200;
  for (std::size_t from = 0; from < kWindows; ++from) {
    for (std::size_t to = from + 1; to <= kWindows; ++to) {
      if (to - from < grams_ && (from == 0) == (to == kWindows)) continue;  // either end will do
      const Strides strides(from, to, grams_);
      const Strides turned(kWindows - to, kWindows - from, grams_);
      ASSERT_EQ(strides.size(), turned.size());
      for (std::size_t n = 0; n < strides.size(); ++n) {
        const std::size_t other = kWindows + grams_ - 2 - turned[turned.size() - 1 - n];
        const std::size_t difference = std::max(strides[n], other) - std::min(strides[n], other);
        EXPECT_LE(difference, 2 * n + 1 == strides.size() ? 1U : 0U) << from << " " << to;
      }
    }
  }
}

TEST_P(StridesOf, AllHaveTheOneWrongBaseOfTheWindows) {
  const auto length = static_cast<std::size_t>(kmer_);
  constexpr std::size_t kWindows = 70;
  for (std::size_t wrong = 0; wrong < kWindows + length - 1; ++wrong) {
    const std::size_t from = wrong < length ? 0 : wrong - length + 1;
    const Strides strides(from, std::min(wrong + 1, kWindows), grams_);
    for (std::size_t n = 0; n < strides.size(); ++n) {
      EXPECT_LE(strides[n], wrong);
      EXPECT_LT(wrong, strides[n] + static_cast<std::size_t>(gramLength_)) << wrong;
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Lengths, StridesOf,
                         testing::Values(std::pair{16, 16}, std::pair{17, 16}, std::pair{21, 16},
                                         std::pair{21, 17}, std::pair{24, 16}, std::pair{31, 16},
                                         std::pair{31, 20}, std::pair{32, 16}, std::pair{32, 32}));

class AddedGrams : public testing::TestWithParam<int> {
 protected:
  AddedGrams() { filter_.build(32, kAdded); }

  Gram randomGram() { return {random_() >> (64 - 2 * GetParam()), GetParam()}; }

  static constexpr int kAdded = 20000;
  GramFilter filter_;
  std::mt19937_64 random_{1};
};

TEST_P(AddedGrams, AreHeld) {
  for (int i = 0; i < kAdded; ++i) {
    const Gram gram = randomGram();
    filter_.add(gram);
    ASSERT_TRUE(filter_.mayHold(gram));
  }
  random_.seed(1);
  for (int i = 0; i < kAdded; ++i) ASSERT_TRUE(filter_.mayHold(randomGram()));
}

TEST_P(AddedGrams, OthersAndTheirReverseComplementsAreMostlyDenied) {
  for (int i = 0; i < kAdded; ++i) filter_.add(randomGram());
  int held = 0;
  for (int i = 0; i < kAdded; ++i) held += filter_.mayHold(randomGram()) ? 1 : 0;
  EXPECT_LT(held, kAdded / 10);
  random_.seed(1);
  held = 0;
  for (int i = 0; i < kAdded; ++i) held += filter_.mayHold(randomGram().turned()) ? 1 : 0;
  EXPECT_LT(held, kAdded / 10);
}

INSTANTIATE_TEST_SUITE_P(GramLengths, AddedGrams, testing::Values(16, 17, 20, 32));

}  // namespace
}  // namespace velk::test
