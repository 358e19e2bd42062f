// Which numbers of slots count as prime.
#include <gtest/gtest.h>

#include <cmath>

#include "kmer/hashSet.h"

namespace velk::test {
namespace {

// The first odd divisor of `num` from 3 on, or `num`.
uint64_t leastOddDivisor(uint64_t num) {
  uint64_t divisor = 3;
  while (divisor < num && num % divisor != 0) divisor += 2;
  return divisor;
}

TEST(HashSet, PrimeQuirk) {
  for (const uint64_t num : {9U, 15U, 25U, 35U, 49U, 121U, 143U, 169U, 289U, 323U, 361U}) {
    EXPECT_TRUE(is_prime(num)) << num;
  }
  for (const uint64_t num : {21U, 27U, 33U, 45U, 63U, 77U, 91U, 117U, 221U}) {
    EXPECT_FALSE(is_prime(num)) << num;
  }
}

TEST(HashSet, NumbersBelowFourCountAsPrime) {
  for (uint64_t num = 0; num < 4; ++num) EXPECT_TRUE(is_prime(num)) << num;
}

TEST(HashSet, EvenNumbersAreNotPrime) {
  for (uint64_t num = 4; num < 1000; num += 2) EXPECT_FALSE(is_prime(num)) << num;
  EXPECT_FALSE(is_prime(uint64_t{1} << 40));
}

TEST(HashSet, OddNumbersArePrimeWithoutADivisorBelowTheirRoot) {
  for (uint64_t num = 5; num < 20000; num += 2) {
    uint64_t root = 1;
    while ((root + 1) * (root + 1) <= num) ++root;
    EXPECT_EQ(is_prime(num), leastOddDivisor(num) >= root) << num;
  }
}

TEST(HashSet, RootIsTakenInSinglePrecision) {
  // 4217 x 4219 = 4218 x 4218 - 1, which single precision rounds up to the square, so that the
  // smaller factor is tried; of 1019 x 1021 = 1020 x 1020 - 1 it is not
  EXPECT_FALSE(is_prime(17791523));
  EXPECT_FALSE(is_prime(17040383));
  EXPECT_TRUE(is_prime(1040399));
}

TEST(HashSet, NextPrimeStartsAtTheNumberIfItIsOdd) {
  EXPECT_EQ(find_next_prime(0), 1U);
  EXPECT_EQ(find_next_prime(1), 1U);
  EXPECT_EQ(find_next_prime(2), 3U);
  EXPECT_EQ(find_next_prime(3), 3U);
  EXPECT_EQ(find_next_prime(4), 5U);
  EXPECT_EQ(find_next_prime(8), 9U);
  EXPECT_EQ(find_next_prime(9), 9U);
  EXPECT_EQ(find_next_prime(10), 11U);
  EXPECT_EQ(find_next_prime(21), 23U);
  EXPECT_EQ(find_next_prime(26), 29U);
  EXPECT_EQ(find_next_prime(1048576), 1048583U);
}

}  // namespace
}  // namespace velk::test
