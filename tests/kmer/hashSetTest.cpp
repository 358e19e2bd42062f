// Creation, insertion, look-up and the bitmaps of the k-mer hash set.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>

#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

// Keys by their home slot in a table of 7 slots, worked out apart from this program.
constexpr uint64_t kHome6Of7 = 3;
constexpr uint64_t kAlsoHome6Of7 = 8;
constexpr uint64_t kHome0Of7 = 0;
constexpr uint64_t kAlsoHome0Of7 = 6;

TEST(HashSet, HashOfKey) {
  EXPECT_EQ(hash_code(entityOf(0)), 0x6a396cd39c352659U);
  EXPECT_EQ(hash_code(entityOf(1)), 0x20353c45b09bc659U);
  EXPECT_EQ(hash_code(entityOf(4)), 0x541b0b98abb790f0U);
  EXPECT_EQ(hash_code(entityOf(27)), 0x445fbcad703a801bU);
  EXPECT_EQ(hash_code(entityOf(255)), 0x492e3e4f0498a06aU);
  EXPECT_EQ(hash_code(entityOf(0x0123456789abcdef)), 0x241dddfb5be890c4U);
  EXPECT_EQ(hash_code(entityOf(0x3fffffffffffffff)), 0x1bac616209e41a80U);
  EXPECT_EQ(hash_code(entityOf(0x8000000000000000)), 0x399bbf69d714812cU);
  EXPECT_EQ(hash_code(entityOf(0xffffffffffffffff)), 0x9d7b7a2832582c16U);
}

TEST(HashSet, HashAndEqualityReadTheKeyOnly) {
  EXPECT_EQ(hash_code(entityOf(27, 5)), hash_code(entityOf(27, 9)));
  EXPECT_TRUE(hash_equal(entityOf(27, 5), entityOf(27, 9)));
  EXPECT_FALSE(hash_equal(entityOf(27, 5), entityOf(28, 5)));
}

TEST(HashSet, EntityIsTwoWordsOfBitFields) {
  Entity entity{};
  entity.bitSeq = 0x0123456789abcdef;
  entity.scaffoldNum = 0x81234U;
  entity.contigNum = 0x41235U;
  entity.startPos = 0x812346U;
  entity.unique = 1;
  uint64_t words[2];
  static_assert(sizeof(words) == sizeof(entity));
  std::memcpy(words, &entity, sizeof(words));
  EXPECT_EQ(words[0], 0x0123456789abcdefU);
  EXPECT_EQ(words[1], uint64_t{0x81234} | uint64_t{0x41235} << 20 | uint64_t{0x812346} << 39 |
                          uint64_t{1} << 63);
}

TEST(HashSet, NewSetIsEmpty) {
  const OwnSet set = makeSet(20, 0.5F);
  EXPECT_EQ(set->e_size, 16U);
  EXPECT_EQ(set->size, 23U);
  EXPECT_EQ(set->max, 11U);
  EXPECT_EQ(set->count, 0U);
  EXPECT_EQ(set->count_conflict, 0U);
  EXPECT_EQ(set->iter_ptr, 0U);
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, DefaultsGiveTheDefaultTable) {
  const OwnSet set = makeSet(1048576, 0.75F);
  EXPECT_EQ(set->size, 1048583U);
  EXPECT_EQ(set->max, 786437U);
}

TEST(HashSet, SmallestTableHasThreeSlots) {
  for (const uint64_t initSize : {0U, 1U, 2U, 3U}) {
    const OwnSet set = makeSet(initSize, 0.75F);
    EXPECT_EQ(set->size, 3U) << initSize;
    EXPECT_EQ(set->max, 2U) << initSize;
  }
}

TEST(HashSet, LoadFactorIsClamped) {
  const OwnSet none = makeSet(10, 0);
  EXPECT_EQ(none->size, 11U);
  EXPECT_EQ(none->load_factor, 0.25F);
  EXPECT_EQ(none->max, 2U);
  const OwnSet much = makeSet(8, 1.5F);
  EXPECT_EQ(much->size, 9U);
  EXPECT_EQ(much->load_factor, 0.75F);
  EXPECT_EQ(much->max, 6U);

  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const float factor : {-0.0F, -0.5F, -kInfinity}) {
    EXPECT_EQ(makeSet(8, factor)->load_factor, 0.25F) << factor;
  }
  for (const float factor : {1.0F, kInfinity, std::nanf("")}) {
    EXPECT_EQ(makeSet(8, factor)->load_factor, 0.75F) << factor;
  }
  for (const float factor : {0.001F, 0.1F, 0.9F, std::nextafter(1.0F, 0.0F)}) {
    EXPECT_EQ(makeSet(8, factor)->load_factor, factor);
  }
}

TEST(HashSet, NewMaxIsCutOff) {
  EXPECT_EQ(makeSet(29, 0.75F)->max, 21U);  // 21.75
  EXPECT_EQ(makeSet(5, 0.99F)->max, 4U);    // 4.95
}

TEST(HashSet, NewSetKeepsAnEmptySlotWhateverTheLoadFactor) {
  const float almostOne = std::nextafter(1.0F, 0.0F);
  for (const uint64_t initSize : {3U, 7U, 1000U, 1048576U}) {
    const OwnSet set = makeSet(initSize, almostOne);
    EXPECT_EQ(set->max, set->size - 1) << initSize;
  }
}

TEST(HashSet, EmptySetFindsNothing) {
  const OwnSet set = makeSet(10, 0.75F);
  for (uint64_t key = 0; key < 50; ++key) EXPECT_EQ(get_hashset(set.get(), entityOf(key)), 11U);
  EXPECT_TRUE(sameEntity(find(set, 0), Entity{}));
}

TEST(HashSet, AddedEntityIsFoundWhole) {
  const OwnSet set = makeSet(10, 0.75F);
  EXPECT_EQ(add_hashset(set.get(), entityOf(27, 5)), 1);
  EXPECT_EQ(set->count, 1U);
  EXPECT_TRUE(sameEntity(find(set, 27), entityOf(27, 5)));
  EXPECT_EQ(get_hashset(set.get(), entityOf(28)), set->size);
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, CallersUniqueBitIsKept) {
  const OwnSet set = makeSet(10, 0.75F);
  Entity entity = entityOf(27, 5);
  entity.unique = 0;
  add(set, entity);
  EXPECT_EQ(find(set, 27).unique, 0U);
}

TEST(HashSet, RepeatedKeyKeepsItsFirstPlaceAndIsNoLongerUnique) {
  const OwnSet set = makeSet(10, 0.75F);
  Entity expected = entityOf(27, 5);
  add(set, expected);
  expected.unique = 0;
  for (const unsigned place : {6U, 7U}) {
    EXPECT_EQ(add_hashset(set.get(), entityOf(27, place)), 1);
    EXPECT_EQ(set->count, 1U);
    EXPECT_TRUE(sameEntity(find(set, 27), expected));
  }
  EXPECT_EQ(brokenInvariant(*set), "");
}

TEST(HashSet, RepeatedKeyDoesNotGrowAFullTable) {
  const OwnSet set = makeSet(3, 0.75F);
  add(set, entityOf(1));
  add(set, entityOf(2));
  EXPECT_EQ(add(set, entityOf(2)), "");
  EXPECT_EQ(set->size, 3U);
}

TEST(HashSet, ProbingWrapsFromTheLastSlotToTheFirst) {
  const OwnSet set = makeSet(7, 0.75F);
  add(set, entityOf(kHome6Of7));
  add(set, entityOf(kAlsoHome6Of7));
  add(set, entityOf(kHome0Of7));
  EXPECT_EQ(get_hashset(set.get(), entityOf(kHome6Of7)), 6U);
  EXPECT_EQ(get_hashset(set.get(), entityOf(kAlsoHome6Of7)), 0U);
  EXPECT_EQ(get_hashset(set.get(), entityOf(kHome0Of7)), 1U);
  EXPECT_EQ(set->nul_flag[0], 0b11000010U);
  EXPECT_EQ(set->count_conflict, 0U);  // only insertions right after a growth count
}

TEST(HashSet, ProbeTellsTheSlotOfTheKeyOrTheFirstEmptyOne) {
  const OwnSet set = makeSet(7, 0.75F);
  int flag = -1;
  EXPECT_EQ(GetHashSet(set.get(), entityOf(kHome6Of7), flag), 6U);
  EXPECT_EQ(flag, 0);
  add(set, entityOf(kHome6Of7));
  EXPECT_EQ(GetHashSet(set.get(), entityOf(kHome6Of7), flag), 6U);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(GetHashSet(set.get(), entityOf(kAlsoHome6Of7), flag), 0U);
  EXPECT_EQ(flag, 0);
}

TEST(HashSet, DeletedEntityIsMissingButItsSlotStaysTaken) {
  const OwnSet set = makeSet(7, 0.75F);
  add(set, entityOf(kHome0Of7));
  add(set, entityOf(kAlsoHome0Of7));
  EXPECT_TRUE(exists_hashset(set.get(), entityOf(kHome0Of7)));
  EXPECT_TRUE(delete_hashset(set.get(), entityOf(kHome0Of7)));

  EXPECT_EQ(set->del_flag[0], 0b10000000U);
  EXPECT_FALSE(exists_hashset(set.get(), entityOf(kHome0Of7)));
  EXPECT_EQ(get_hashset(set.get(), entityOf(kHome0Of7)), 7U);
  EXPECT_EQ(get_hashset(set.get(), entityOf(kAlsoHome0Of7)), 1U);  // found past the deleted one
  EXPECT_FALSE(delete_hashset(set.get(), entityOf(kHome0Of7)));
  EXPECT_FALSE(delete_hashset(set.get(), entityOf(kHome6Of7)));
  EXPECT_EQ(set->count, 2U);

  int flag = 0;
  EXPECT_EQ(GetHashSet(set.get(), entityOf(kHome0Of7), flag), 0U);
  EXPECT_EQ(flag, 1);
  EXPECT_EQ(add_hashset(set.get(), entityOf(kHome0Of7)), 1);  // still counts as there
  EXPECT_EQ(set->count, 2U);
  EXPECT_EQ(get_hashset(set.get(), entityOf(kHome0Of7)), 7U);
}

TEST(HashSet, FirstSlotOfAByteIsItsHighestBit) {
  uint8_t bitmap[3] = {0, 0, 0};
  for (uint64_t slot = 0; slot < 24; ++slot) {
    EXPECT_TRUE(is_entity_null(bitmap, slot));
    set_entity_fill(bitmap, slot);
    EXPECT_FALSE(is_entity_null(bitmap, slot));
    EXPECT_EQ(bitmap[slot / 8], 256 - (128 >> slot % 8));
  }
  uint8_t deleted[2] = {0, 0};
  EXPECT_FALSE(is_entity_delete(deleted, 9));
  set_entity_delete(deleted, 9);
  EXPECT_TRUE(is_entity_delete(deleted, 9));
  EXPECT_FALSE(is_entity_delete(deleted, 8));
  EXPECT_EQ(deleted[0], 0U);
  EXPECT_EQ(deleted[1], 0b01000000U);
}

TEST(HashSet, FreeingReturnsOne) {
  EXPECT_EQ(free_hash(init_hashset(10, 0.75F)), 1);
}

}  // namespace
}  // namespace velk::test
