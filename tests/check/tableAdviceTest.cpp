#include "check/tableAdvice.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <array>
#include <cmath>
#include <iostream>
#include <sstream>

#include "check/refusal.h"
#include "kmer/hashSet.h"

namespace velk::check {
namespace {

constexpr std::array kLoadFactors = {0.25F, 0.5F, 0.75F, 0.8F, 0.9F, 0.95F, 0.99F};

// Fills a set of velk's own that was asked for `slots` slots with n keys; returns its slots after.
uint64_t slotsAfter(uint64_t slots, uint64_t n, float loadFactor) {
  const Quiet quiet;
  HashSet* const set = init_hashset(slots, loadFactor);
  for (uint64_t i = 0; i < n; ++i) add_hashset(set, Entity{i * 0x9E3779B97F4A7C15U, 0, 0, 0, 1});
  const uint64_t after = set->size;
  free_hash(set);
  return after;
}

// The fewest slots that hold n keys, by trying.
bool isEnough(uint64_t slots, uint64_t n, float loadFactor) {
  return mostEntities(slotsFor(slots), clampedLoadFactor(loadFactor)) >= n;
}

TEST(SlotsToAskFor, TableNeverGrows) {
  const bool ok = rc::check([] {
    const auto n = *rc::gen::inRange<uint64_t>(0, 30000);
    const float loadFactor = *rc::gen::elementOf(kLoadFactors);
    const uint64_t asked = slotsToAskFor(n, loadFactor);
    RC_ASSERT(slotsAfter(asked, n, loadFactor) == slotsFor(asked));
  });
  EXPECT_TRUE(ok);
}

TEST(SlotsToAskFor, AsksForAtMostTwoPercentMoreThanNeeded) {
  const bool ok = rc::check([] {
    const auto exponent = *rc::gen::inRange(8, 34);
    const auto n = *rc::gen::inRange<uint64_t>(uint64_t{1} << exponent, uint64_t{2} << exponent);
    const float loadFactor = *rc::gen::elementOf(kLoadFactors);
    const uint64_t asked = slotsToAskFor(n, loadFactor);
    RC_ASSERT(isEnough(asked, n, loadFactor));
    const double needed = static_cast<double>(n) / static_cast<double>(loadFactor);
    RC_ASSERT(static_cast<double>(slotsFor(asked)) <= 1.02 * needed + 20);
  });
  EXPECT_TRUE(ok);
}

TEST(SlotsToAskFor, LoadFactorsOutOfRangeAreVelksOwn) {
  EXPECT_EQ(slotsToAskFor(1000, 0.0F), slotsToAskFor(1000, 0.25F));
  EXPECT_EQ(slotsToAskFor(1000, 1.0F), slotsToAskFor(1000, 0.75F));
}

TEST(FinalSlots, ForetellsTheTableAfterGrowth) {
  const bool ok = rc::check([] {
    const auto asked = *rc::gen::inRange<uint64_t>(0, 3000);
    const auto n = *rc::gen::inRange<uint64_t>(0, 30000);
    const float loadFactor = *rc::gen::elementOf(kLoadFactors);
    RC_ASSERT(slotsAfter(asked, n, loadFactor) == finalSlots(asked, n, loadFactor));
  });
  EXPECT_TRUE(ok);
}

}  // namespace
}  // namespace velk::check
