#include "tests/kmer/hashSetFixture.h"

#include <cstring>
#include <iostream>
#include <sstream>

#include "kmer/hashSet.h"

namespace velk::test {

OwnSet makeSet(uint64_t initSize, float loadFactor) {
  return {init_hashset(initSize, loadFactor), free_hash};
}

Entity entityOf(uint64_t key, unsigned place) {
  Entity entity{};
  entity.bitSeq = key;
  entity.scaffoldNum = place & 0xFFFFFU;
  entity.contigNum = (place * 3) & 0x7FFFFU;
  entity.startPos = (place * 7) & 0xFFFFFFU;
  entity.unique = 1;
  return entity;
}

bool sameEntity(const Entity& one, const Entity& other) {
  return std::memcmp(&one, &other, sizeof(Entity)) == 0;
}

std::string messagesOf(const std::function<void()>& action) {
  std::ostringstream messages;
  std::streambuf* const before = std::cerr.rdbuf(messages.rdbuf());
  action();
  std::cerr.rdbuf(before);
  return messages.str();
}

std::string add(const OwnSet& set, const Entity& entity) {
  return messagesOf([&] { add_hashset(set.get(), entity); });
}

const Entity& find(const OwnSet& set, uint64_t key) {
  return set->array[get_hashset(set.get(), entityOf(key))];
}

std::string brokenInvariant(const velk::HashSet& set) {
  if (set.e_size != 16) return "size of an entity";
  if (set.iter_ptr != 0) return "cursor";
  if (!is_prime(set.size) || set.size % 2 == 0) return "number of slots";
  if (set.count > set.max || set.max >= set.size) return "count <= max < size";
  if (!sameEntity(set.array[set.size], Entity{})) return "zero sentinel";
  uint64_t filled = 0;
  for (uint64_t slot = 0; slot < set.size; ++slot) {
    if (((set.nul_flag[slot / 8] >> (7 - slot % 8)) & 1) != 0) ++filled;
    if (((set.del_flag[slot / 8] >> (7 - slot % 8)) & 1) != 0) return "nothing deleted";
  }
  if (filled != set.count) return "one filled slot for each entity";
  return "";
}

}  // namespace velk::test
