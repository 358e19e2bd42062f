// How a hash set that cannot be had ends the run.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>

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

// The slots and the two bitmaps are allocated one after the other.
constexpr int kAllocations = 3;

// Grows a set of `size` slots, denies it the memory, and says at the end how much it asked for.
void growDenied(uint64_t size, uint64_t more) {
  velk::HashSet set{};
  set.size = size;
  set.load_factor = 0.75F;
  std::atexit([] { std::cerr << deniedBytes() << "\n"; });
  failAllocationAfter(0);
  enlarge_hashset(&set, more);
}

// Generous, for a loaded machine: a search for a prime of 64 bits would take minutes.
constexpr std::chrono::seconds kAtOnce(20);

class HashSetMemory : public ::testing::Test {
 protected:
  ~HashSetMemory() override { EXPECT_LT(std::chrono::steady_clock::now() - start_, kAtOnce); }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

TEST_F(HashSetMemory, NewTableThatMemoryCannotHold) {
  for (int n = 0; n < kAllocations; ++n) {
    EXPECT_EXIT(
        {
          failAllocationAfter(n);
          init_hashset(10, 0.75F);
        },
        ExitedWithCode(1), MatchesRegex(kInitMessage))
        << n;
  }
}

TEST_F(HashSetMemory, GrownTableThatMemoryCannotHold) {
  for (int n = 0; n < kAllocations; ++n) {
    EXPECT_EXIT(
        {
          velk::HashSet* const set = init_hashset(10, 0.75F);
          failAllocationAfter(n);
          enlarge_hashset(set, 1);
        },
        ExitedWithCode(1), MatchesRegex(kEnlargeMessage))
        << n;
  }
}

TEST_F(HashSetMemory, InsertionThatGrowsTellsTheOldSizeFirst) {
  const OwnSet set = makeSet(3, 0.75F);
  add(set, entityOf(1));
  add(set, entityOf(2));
  EXPECT_EXIT(
      {
        failAllocationAfter(0);
        add_hashset(set.get(), entityOf(3));
      },
      ExitedWithCode(1), MatchesRegex(std::string("old set->size: 3\n") + kEnlargeMessage));
}

TEST_F(HashSetMemory, LargeTablesGrowByAFixedNumberOfSlots) {
  const std::string message = kEnlargeMessage;
  // below 2^30 - 1 slots to the next prime behind the double, from there on behind 2^30 - 1 more;
  // slots asked for: 2000000011, 3073741841 and, in two steps, 4147483679, and the sentinel
  EXPECT_EXIT(growDenied(1000000000, 1), ExitedWithCode(1),
              MatchesRegex(message + "32000000192\n"));
  EXPECT_EXIT(growDenied(2000000000, 1), ExitedWithCode(1),
              MatchesRegex(message + "49179869472\n"));
  EXPECT_EXIT(growDenied(2000000000, 3000000000), ExitedWithCode(1),
              MatchesRegex(message + "66359738880\n"));
}

TEST_F(HashSetMemory, NewTableAboveTheLargestFailsAtOnce) {
  EXPECT_EQ(kMaxSlots, uint64_t{1} << 40);
  // the last ones would overflow the count of bytes and of slots
  for (const uint64_t size :
       {kMaxSlots + 1, uint64_t{1} << 60, (uint64_t{1} << 63) + 2, UINT64_MAX - 1, UINT64_MAX}) {
    EXPECT_EXIT(init_hashset(size, 0.75F), ExitedWithCode(1), MatchesRegex(kInitMessage)) << size;
  }
}

TEST_F(HashSetMemory, GrowthAboveTheLargestTableFailsAtOnce) {
  for (const uint64_t more : {kMaxSlots, uint64_t{1} << 60, UINT64_MAX - 1}) {
    EXPECT_EXIT(enlarge_hashset(init_hashset(3, 0.75F), more), ExitedWithCode(1),
                MatchesRegex(kEnlargeMessage))
        << more;
  }
}

TEST_F(HashSetMemory, TinyLoadFactorFailsAtTheFirstInsertion) {
  const std::string message = std::string("old set->size: 3\n") + kEnlargeMessage;
  for (const float factor : {5e-13F, 1e-20F, 1e-38F, 1e-45F}) {
    EXPECT_EXIT(add_hashset(init_hashset(3, factor), entityOf(1)), ExitedWithCode(1),
                MatchesRegex(message))
        << factor;
  }
}

}  // namespace
}  // namespace velk::test
