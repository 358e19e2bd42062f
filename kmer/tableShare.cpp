#include "kmer/tableShare.h"

#include <algorithm>
#include <cstring>
#include <tuple>
#include <utility>

namespace velk {
namespace {

bool isEarlier(const Entity& a, const Entity& b) {
  const auto placeOf = [](const Entity& entity) {
    return std::make_tuple(entity.scaffoldNum, entity.contigNum, entity.startPos);
  };
  return placeOf(a) < placeOf(b);
}

// The slot from which on so many more entities, pushed over the begin of `share`, change nothing;
// the end of the share when there is none.
uint64_t endOfChange(const HashSet& set, const TableShare& share, uint64_t entities) {
  uint64_t slot = share.from();
  for (; slot < share.to(); ++slot) {
    if (!isFilled(set, slot) && entities-- == 0) break;
  }
  return slot;
}

Entity takeOut(HashSet* set, uint64_t slot) {
  if (slot == set->zeroSlot) set->zeroSlot = kNoSlot;
  return std::exchange(set->array[slot], Entity{});
}

// Puts an entity whose key is not in the set into the first free slot of its probe.
void putIn(HashSet* set, const Entity& entity) {
  uint64_t slot = homeSlot(*set, entity.bitSeq);
  while (isFilled(*set, slot)) slot = nextSlot(slot, set->size);
  putEntity(set, slot, entity);
}

// Adds the late ones of a share to the begin of the next. Returns false when it has no room.
bool addLate(HashSet* set, const TableShare& share, const TableShare& next) {
  if (share.late().empty()) return true;
  const uint64_t end = endOfChange(*set, next, share.late().size());
  if (end == next.to()) return false;
  std::vector<Entity> entities;
  for (const auto& [key, entity] : share.late()) entities.push_back(entity);
  for (uint64_t slot = next.from(); slot < end; ++slot) {
    if (isFilled(*set, slot)) entities.push_back(takeOut(set, slot));
  }
  std::sort(entities.begin(), entities.end(), isEarlier);
  for (const Entity& entity : entities) putIn(set, entity);
  set->count += share.late().size();
  noteFilled(set, next.from(), end);
  return true;
}

}  // namespace

TableShare::TableShare(const HashSet& set, uint64_t from, uint64_t to)
    : set_(set), from_(from), to_(to) {}

const Entity* TableShare::add(const Entity& entity, uint64_t slot) {
  for (; slot != to_; ++slot) {
    if (!isFilled(set_, slot)) {
      putEntity(&set_, slot, entity);
      ++set_.count;
      return nullptr;
    }
    if (hash_equal(entity, set_.array[slot])) {
      clearUnique(&set_, slot);
      return &set_.array[slot];
    }
  }
  const auto [known, isNew] = late_.try_emplace(entity.bitSeq, entity);
  if (isNew) return nullptr;
  known->second.unique = 0;
  return &known->second;
}

bool joinShares(HashSet* set, const std::vector<TableShare>& shares) {
  for (const TableShare& share : shares) {
    set->count += share.set().count;
    if (share.set().zeroSlot != kNoSlot) set->zeroSlot = share.set().zeroSlot;
  }
  for (std::size_t i = 0; i < shares.size(); ++i) {
    if (!addLate(set, shares[i], shares[(i + 1) % shares.size()])) return false;
  }
  return true;
}

void emptySlots(HashSet* set) {
  std::memset(static_cast<void*>(set->array), 0, set->size * sizeof(Entity));
  std::memset(set->nul_flag, 0, set->size / 8 + 1);
  set->count = 0;
  set->zeroSlot = kNoSlot;
}

}  // namespace velk
