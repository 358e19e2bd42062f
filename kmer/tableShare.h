// Filling the hash set with several threads, to the same bytes as with one.
//
// Each thread has a share of the slots and adds, in their order, the k-mers whose home slots lie in
// it. While no probe runs over the end of a share, what the others hold makes no difference to it.
// A k-mer whose probe would run over it is late: joinShares adds it when all shares are filled. It
// takes out the entities behind the end, as far as the late ones can push any, and puts all of them
// in again in the order of their places, which is the order in which one thread adds them. One slot
// more than there are late ones was free there, so the last of these slots stays free, and nothing
// behind it, the next share's late ones included, is touched.
#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "kmer/hashSet.h"

namespace velk {

class TableShare {
 public:
  /// The slots [from, to) of `set`. REQUIRES: from and to are multiples of 8, or to is set.size;
  /// the set is empty, will not grow, and its entities' fields hold their whole places.
  TableShare(const HashSet& set, uint64_t from, uint64_t to);

  uint64_t from() const { return from_; }
  uint64_t to() const { return to_; }

  /// The set as the thread of this share sees it, counting what lies in the share alone.
  const HashSet& set() const { return set_; }

  /// Whether k-mers with this home slot are to be added here.
  bool takes(uint64_t homeSlot) const { return homeSlot - from_ < to_ - from_; }

  /// Adds `entity`, whose probe begins at `slot`, as addBegun does. Returns the entity that had the
  /// key already, null when it is new. Throws std::bad_alloc without memory for a late one.
  /// REQUIRES: takes(slot).
  const Entity* add(const Entity& entity, uint64_t slot);

  /// Sets the nul_flag bits of the share's filled slots.
  void noteFilled() { velk::noteFilled(&set_, from_, to_); }

  /// The late entities, by their keys.
  const std::unordered_map<uint64_t, Entity>& late() const { return late_; }

 private:
  HashSet set_;  // shares its arrays with the set of the run
  uint64_t from_;
  uint64_t to_;
  std::unordered_map<uint64_t, Entity> late_;
};

/// Joins the filled shares of `set`, which are all of its slots, in order. Returns false where the
/// late ones of a share would run over the end of the next one, too: the set is to be emptied then.
/// Throws std::bad_alloc without memory. REQUIRES: noteFilled() of every share.
bool joinShares(HashSet* set, const std::vector<TableShare>& shares);

/// Removes all entities from the set, whatever has been joined.
void emptySlots(HashSet* set);

}  // namespace velk
