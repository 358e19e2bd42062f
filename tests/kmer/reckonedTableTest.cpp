// The numbers of a hash set that is not there: lines, numbers and ends of the one that would be.
#include "kmer/fetchKmers.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>

#include "kmer/hashSet.h"
#include "tests/kmer/failingAllocations.h"
#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

using ::testing::ExitedWithCode;
using ::testing::MatchesRegex;

constexpr const char* kInitMessage = "Out of memory! Line: [0-9]+[.] Function: init_hashset\n";
constexpr const char* kEnlargeMessage =
    "Out of memory! Line: [0-9]+[.] Function: enlarge_hashset[.]\n";

OwnSet reckonedSet(uint64_t slots, float loadFactor) {
  return {newKmerHash(slots, loadFactor), [](velk::HashSet* set) {
            freeKmerHash(set);
            return 1;
          }};
}

TEST(ReckonedTable, NumbersAndLinesOfTheHashSet) {
  EXPECT_TRUE(rc::check("any table", [] {
    const auto slots = *rc::gen::inRange<uint64_t>(0, 5000);
    const float loadFactor = *rc::gen::element(-1.0F, 0.0F, 0.01F, 0.3F, 0.75F, 0.97F,
                                               std::nextafter(1.0F, 0.0F), 1.0F, std::nanf(""));
    const auto keys = *rc::gen::inRange<uint64_t>(0, 20000);
    const OwnSet real = makeSet(slots, loadFactor);
    const OwnSet reckoned = reckonedSet(slots, loadFactor);
    RC_ASSERT(reckoned->size == real->size);
    RC_ASSERT(reckoned->max == real->max);
    RC_ASSERT(reckoned->count == 0U);
    const std::string lines = messagesOf([&] {
      for (uint64_t n = 0; n < keys; ++n) {
        add_hashset(real.get(), entityOf(n * 0x9E3779B97F4A7C15U));
      }
    });
    RC_ASSERT(messagesOf([&] { growToHold(reckoned.get(), keys); }) == lines);
    RC_ASSERT(reckoned->count == real->count);
    RC_ASSERT(reckoned->size == real->size);
    RC_ASSERT(reckoned->max == real->max);
    RC_ASSERT(reckoned->load_factor == real->load_factor);
    RC_ASSERT(reckoned->e_size == real->e_size);
  }));
}

TEST(ReckonedTable, HugeOneTakesNoMemory) {
  failAllocationAfter(0);  // of all that a set of this size takes
  const OwnSet reckoned = reckonedSet(kMaxSlots - 1000, 0.75F);
  failNoAllocation();
  EXPECT_EQ(deniedBytes(), 0U);
  EXPECT_EQ(reckoned->size, numbersOfNew(kMaxSlots - 1000, 0.75F).size);
  EXPECT_EQ(reckoned->array, nullptr);
  EXPECT_EQ(reckoned->nul_flag, nullptr);
  EXPECT_EQ(reckoned->del_flag, nullptr);
}

TEST(ReckonedTable, NoMemoryForTheNumbers) {
  EXPECT_EXIT(
      {
        failNewAfter(0);
        newKmerHash(10, 0.75F);
      },
      ExitedWithCode(1), MatchesRegex(kInitMessage));
}

TEST(ReckonedTable, NewOneAboveTheLargestFails) {
  for (const uint64_t slots : {kMaxSlots, kMaxSlots + 1, uint64_t{1} << 60, UINT64_MAX}) {
    EXPECT_EXIT(newKmerHash(slots, 0.75F), ExitedWithCode(1), MatchesRegex(kInitMessage)) << slots;
  }
}

TEST(ReckonedTable, GrowthAboveTheLargestTellsTheLastSizeFirst) {
  EXPECT_EXIT(growToHold(newKmerHash(3, 5e-13F), 1), ExitedWithCode(1),
              MatchesRegex(std::string("old set->size: 3\n") + kEnlargeMessage));
  const std::string last = std::to_string(numbersOfNew(kMaxSlots - 1000, 0.75F).size);
  EXPECT_EXIT(growToHold(newKmerHash(kMaxSlots - 1000, 0.75F), kMaxSlots - 1), ExitedWithCode(1),
              MatchesRegex("old set->size: " + last + "\n" + kEnlargeMessage));
}

TEST(ReckonedTable, GrowthOnTheWayToTheEndIsWritten) {
  // the third key finds 1e12 slots at most, with room for two
  HashSet table = numbersOfNew(3, 2e-12F);
  ASSERT_TRUE(growNumbers(table, 1));
  const std::string first = std::to_string(table.size);
  ASSERT_TRUE(growNumbers(table, 2));
  const std::string second = std::to_string(table.size);
  EXPECT_EXIT(growToHold(newKmerHash(3, 2e-12F), 3), ExitedWithCode(1),
              MatchesRegex("old set->size: 3\nnew set->size: " + first +
                           "\nold set->size: " + first + "\nnew set->size: " + second +
                           "\nold set->size: " + second + "\n" + kEnlargeMessage));
}

TEST(ReckonedTable, IndexWithoutMemoryFailsAsAGrowthDoes) {
  EXPECT_EXIT(
      {
        HashSet* const set = newKmerHash(3, 0.75F);
        failNewAfter(0);
        FetchKmers1(set, nullptr, 0);
      },
      ExitedWithCode(1), MatchesRegex(kEnlargeMessage));
}

}  // namespace
}  // namespace velk::test
