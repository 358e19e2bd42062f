#include "kmer/hashSet.h"

#include <cstdlib>
#include <string>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "kmer/tableSize.h"

namespace velk {
namespace {

// Puts a new entity into an empty slot.
void fillSlot(HashSet* set, uint64_t slot, const Entity& entity) {
  set->array[slot] = entity;
  set_entity_fill(set->nul_flag, slot);
  ++set->count;
}

// Adds an entity to a table that has just grown, counting the filled slots on its way.
void addAfterGrowth(HashSet* set, const Entity& entity) {
  uint64_t slot = homeSlot(*set, entity);
  while (!is_entity_null(set->nul_flag, slot)) {
    if (hash_equal(entity, set->array[slot])) {
      set->array[slot].unique = 0;
      return;
    }
    ++set->count_conflict;
    slot = nextSlot(*set, slot);
  }
  fillSlot(set, slot, entity);
}

}  // namespace

uint8_t* newBitmap(uint64_t size) {
  return static_cast<uint8_t*>(std::calloc(size / 8 + 1, 1));
}

HashSet* init_hashset(uint64_t init_size, float load_factor) {
  const AllocationSite site{__LINE__, "init_hashset", kUserError};
  const uint64_t size = slotsFor(init_size);
  if (size > kMaxSlots) outOfMemory(site);
  auto* set = allocateArray<HashSet>(1, site);
  set->e_size = sizeof(Entity);
  set->size = size;
  set->load_factor = clampedLoadFactor(load_factor);
  set->max = mostOfNew(size, set->load_factor);
  set->array = static_cast<Entity*>(std::malloc((size + 1) * sizeof(Entity)));
  set->nul_flag = newBitmap(size);
  set->del_flag = newBitmap(size);
  if (set->array == nullptr || set->nul_flag == nullptr || set->del_flag == nullptr) {
    outOfMemory(site);
  }
  set->array[size] = Entity{};
  return set;
}

uint64_t GetHashSet(const HashSet* set, const Entity& entity, int& flag) {
  flag = 0;
  uint64_t slot = homeSlot(*set, entity);
  while (!is_entity_null(set->nul_flag, slot)) {
    if (hash_equal(entity, set->array[slot])) {
      flag = 1;
      break;
    }
    slot = nextSlot(*set, slot);
  }
  return slot;
}

int add_hashset(HashSet* set, const Entity& entity) {
  int flag = 0;
  const uint64_t slot = GetHashSet(set, entity, flag);
  if (flag == 1) {
    set->array[slot].unique = 0;
  } else if (set->count + 1 <= set->max) {
    fillSlot(set, slot, entity);
  } else {
    say("old set->size: " + std::to_string(set->size) + "\n");
    enlarge_hashset(set, 1);
    say("new set->size: " + std::to_string(set->size) + "\n");
    addAfterGrowth(set, entity);
  }
  return 1;
}

uint64_t get_hashset(const HashSet* set, const Entity& entity) {
  int flag = 0;
  const uint64_t slot = GetHashSet(set, entity, flag);
  return flag == 1 && !is_entity_delete(set->del_flag, slot) ? slot : set->size;
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
