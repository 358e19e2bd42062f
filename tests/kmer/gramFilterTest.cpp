// The gram filter: what was added is held, in its own orientation; little else is.
#include "kmer/gramFilter.h"

#include <gtest/gtest.h>

#include <random>

namespace velk::test {
namespace {

TEST(GramFilter, KmerLengthsWithGrams) {
  EXPECT_FALSE(hasGrams(23));
  EXPECT_TRUE(hasGrams(24));
  EXPECT_TRUE(hasGrams(32));
  EXPECT_FALSE(hasGrams(33));
  for (int kmer = 24; kmer <= 32; ++kmer) {
    EXPECT_EQ(gramsOf(kmer) % 2, 1u) << kmer;
    EXPECT_EQ(gramsOf(kmer) + static_cast<std::size_t>(gramLength(kmer)),
              static_cast<std::size_t>(kmer) + 1);
  }
}

class AddedGrams : public testing::TestWithParam<int> {
 protected:
  AddedGrams() { filter_.build(kAdded); }

  Gram randomGram() {
    return {random_() & ((uint64_t{1} << (2 * gramLength(GetParam()))) - 1), GetParam()};
  }

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
  EXPECT_LT(held, kAdded / 4);
  random_.seed(1);
  held = 0;
  for (int i = 0; i < kAdded; ++i) held += filter_.mayHold(randomGram().turned()) ? 1 : 0;
  EXPECT_LT(held, kAdded / 4);
}

INSTANTIATE_TEST_SUITE_P(KmerLengths, AddedGrams, testing::Values(24, 31, 32));

}  // namespace
}  // namespace velk::test
