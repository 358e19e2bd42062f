#include "check/hyperLogLog.h"

#include <gtest/gtest.h>

#include <cmath>

#include "kmer/hashSet.h"

namespace velk::check {
namespace {

// The hashes of n different keys, each `times` times.
double estimateOf(uint64_t n, uint64_t first, int times = 1) {
  HyperLogLog sketch;
  for (int time = 0; time < times; ++time) {
    for (uint64_t i = 0; i < n; ++i) sketch.add(hash_code(Entity{first + i, 0, 0, 0, 0}));
  }
  return sketch.estimate();
}

TEST(HyperLogLog, EmptyIsZero) {
  EXPECT_EQ(HyperLogLog().estimate(), 0);
}

TEST(HyperLogLog, FewAreCountedNearlyExactly) {
  for (uint64_t n = 1; n <= 1000; n *= 10) {
    EXPECT_NEAR(estimateOf(n, 77), static_cast<double>(n), 0.5 + 0.005 * static_cast<double>(n));
  }
}

TEST(HyperLogLog, StaysWithinFourStandardErrors) {
  for (const uint64_t n :
       {uint64_t{20000}, uint64_t{200000}, uint64_t{1000000}, uint64_t{5000000}}) {
    for (const uint64_t first : {uint64_t{0}, uint64_t{1} << 40, uint64_t{123456789}}) {
      const double error = estimateOf(n, first) / static_cast<double>(n) - 1;
      EXPECT_LT(std::abs(error), 4 * HyperLogLog::kError) << n << " from " << first;
    }
  }
}

// The mean square of many errors is what kError says, so the bound above is no accident.
TEST(HyperLogLog, ErrorIsOfTheSizeThatIsTold) {
  double squares = 0;
  constexpr int kRounds = 40;
  constexpr uint64_t kKeys = 600000;
  for (uint64_t round = 0; round < kRounds; ++round) {
    const double error = estimateOf(kKeys, round << 32) / kKeys - 1;
    squares += error * error;
  }
  const double typical = std::sqrt(squares / kRounds);
  EXPECT_GT(typical, 0.3 * HyperLogLog::kError);
  EXPECT_LT(typical, 1.5 * HyperLogLog::kError);
}

TEST(HyperLogLog, RepeatsDoNotCount) {
  EXPECT_EQ(estimateOf(50000, 5), estimateOf(50000, 5, 3));
}

}  // namespace
}  // namespace velk::check
