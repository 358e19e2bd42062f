// The growth of the hash set: all entities move to their new slots inside the grown array, so that
// no second table is needed.
#include <algorithm>
#include <cstdlib>
#include <utility>

#include "driver/fatal.h"
#include "kmer/hashSet.h"
#include "kmer/tableMemory.h"

namespace velk {
namespace {

constexpr uint64_t kLargestDoubling = 0x3FFFFFFF;  // slots; from here on a table grows by this many

// Slots between the entity that is moved and the one whose new place is fetched.
constexpr uint64_t kAhead = 32;

// Has fetched what is read and written when the entity of this key is put into its home slot.
void fetchNewPlace(const HashSet& set, uint64_t key) {
  const uint64_t slot = homeSlot(set, key);
  fetchSlots(set, slot);
  fetchLine(&set.nul_flag[slot / 8]);
}

// Moves the entities of the first `oldSize` slots to where the table's new size wants them.
// `oldFilled` and `moved` are the old bitmaps; a slot is marked in `moved` when its entity left it.
void rehash(HashSet* set, uint64_t oldSize, const uint8_t* oldFilled, uint8_t* moved) {
  set->zeroSlot = kNoSlot;
  const auto isWaiting = [&](uint64_t slot) {
    return slot < oldSize && !is_entity_null(oldFilled, slot) && !is_entity_delete(moved, slot);
  };
  // What was deleted is left behind, and an unfilled slot must be zero (isFilled).
  for (uint64_t i = 0; i < oldSize; ++i) {
    if (is_entity_delete(moved, i)) set->array[i] = Entity{};
  }
  for (uint64_t i = 0; i < oldSize; ++i) {
    if (isWaiting(i + kAhead)) fetchNewPlace(*set, set->array[i + kAhead].bitSeq);
    if (!isWaiting(i)) continue;
    Entity inHand = std::exchange(set->array[i], Entity{});
    set_entity_delete(moved, i);
    for (bool placed = false; !placed;) {
      uint64_t slot = homeSlot(*set, inHand.bitSeq);
      while (!is_entity_null(set->nul_flag, slot)) slot = nextSlot(slot, set->size);
      set_entity_fill(set->nul_flag, slot);
      placed = !isWaiting(slot);
      if (!placed) set_entity_delete(moved, slot);
      const Entity displaced = set->array[slot];  // it is placed next, if it was waiting
      putEntity(set, slot, inHand);
      inHand = displaced;
    }
  }
}

}  // namespace

uint64_t grownSize(uint64_t size, uint64_t needed, float load_factor) {
  const double neededSlots = static_cast<double>(needed) / static_cast<double>(load_factor);
  if (neededSlots > static_cast<double>(kMaxSlots)) return kMaxSlots + 1;
  do {
    size = find_next_prime(size < kLargestDoubling ? size * 2 : size + kLargestDoubling);
  } while (size <= kMaxSlots &&
           static_cast<float>(needed) > static_cast<float>(size) * load_factor);
  return size;
}

void enlarge_hashset(HashSet* set, uint64_t num) {
  const AllocationSite site{__LINE__, "enlarge_hashset", kUserError, ". Function: ", ".\n"};
  const uint64_t oldSize = set->size;
  set->size = grownSize(oldSize, set->count + num, set->load_factor);
  if (set->size > kMaxSlots) outOfMemory(site);
  // KEPT: rounded to nearest here, cut off in init_hashset (HashSet.GrowthRoundsMaxToNearest)
  const double max = static_cast<double>(static_cast<float>(set->size) * set->load_factor) + 0.5;
  set->max = std::min(static_cast<uint64_t>(max), set->size - 1);

  auto* grown = static_cast<Entity*>(std::realloc(set->array, (set->size + 1) * sizeof(Entity)));
  uint8_t* const oldFilled = std::exchange(set->nul_flag, newBitmap(set->size));
  uint8_t* const moved = std::exchange(set->del_flag, newBitmap(set->size));
  if (grown == nullptr || set->nul_flag == nullptr || set->del_flag == nullptr) outOfMemory(site);
  set->array = grown;
  adviseHugePages(grown, (set->size + 1) * sizeof(Entity));
  std::fill(grown + oldSize, grown + set->size + 1, Entity{});
  rehash(set, oldSize, oldFilled, moved);
  std::free(oldFilled);
  std::free(moved);
}

}  // namespace velk
