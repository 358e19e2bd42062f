// The adding of the indexed k-mers to the hash set, or to one share of it.
//
// K-mers are added in batches, each in three steps: the home slots are worked out, their memory is
// fetched, the k-mers are added. A batch is fetched while the one before it is added, a k-mer of
// each by turns, as only so many fetches can be under way. Little is computed between two fetches:
// a processor that waits for the page of one begins with the next ones only if they are near.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "contig/contig.h"
#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "kmer/rollingKey.h"
#include "kmer/sideIndex.h"

namespace velk {

/// All slots of a set, which may grow: what an Indexer adds to, with TableShare's functions.
class WholeTable {
 public:
  explicit WholeTable(HashSet& set) : set_(set) {}

  const HashSet& set() const { return set_; }
  bool takes(uint64_t) const { return true; }
  const Entity* add(const Entity& entity, uint64_t slot) {
    const uint64_t before = addBegun(&set_, entity, {entity.bitSeq, slot});
    return before == set_.size ? nullptr : &set_.array[before];
  }
  void noteFilled() { velk::noteFilled(&set_); }

 private:
  HashSet& set_;
};

/// Adds k-mers to a Table, those whose home slots it takes, and tells `side` of the repeats.
template <class Table>
class Indexer {
 public:
  Indexer(Table& table, SideIndex& side, int kmer) : table_(table), side_(side), kmer_(kmer) {}

  /// Adds all indexed k-mers of the model. Throws std::bad_alloc without memory.
  void addAll(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
    forEachIndexed(scaffoldInfo, scaffoldSum,
                   [&](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                     for (std::size_t offset = 0; offset < windows; offset += kBatch) {
                       const auto count = std::min<std::size_t>(kBatch, windows - offset);
                       prepare({i, j, offset}, contig.contigSeq, count);
                       if (next_->count >= kBatch) turn();
                     }
                   });
    turn();
    turn();
    table_.noteFilled();  // for whoever reads the bits; a run itself reads slots alone
  }

 private:
  static constexpr std::size_t kBatch = 64;  // k-mers whose memory is fetched at the same time

  struct Begun {
    Entity entity;
    uint64_t slot;  // home slot
  };

  // K-mers on their way into the table.
  struct Batch {
    std::size_t count = 0;
    std::array<Begun, 2 * kBatch> begun;  // room for kBatch more than a batch not yet full has
    uint64_t tableSize = 0;               // slots of the table when they were prepared
  };

  // Prepares, of the `count` k-mers of a contig that begin at `first`, those that the table takes.
  void prepare(const KmerPlace& first, const std::string& bases, std::size_t count) {
    const auto length = static_cast<std::size_t>(kmer_);
    const std::string_view stretch =
        std::string_view(bases).substr(first.start, count + length - 1);
    next_->tableSize = table_.set().size;
    if (packed_.fill(stretch)) {
      beginAll(first, count, [&](std::size_t w) { return packed_.key(w, kmer_); });
      return;
    }
    RollingKey keys(stretch, kmer_);
    beginAll(first, count, [&](std::size_t w) {
      if (w != 0) keys.advance();
      return keys.key();
    });
  }

  // keyOf(w): the key of the w-th k-mer; asked for in order.
  template <class KeyOf>
  void beginAll(KmerPlace place, std::size_t count, KeyOf keyOf) {
    for (std::size_t w = 0; w < count; ++w, ++place.start) {
      const uint64_t key = keyOf(w);
      const uint64_t slot = homeSlot(table_.set(), key);
      next_->begun[next_->count] = {uniqueEntity(key, place), slot};
      next_->count += std::size_t{table_.takes(slot)};  // no branch to be guessed
    }
  }

  // Fetches the memory for the batch prepared last and adds the one before.
  void turn() {
    for (std::size_t n = 0; n < std::max(next_->count, done_->count); ++n) {
      if (n < next_->count) fetchSlots(table_.set(), next_->begun[n].slot);
      if (n < done_->count) add(done_->begun[n]);
    }
    std::swap(next_, done_);
    next_->count = 0;
  }

  void add(const Begun& begun) {
    const Entity& entity = begun.entity;
    const bool hasGrown = table_.set().size != done_->tableSize;
    const uint64_t slot = hasGrown ? homeSlot(table_.set(), entity.bitSeq) : begun.slot;
    const Entity* known = table_.add(entity, slot);
    if (known != nullptr && side_.isMade()) side_.noteRepeat(entity, *known);
  }

  Table& table_;
  SideIndex& side_;
  int kmer_;
  PackedBases packed_;  // room for prepare()
  std::array<Batch, 2> batches_;
  Batch* next_ = batches_.data();
  Batch* done_ = batches_.data() + 1;
};

}  // namespace velk
