// The hash set against the standard map, on random insertions into tables of random sizes.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <cmath>
#include <unordered_map>
#include <vector>

#include "kmer/hashSet.h"
#include "tests/kmer/hashSetFixture.h"

namespace velk::test {
namespace {

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
