// The k-mers that hold letters which are no bases: an exact table of their keys.
//
// Such a letter is folded into the key (kmer/Sequence.h), so the key of an odd k-mer may be that of
// an ordinary one, too. Open addressing with linear probing, in parts that grow one at a time, so
// that filling needs little more memory than the table has in the end.
// Filled by one thread: add() for all occurrences, then settle(). Read-only, for any thread,
// afterwards.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "kmer/buckets.h"

namespace velk {

class OddKmers {
 public:
  struct Entry {
    uint64_t key;
    uint64_t place;  // 1 + position of the first occurrence in the text, doubled; + 1: repeated

    uint64_t position() const { return place / 2 - 1; }
    bool isRepeated() const { return place % 2 != 0; }
    void setRepeated() { place |= 1U; }
  };

  /// Adds an occurrence; those of a key are to come in the order of their positions.
  /// Throws std::bad_alloc without memory.
  void add(uint64_t key, uint64_t position);

  /// Ends the filling: lays the parts behind each other. Throws std::bad_alloc without memory.
  void settle();

  bool isEmpty() const { return size_ == 0; }
  uint64_t size() const { return size_; }  // distinct keys
  uint64_t bytes() const { return slots_.size() * sizeof(Entry); }

  /// The entry of a key; null without one. REQUIRES: settled.
  const Entry* find(uint64_t key) const;

  /// The slots of the table; `place` of a free one is 0. REQUIRES: settled.
  std::span<Entry> slots() { return slots_; }

 private:
  static constexpr unsigned kPartBits = 8;
  static constexpr std::size_t kParts = std::size_t{1} << kPartBits;
  static constexpr double kMostFull = 0.8;  // share of the slots

  struct Part {
    std::vector<Entry> slots;  // place 0: free
    uint64_t count = 0;
  };

  static uint64_t partOf(uint64_t hash) { return hash >> (64 - kPartBits); }
  static void resize(Part& part, uint64_t slots);

  std::vector<Part> parts_;  // while the table is being filled
  std::vector<Entry> slots_;
  std::array<uint64_t, kParts + 1> starts_{};  // of the parts in slots_
  uint64_t size_ = 0;
};

}  // namespace velk
