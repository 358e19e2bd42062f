#include "kmer/hashSet.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>

#include "driver/fatal.h"
#include "kmer/tableMemory.h"

namespace velk {
namespace {

constexpr float kSmallestLoadFactor = 0.25F;  // stands for 0 and below
constexpr float kLargestLoadFactor = 0.75F;   // stands for 1 and above, and for no number

// Adds an entity to a table that has just grown, counting the filled slots on its way.
uint64_t addAfterGrowth(HashSet* set, const Entity& entity) {
  uint64_t slot = homeSlot(*set, entity.bitSeq);
  while (!is_entity_null(set->nul_flag, slot)) {
    if (hash_equal(entity, set->array[slot])) {
      clearUnique(set, slot);
      return slot;
    }
    ++set->count_conflict;
    slot = nextSlot(slot, set->size);
  }
  putEntity(set, slot, entity);
  ++set->count;
  return set->size;
}

}  // namespace

HashSet* kmerHash = nullptr;

float clampedLoadFactor(float load_factor) {
  if (load_factor <= 0) return kSmallestLoadFactor;
  if (load_factor >= 1 || std::isnan(load_factor)) return kLargestLoadFactor;
  return load_factor;
}

uint64_t slotsFor(uint64_t init_size) {
  if (init_size > kMaxSlots) return kMaxSlots + 1;
  return std::min(init_size > 2 ? find_next_prime(init_size) : 3, kMaxSlots + 1);
}

uint64_t mostEntities(uint64_t size, float load_factor) {
  // A load factor just below 1 would round up to a table without an empty slot.
  return std::min(static_cast<uint64_t>(static_cast<float>(size) * load_factor), size - 1);
}

HashSet* init_hashset(uint64_t init_size, float load_factor) {
  const AllocationSite site{__LINE__, "init_hashset", kUserError};
  const uint64_t size = slotsFor(init_size);
  if (size > kMaxSlots) outOfMemory(site);
  auto* set = allocateArray<HashSet>(1, site);
  set->e_size = sizeof(Entity);
  set->size = size;
  set->load_factor = clampedLoadFactor(load_factor);
  set->max = mostEntities(size, set->load_factor);
  set->zeroSlot = kNoSlot;
  set->array = static_cast<Entity*>(std::calloc(set->size + 1, sizeof(Entity)));
  set->nul_flag = newBitmap(set->size);
  set->del_flag = newBitmap(set->size);
  if (set->array == nullptr || set->nul_flag == nullptr || set->del_flag == nullptr) {
    outOfMemory(site);
  }
  adviseHugePages(set->array, (set->size + 1) * sizeof(Entity));
  return set;
}

uint64_t GetHashSet(const HashSet* set, const Entity& entity, int& flag) {
  return probeFrom(*set, beginProbe(*set, entity.bitSeq), flag);
}

int add_hashset(HashSet* set, const Entity& entity) {
  const uint64_t before = addBegun(set, entity, beginProbe(*set, entity.bitSeq));
  if (before == set->size) {
    int flag = 0;
    set_entity_fill(set->nul_flag, GetHashSet(set, entity, flag));
  }
  return 1;
}

uint64_t addWithGrowth(HashSet* set, const Entity& entity) {
  std::cerr << "old set->size: " << set->size << "\n";
  noteFilled(set);
  enlarge_hashset(set, 1);
  std::cerr << "new set->size: " << set->size << "\n";
  return addAfterGrowth(set, entity);
}

uint64_t get_hashset(const HashSet* set, const Entity& entity) {
  int flag = 0;
  const uint64_t slot = GetHashSet(set, entity, flag);
  return flag == 1 && !is_entity_delete(set->del_flag, slot) ? slot : set->size;
}

void noteFilled(HashSet* set) {
  noteFilled(set, 0, set->size);
}

void noteFilled(HashSet* set, uint64_t from, uint64_t to) {
  uint64_t slot = from;
  while (slot < to) {
    uint8_t& flags = set->nul_flag[slot / 8];
    unsigned filled = 0;
    for (const uint64_t end = std::min(slot + 8, set->size); slot < end; ++slot) {
      filled |= unsigned{!isZero(set->array[slot])} * slotMask(slot);  // no branch to be guessed
    }
    flags = static_cast<uint8_t>(filled);
  }
  const bool hasZeroSlot = from <= set->zeroSlot && set->zeroSlot < slot;
  if (hasZeroSlot) set_entity_fill(set->nul_flag, set->zeroSlot);
}

bool exists_hashset(const HashSet* set, const Entity& entity) {
  return get_hashset(set, entity) != set->size;
}

bool delete_hashset(HashSet* set, const Entity& entity) {
  const uint64_t slot = get_hashset(set, entity);
  if (slot == set->size) return false;
  set_entity_delete(set->del_flag, slot);
  return true;
}

int free_hash(HashSet* set) {
  std::free(set->array);
  std::free(set->nul_flag);
  std::free(set->del_flag);
  delete[] set;
  return 1;
}

}  // namespace velk
