#include "kmer/hashSet.h"

#include <cstdlib>
#include <string>
#include <utility>

#include "driver/fatal.h"
#include "driver/listener.h"

namespace velk {
namespace {

// A bitmap of `size` clear bits, to be released with free(); null without memory.
uint8_t* newBitmap(uint64_t size) {
  return static_cast<uint8_t*>(std::calloc(size / 8 + 1, 1));
}

// Puts a new entity into an empty slot.
void fillSlot(HashSet* set, uint64_t slot, const Entity& entity) {
  set->array[slot] = entity;
  set_entity_fill(set->nul_flag, slot);
  ++set->count;
}

// The first empty slot on the probe sequence of the key. passed (inout): counts the filled ones.
uint64_t emptySlotFor(const HashSet& set, const Entity& entity, uint64_t& passed) {
  uint64_t slot = homeSlot(set, entity);
  for (; !is_entity_null(set.nul_flag, slot); slot = nextSlot(set, slot)) ++passed;
  return slot;
}

// Moves the entities of the first `oldSize` slots to their slots in the table of the new size.
// `oldFilled` and `moved` are the old bitmaps; a slot is marked in `moved` when its entity has
// left. Deleted entities have this mark from the start, and are not moved.
void rehash(HashSet* set, uint64_t oldSize, const uint8_t* oldFilled, uint8_t* moved) {
  const auto isWaiting = [&](uint64_t slot) {
    return slot < oldSize && !is_entity_null(oldFilled, slot) && !is_entity_delete(moved, slot);
  };
  uint64_t passed = 0;
  for (uint64_t i = 0; i < oldSize; ++i) {
    if (!isWaiting(i)) continue;
    Entity moving = set->array[i];
    set_entity_delete(moved, i);
    for (bool isPlaced = false; !isPlaced;) {
      const uint64_t slot = emptySlotFor(*set, moving, passed);
      set_entity_fill(set->nul_flag, slot);
      isPlaced = !isWaiting(slot);
      std::swap(moving, set->array[slot]);
      if (!isPlaced) set_entity_delete(moved, slot);  // the entity from there is next
    }
  }
}

}  // namespace

HashSet* init_hashset(uint64_t init_size, float load_factor) {
  HashSet* const set = newNumbers(init_size, load_factor);
  set->array = static_cast<Entity*>(std::malloc((set->size + 1) * sizeof(Entity)));
  set->nul_flag = newBitmap(set->size);
  set->del_flag = newBitmap(set->size);
  if (set->array == nullptr || set->nul_flag == nullptr || set->del_flag == nullptr) {
    outOfMemory({__LINE__, "init_hashset", kUserError});
  }
  set->array[set->size] = Entity{};
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

void enlarge_hashset(HashSet* set, uint64_t num) {
  const AllocationSite site{__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"};
  const uint64_t oldSize = set->size;
  if (!growNumbers(*set, set->count + num)) outOfMemory(site);
  auto* grown = static_cast<Entity*>(std::realloc(set->array, (set->size + 1) * sizeof(Entity)));
  uint8_t* const oldFilled = std::exchange(set->nul_flag, newBitmap(set->size));
  uint8_t* const moved = std::exchange(set->del_flag, newBitmap(set->size));
  if (grown == nullptr || set->nul_flag == nullptr || set->del_flag == nullptr) outOfMemory(site);
  set->array = grown;
  rehash(set, oldSize, oldFilled, moved);
  set->array[set->size] = Entity{};
  std::free(oldFilled);
  std::free(moved);
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
    fillSlot(set, emptySlotFor(*set, entity, set->count_conflict), entity);
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
