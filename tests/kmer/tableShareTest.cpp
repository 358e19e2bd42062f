// Shares of a hash set, filled one after the other, against one set that takes every entity.
#include "kmer/tableShare.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstring>
#include <set>
#include <unordered_map>
#include <vector>

#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

// Whether two sets are the same to the byte.
bool areSame(const velk::HashSet& one, const velk::HashSet& other) {
  return one.size == other.size && one.count == other.count && one.max == other.max &&
         one.zeroSlot == other.zeroSlot && one.count_conflict == other.count_conflict &&
         std::memcmp(one.array, other.array, (one.size + 1) * sizeof(Entity)) == 0 &&
         std::memcmp(one.nul_flag, other.nul_flag, one.size / 8 + 1) == 0;
}

// Shares of all slots, with a limit at every multiple of 8 in `limits`.
std::vector<TableShare> sharesAt(const velk::HashSet& set, const std::set<uint64_t>& limits) {
  std::vector<TableShare> shares;
  uint64_t from = 0;
  for (const uint64_t limit : limits) {
    shares.emplace_back(set, from, limit);
    from = limit;
  }
  shares.emplace_back(set, from, set.size);
  return shares;
}

// The n-th entity of a run is that of the n-th key, at the n-th place.
std::vector<Entity> entitiesOf(const std::vector<uint64_t>& keys) {
  std::vector<Entity> entities;
  for (const uint64_t key : keys) {
    entities.push_back(entityOf(key, static_cast<unsigned>(entities.size())));
  }
  return entities;
}

void fill(TableShare& share, const std::vector<Entity>& entities) {
  std::unordered_map<uint64_t, Entity> added;
  for (const Entity& entity : entities) {
    const uint64_t slot = homeSlot(share.set(), entity.bitSeq);
    if (!share.takes(slot)) continue;
    const Entity* const known = share.add(entity, slot);
    const auto [first, isNew] = added.try_emplace(entity.bitSeq, entity);
    ASSERT_EQ(known == nullptr, isNew);
    first->second.unique = isNew ? 1 : 0;
    ASSERT_TRUE(isNew || sameEntity(*known, first->second));
  }
  share.noteFilled();
}

OwnSet filledAlone(uint64_t size, float loadFactor, const std::vector<Entity>& entities) {
  OwnSet set = makeSet(size, loadFactor);
  for (const Entity& entity : entities) add_hashset(set.get(), entity);
  return set;
}

// Keys of which one in ten or so comes again, as many as keep a set of `slots` slots from growing.
std::vector<uint64_t> keysFor(uint64_t slots, float loadFactor, uint64_t seed) {
  std::vector<uint64_t> keys;
  std::set<uint64_t> different;
  for (uint64_t state = seed; different.size() < mostEntities(slots, loadFactor);) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    const bool isAgain = !keys.empty() && state >> 60 == 0;
    keys.push_back(isAgain ? keys[(state >> 32) % keys.size()] : state >> 20 << 3);
    different.insert(keys.back());
  }
  return keys;
}

TEST(TableShare, SharesMakeTheSetThatOneThreadMakes) {
  int late = 0;
  int refused = 0;
  EXPECT_TRUE(rc::check("full tables, any limits", [&] {
    const float loadFactor = *rc::gen::element(0.3F, 0.7F, 0.9F, 0.98F);
    const OwnSet set = makeSet(*rc::gen::inRange<uint64_t>(20, 400), loadFactor);
    const auto entities =
        entitiesOf(keysFor(set->size, loadFactor, *rc::gen::inRange<uint64_t>(0, 1U << 30)));
    const OwnSet alone = filledAlone(set->size, loadFactor, entities);
    RC_ASSERT(alone->size == set->size);

    std::set<uint64_t> limits;
    for (const uint64_t byte : *rc::gen::container<std::set<uint64_t>>(
             *rc::gen::inRange<std::size_t>(0, 4), rc::gen::inRange<uint64_t>(1, set->size / 8))) {
      limits.insert(8 * byte);
    }
    auto shares = sharesAt(*set, limits);
    for (TableShare& share : shares) fill(share, entities);
    const bool hasLate = std::any_of(shares.begin(), shares.end(),
                                     [](const TableShare& share) { return !share.late().empty(); });
    if (joinShares(set.get(), shares)) {
      RC_ASSERT(areSame(*set, *alone));
      late += hasLate ? 1 : 0;
    } else {
      RC_ASSERT(hasLate);
      emptySlots(set.get());
      RC_ASSERT(areSame(*set, *makeSet(set->size, loadFactor)));
      ++refused;
    }
  }));
  // Both outcomes were among them; of 100 random cases some twenty are refused.
  EXPECT_GT(late, 0);
  EXPECT_GT(refused, 0);
}

// The keys, in order, whose home slot in the set is `slot`.
std::vector<uint64_t> keysAt(const velk::HashSet& set, uint64_t slot, std::size_t count) {
  std::vector<uint64_t> keys;
  for (uint64_t key = 0; keys.size() < count; ++key) {
    if (homeSlot(set, key) == slot) keys.push_back(key);
  }
  return keys;
}

// A set of 101 slots with a limit at 48: `keys` in their order, joined.
void expectSame(const std::vector<uint64_t>& keys) {
  const auto entities = entitiesOf(keys);
  const OwnSet set = makeSet(101, 0.75F);
  auto shares = sharesAt(*set, {48});
  for (TableShare& share : shares) fill(share, entities);
  ASSERT_TRUE(joinShares(set.get(), shares));
  EXPECT_TRUE(areSame(*set, *filledAlone(101, 0.75F, entities)));
}

TEST(TableShare, EntityPutOffComesBeforeThoseAddedLater) {
  const OwnSet set = makeSet(101, 0.75F);
  const auto before = keysAt(*set, 47, 3);
  const auto behind = keysAt(*set, 48, 2);
  expectSame({before[0], before[1], behind[0], behind[1]});
  expectSame({before[0], behind[0], before[1], behind[1]});
  expectSame({before[0], behind[0], behind[1], before[1]});
  expectSame({before[0], before[1], behind[0], before[2], before[1], before[2], behind[0]});
}

TEST(TableShare, EntitiesPutOffReachTheNextRunOfSlots) {
  const OwnSet set = makeSet(101, 0.75F);
  const auto before = keysAt(*set, 47, 3);
  const uint64_t first = keysAt(*set, 48, 1)[0];
  const uint64_t third = keysAt(*set, 50, 1)[0];
  expectSame({before[0], first, before[1], before[2], third});
  expectSame({before[0], third, first, before[1], before[2]});
}

TEST(TableShare, LastShareGoesOnAtTheBeginOfTheFirst) {
  const OwnSet set = makeSet(101, 0.75F);
  const auto last = keysAt(*set, 100, 3);
  const auto first = keysAt(*set, 0, 2);
  expectSame({last[0], first[0], last[1], first[1], last[2], last[1]});
}

// The key of no bits at place 0 is a slot of zeros when it is not unique any more.
TEST(TableShare, SlotOfZerosMovesOn) {
  const OwnSet set = makeSet(101, 0.75F);
  const uint64_t home = homeSlot(*set, 0);
  const uint64_t limit = home / 8 * 8;
  const auto before = keysAt(*set, limit - 1, 3);
  std::vector<uint64_t> keys{0, 0};
  for (uint64_t slot = limit; slot < home; ++slot) keys.push_back(keysAt(*set, slot, 1)[0]);
  keys.insert(keys.end(), before.begin(), before.end());
  const auto entities = entitiesOf(keys);
  auto shares = sharesAt(*set, {limit});
  for (TableShare& share : shares) fill(share, entities);
  ASSERT_TRUE(joinShares(set.get(), shares));
  EXPECT_TRUE(areSame(*set, *filledAlone(101, 0.75F, entities)));
  EXPECT_NE(set->zeroSlot, kNoSlot);
}

// Its bit stays set when bits before it in the same byte are noted anew.
TEST(TableShare, SlotOfZerosBehindTheChangeStaysFilled) {
  int sizes = 0;
  for (uint64_t size = 101; size < 400; size += 2) {
    if (!is_prime(size)) continue;
    const OwnSet set = makeSet(size, 0.75F);
    const uint64_t home = homeSlot(*set, 0);
    const uint64_t limit = home / 8 * 8;
    if (limit == 0 || home < limit + 3) continue;
    ++sizes;
    const auto before = keysAt(*set, limit - 1, 2);
    const auto entities = entitiesOf({0, 0, before[0], before[1]});
    auto shares = sharesAt(*set, {limit});
    for (TableShare& share : shares) fill(share, entities);
    ASSERT_TRUE(joinShares(set.get(), shares));
    EXPECT_TRUE(areSame(*set, *filledAlone(size, 0.75F, entities))) << size;
  }
  EXPECT_GT(sizes, 10);
}

}  // namespace
}  // namespace velk::test
