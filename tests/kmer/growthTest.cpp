// The growth of the hash set.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <unordered_map>
#include <vector>

#include "kmer/hashSet.h"
#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

TEST(HashSet, InsertionAboveMaxGrowsFirstAndSaysSo) {
  const OwnSet set = makeSet(3, 0.75F);
  EXPECT_EQ(add(set, entityOf(10, 1)), "");
  EXPECT_EQ(add(set, entityOf(11, 2)), "");
  EXPECT_EQ(set->size, 3U);
  EXPECT_EQ(add(set, entityOf(12, 3)), "old set->size: 3\nnew set->size: 7\n");
  EXPECT_EQ(set->size, 7U);
  EXPECT_EQ(set->max, 5U);
  EXPECT_EQ(set->count, 3U);
  EXPECT_TRUE(sameEntity(find(set, 10), entityOf(10, 1)));
  EXPECT_TRUE(sameEntity(find(set, 11), entityOf(11, 2)));
  EXPECT_TRUE(sameEntity(find(set, 12), entityOf(12, 3)));
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, SizesDoubleToTheNextPrime) {
  const OwnSet set = makeSet(3, 0.75F);
  std::string messages;
  for (uint64_t key = 0; key < 2000; ++key) messages += add(set, entityOf(key));
  EXPECT_EQ(messages,
            "old set->size: 3\nnew set->size: 7\nold set->size: 7\nnew set->size: 15\n"
            "old set->size: 15\nnew set->size: 31\nold set->size: 31\nnew set->size: 67\n"
            "old set->size: 67\nnew set->size: 137\nold set->size: 137\nnew set->size: 277\n"
            "old set->size: 277\nnew set->size: 557\nold set->size: 557\nnew set->size: 1117\n"
            "old set->size: 1117\nnew set->size: 2237\nold set->size: 2237\nnew set->size: 4481\n");
  EXPECT_EQ(set->count, 2000U);
}

TEST(HashSet, DefaultTableGrowsToTwiceItsSize) {
  const OwnSet set = makeSet(1048576, 0.75F);
  enlarge_hashset(set.get(), 1);
  EXPECT_EQ(set->size, find_next_prime(2097166));
  EXPECT_EQ(set->size, 2097169U);
  EXPECT_EQ(set->max, 1572877U);  // 1572876.75
}

TEST(HashSet, GrowthRoundsMaxToNearest) {
  const OwnSet set = makeSet(13, 0.75F);
  EXPECT_EQ(set->max, 9U);  // 9.75
  enlarge_hashset(set.get(), 1);
  EXPECT_EQ(set->size, 29U);
  EXPECT_EQ(set->max, 22U);  // 21.75
  enlarge_hashset(set.get(), 1);
  EXPECT_EQ(set->size, 59U);
  EXPECT_EQ(set->max, 44U);  // 44.25
}

TEST(HashSet, HalfIsAddedInDoublePrecision) {
  const OwnSet set = makeSet(5600027, 0.75F);
  EXPECT_EQ(set->size, 5600027U);
  enlarge_hashset(set.get(), 1);
  EXPECT_EQ(set->size, 11200087U);
  EXPECT_EQ(set->max, 8400065U);  // adding to 8400065 in single precision would give 8400066
}

TEST(HashSet, GrowthGoesOnUntilAllFit) {
  const OwnSet set = makeSet(3, 0.75F);
  add(set, entityOf(1));
  enlarge_hashset(set.get(), 10);
  EXPECT_EQ(set->size, 15U);  // 11 of 7 would be too many, 11 of 15 are below 11.25
  enlarge_hashset(set.get(), 100);
  EXPECT_EQ(set->size, 137U);
  EXPECT_EQ(set->count, 1U);
  EXPECT_TRUE(sameEntity(find(set, 1), entityOf(1)));
}

TEST(HashSet, SmallLoadFactorGrowsFarAtOnce) {
  const OwnSet set = makeSet(3, 0.01F);
  EXPECT_EQ(set->max, 0U);
  EXPECT_EQ(add(set, entityOf(1)), "old set->size: 3\nnew set->size: 137\n");
  EXPECT_EQ(set->max, 1U);
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, GrowthKeepsAnEmptySlotWhateverTheLoadFactor) {
  const OwnSet set = makeSet(3, std::nextafter(1.0F, 0.0F));
  for (uint64_t key = 0; key < 6; ++key) add(set, entityOf(key));
  EXPECT_EQ(set->size, 7U);
  EXPECT_EQ(set->max, 6U);
  EXPECT_EQ(set->count, 6U);
  for (uint64_t key = 100; key < 120; ++key) {
    EXPECT_EQ(get_hashset(set.get(), entityOf(key)), 7U);  // and the search ends
  }
  EXPECT_EQ(add(set, entityOf(6)), "old set->size: 7\nnew set->size: 15\n");
}

TEST(HashSet, ConflictsAreCountedOnlyRightAfterGrowth) {
  // four keys with the home slot 0 in a table of 7 slots
  const OwnSet set = makeSet(3, 0.75F);
  add(set, entityOf(0));
  add(set, entityOf(6));
  EXPECT_EQ(set->count_conflict, 0U);
  add(set, entityOf(12));
  EXPECT_EQ(set->size, 7U);
  EXPECT_EQ(set->count_conflict, 2U);
  add(set, entityOf(13));
  EXPECT_EQ(set->count_conflict, 2U);
  EXPECT_EQ(set->nul_flag[0], 0b11110000U);
}

TEST(HashSet, DisplacedEntitiesAreMovedNext) {
  // slots worked out apart from this program; moving the entities slot by slot into a second table
  // would put keys 1 and 2 the other way round
  const OwnSet set = makeSet(7, 0.75F);
  for (const uint64_t key : {1U, 2U, 8U, 10U, 16U}) {
    add(set, entityOf(key, static_cast<unsigned>(key)));
  }
  const std::vector<uint64_t> before{10, 2, 16, 1, 8};
  for (uint64_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(get_hashset(set.get(), entityOf(before[i])), i + 2) << before[i];
  }
  enlarge_hashset(set.get(), 1);
  EXPECT_EQ(set->size, 15U);
  EXPECT_EQ(set->count, 5U);
  const std::vector<uint64_t> after{10, 8, 16, 1, 2};
  for (uint64_t i = 0; i < after.size(); ++i) {
    EXPECT_EQ(get_hashset(set.get(), entityOf(after[i])), i + 4) << after[i];
    EXPECT_TRUE(sameEntity(set->array[i + 4], entityOf(after[i], static_cast<unsigned>(after[i]))));
  }
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, RepeatedKeysStayRepeatedThroughGrowth) {
  const OwnSet set = makeSet(3, 0.75F);
  for (int i = 0; i < 2; ++i) add(set, entityOf(1));
  for (uint64_t key = 2; key < 100; ++key) add(set, entityOf(key));
  EXPECT_EQ(find(set, 1).unique, 0U);
  EXPECT_EQ(find(set, 2).unique, 1U);
}

TEST(HashSet, EntityOfZeroBitsIsFoundUntilItIsDeleted) {
  // keys 0 and 6 have the home slot 0 in a table of 7 slots
  const OwnSet set = makeSet(7, 0.75F);
  for (int i = 0; i < 2; ++i) add(set, entityOf(0, 0));
  add(set, entityOf(6, 1));
  EXPECT_TRUE(sameEntity(set->array[0], Entity{}));
  EXPECT_EQ(get_hashset(set.get(), entityOf(0)), 0U);
  EXPECT_EQ(get_hashset(set.get(), entityOf(6)), 1U);
  EXPECT_EQ(brokenInvariant(*set), "");

  enlarge_hashset(set.get(), 1);
  EXPECT_TRUE(exists_hashset(set.get(), entityOf(0)));
  EXPECT_TRUE(sameEntity(find(set, 6), entityOf(6, 1)));
  EXPECT_EQ(brokenInvariant(*set), "");

  delete_hashset(set.get(), entityOf(0));
  enlarge_hashset(set.get(), 1);
  EXPECT_FALSE(exists_hashset(set.get(), entityOf(0)));
  int flag = 1;
  GetHashSet(set.get(), entityOf(0), flag);
  EXPECT_EQ(flag, 0);
}

TEST(HashSet, DeletedEntitiesAreLeftBehindByGrowth) {
  // many sets, as a deleted entity may or may not lie on the way of its key in the grown table
  for (uint64_t first = 0; first < 500; first += 5) {
    const OwnSet set = makeSet(7, 0.75F);
    for (uint64_t key = first; key < first + 5; ++key) add(set, entityOf(key));
    delete_hashset(set.get(), entityOf(first));
    enlarge_hashset(set.get(), 1);
    EXPECT_EQ(set->count, 5U);  // not changed by growth
    EXPECT_EQ(get_hashset(set.get(), entityOf(first)), set->size) << first;
    int flag = 1;
    GetHashSet(set.get(), entityOf(first), flag);
    EXPECT_EQ(flag, 0) << first;
    for (uint64_t key = first + 1; key < first + 5; ++key) {
      EXPECT_TRUE(exists_hashset(set.get(), entityOf(key))) << key;
    }
    EXPECT_EQ(set->del_flag[0], 0U);
    EXPECT_EQ(set->del_flag[1], 0U);
  }
}

// The hash set against the standard map, on random insertions into tables of random sizes.

struct Added {
  Entity first;
  unsigned times;
};

using AddedKeys = std::unordered_map<uint64_t, Added>;

float anyLoadFactor() {
  return *rc::gen::elementOf(std::vector<float>{-1.0F, 0.0F, 0.05F, 0.25F, 0.5F, 0.75F, 0.9F,
                                                std::nextafter(1.0F, 0.0F), 1.0F, std::nanf("")});
}

// Keys that repeat, keys that share their low or high bits, and keys of all 64 bits.
rc::Gen<uint64_t> anyKey() {
  return rc::gen::oneOf(
      rc::gen::inRange<uint64_t>(0, 60),
      rc::gen::map(rc::gen::inRange<uint64_t>(0, 200), [](uint64_t key) { return key << 40; }),
      rc::gen::map(rc::gen::inRange<uint64_t>(0, 200), [](uint64_t key) { return ~(key << 20); }),
      rc::gen::arbitrary<uint64_t>());
}

// Whether the set finds what the map holds: first places, and who was added once only.
void requireSame(const OwnSet& set, const AddedKeys& model) {
  RC_ASSERT(set->count == model.size());
  for (const auto& [key, added] : model) {
    Entity expected = added.first;
    expected.unique = added.times == 1 ? 1 : 0;
    const uint64_t slot = get_hashset(set.get(), entityOf(key));
    RC_ASSERT(slot < set->size);
    RC_ASSERT(sameEntity(set->array[slot], expected));
  }
}

TEST(HashSet, AgreesWithTheStandardMap) {
  EXPECT_TRUE(rc::check("insertions with growth", [] {
    const OwnSet set = makeSet(*rc::gen::inRange<uint64_t>(0, 40), anyLoadFactor());
    RC_ASSERT(brokenInvariant(*set) == "");
    const uint64_t sizeAtFirst = set->size;
    AddedKeys model;
    const auto keys = *rc::gen::container<std::vector<uint64_t>>(
        *rc::gen::inRange<std::size_t>(0, 600), anyKey());
    unsigned place = 0;
    for (const uint64_t key : keys) {
      const uint64_t oldSize = set->size;
      const bool mustGrow = !model.contains(key) && set->count + 1 > set->max;
      const Entity entity = entityOf(key, place++);
      const std::string messages = add(set, entity);
      ++model.try_emplace(key, Added{entity, 0}).first->second.times;
      RC_ASSERT((set->size != oldSize) == mustGrow);
      RC_ASSERT(messages.empty() != mustGrow);
      RC_ASSERT(brokenInvariant(*set) == "");
    }
    requireSame(set, model);
    if (set->size == sizeAtFirst) RC_ASSERT(set->count_conflict == 0U);
    for (const uint64_t key : *rc::gen::container<std::vector<uint64_t>>(20, anyKey())) {
      if (!model.contains(key)) RC_ASSERT(get_hashset(set.get(), entityOf(key)) == set->size);
    }
  }));
}

TEST(HashSet, GrowthByAnyNumberKeepsAll) {
  EXPECT_TRUE(rc::check("growth on its own", [] {
    const OwnSet set = makeSet(*rc::gen::inRange<uint64_t>(0, 200), anyLoadFactor());
    AddedKeys model;
    const auto keys = *rc::gen::unique<std::vector<uint64_t>>(anyKey());
    for (const uint64_t key : keys) {
      add(set, entityOf(key));
      model.try_emplace(key, Added{entityOf(key), 1});
    }
    const auto more = *rc::gen::inRange<uint64_t>(0, 1000);
    uint64_t expectedSize = set->size;
    do {
      expectedSize = find_next_prime(2 * expectedSize);
    } while (static_cast<float>(set->count + more) >
             static_cast<float>(expectedSize) * set->load_factor);
    enlarge_hashset(set.get(), more);
    RC_ASSERT(set->size == expectedSize);
    RC_ASSERT(brokenInvariant(*set) == "");
    requireSame(set, model);
  }));
}

}  // namespace

}  // namespace velk::test
