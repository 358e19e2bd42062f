// The table of k-mers with letters that are no bases, against a map.
#include "kmer/oddKmers.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <utility>

namespace velk::test {
namespace {

TEST(OddKmers, FirstPositionAndWhetherThereAreMore) {
  std::mt19937_64 random(6);
  for (const uint64_t keys : {1UL, 2UL, 10UL, 300UL, 5000UL}) {
    OddKmers odd;
    std::map<uint64_t, std::pair<uint64_t, bool>> expected;  // position, is repeated
    for (uint64_t position = 0; position < 2 * keys; ++position) {
      const uint64_t key = random() % keys * 0x123456789ABCDEFU;
      odd.add(key, position);
      const auto [entry, isNew] = expected.try_emplace(key, position, false);
      if (!isNew) entry->second.second = true;
    }
    odd.settle();
    EXPECT_FALSE(odd.isEmpty());
    EXPECT_EQ(odd.size(), expected.size());
    for (const auto& [key, known] : expected) {
      const OddKmers::Entry* const entry = odd.find(key);
      ASSERT_NE(entry, nullptr);
      EXPECT_EQ(entry->key, key);
      EXPECT_EQ(entry->position(), known.first);
      EXPECT_EQ(entry->isRepeated(), known.second);
    }
    for (int n = 0; n < 1000; ++n) {
      const uint64_t key = random();
      EXPECT_EQ(odd.find(key) != nullptr, expected.contains(key));
    }
    uint64_t filled = 0;
    for (const OddKmers::Entry& slot : odd.slots()) filled += slot.place != 0 ? 1 : 0;
    EXPECT_EQ(filled, expected.size());
    EXPECT_EQ(odd.bytes(), odd.slots().size() * sizeof(OddKmers::Entry));
  }
}

TEST(OddKmers, NoneAtAll) {
  OddKmers odd;
  odd.settle();
  EXPECT_TRUE(odd.isEmpty());
  EXPECT_EQ(odd.size(), 0U);
  EXPECT_EQ(odd.bytes(), 0U);
  EXPECT_EQ(odd.find(0), nullptr);
  EXPECT_EQ(odd.find(~uint64_t{0}), nullptr);
}

TEST(OddKmers, EntryKeepsALargePosition) {
  constexpr uint64_t kFar = (uint64_t{1} << 40) + 12345;
  OddKmers odd;
  odd.add(0, kFar);
  odd.add(~uint64_t{0}, kFar + 1);
  odd.settle();
  EXPECT_EQ(odd.find(0)->position(), kFar);
  EXPECT_EQ(odd.find(~uint64_t{0})->position(), kFar + 1);
  odd.slots()[0].setRepeated();
  for (const uint64_t key : {uint64_t{0}, ~uint64_t{0}}) {
    EXPECT_EQ(odd.find(key)->isRepeated(), odd.find(key) == &odd.slots()[0]);
  }
}

TEST(OddKmers, TakesFewerBytesThanSlotsOfTheTable) {
  std::mt19937_64 random(7);
  OddKmers odd;
  constexpr uint64_t kKeys = 100000;
  for (uint64_t position = 0; position < kKeys; ++position) odd.add(random(), position);
  odd.settle();
  EXPECT_LE(odd.bytes(), kKeys * sizeof(OddKmers::Entry) * 4 / 3);
}

}  // namespace
}  // namespace velk::test
