// The growth of the hash set: all entities move to their new slots inside the grown array, so that
// no second table is needed.
#include <cstdlib>
#include <utility>

#include "driver/fatal.h"
#include "kmer/hashSet.h"
#include "kmer/tableSize.h"

namespace velk {
namespace {

// The first empty slot on the way of an entity's key.
uint64_t emptySlotFor(const HashSet& set, const Entity& entity) {
  uint64_t slot = homeSlot(set, entity);
  while (!is_entity_null(set.nul_flag, slot)) slot = nextSlot(set, slot);
  return slot;
}

// Moves the entities of the first `oldSize` slots to where the table's new size wants them.
// `oldFilled` and `moved` are the old bitmaps; a slot is marked in `moved` when its entity left it.
// What had been deleted bears the mark already, and is left behind.
void rehash(HashSet* set, uint64_t oldSize, const uint8_t* oldFilled, uint8_t* moved) {
  const auto isWaiting = [&](uint64_t slot) {
    return slot < oldSize && !is_entity_null(oldFilled, slot) && !is_entity_delete(moved, slot);
  };
  for (uint64_t i = 0; i < oldSize; ++i) {
    if (!isWaiting(i)) continue;
    Entity inHand = set->array[i];
    set_entity_delete(moved, i);
    for (bool isPlaced = false; !isPlaced;) {
      const uint64_t slot = emptySlotFor(*set, inHand);
      set_entity_fill(set->nul_flag, slot);
      isPlaced = !isWaiting(slot);
      std::swap(inHand, set->array[slot]);
      if (!isPlaced) set_entity_delete(moved, slot);  // what stood there is placed next
    }
  }
}

}  // namespace

void enlarge_hashset(HashSet* set, uint64_t num) {
  const AllocationSite site{__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"};
  const uint64_t oldSize = set->size;
  set->size = grownSize(oldSize, set->count + num, set->load_factor);
  if (set->size > kMaxSlots) outOfMemory(site);
  set->max = mostOfGrown(set->size, set->load_factor);

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

}  // namespace velk
