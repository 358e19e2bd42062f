// A batch: reads, or pairs, that follow each other in one input, with their whole text.
//
// A reader fills it and one worker has it from then on; nothing in it is shared. What is handed out
// stays valid until clear().
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "reads/recordSource.h"

namespace velk::reads {

class ReadBatch {
 public:
  /// Empties the batch, which then takes reads of input `input`; the next one is its record
  /// `firstRecord`, from 0, a pair being one record.
  void clear(uint32_t input, uint64_t firstRecord, bool arePairs);

  /// Adds a read, or a pair. REQUIRES: as many reads as clear() asked for.
  void add(const RecordView& read);
  void add(const RecordView& first, const RecordView& second);

  uint32_t input() const { return input_; }
  uint64_t recordOf(std::size_t entry) const { return firstRecord_ + entry; }
  bool arePairs() const { return arePairs_; }
  std::size_t entries() const { return sides_[0].reads.size(); }

  /// Characters of all its reads: names, bases, qualities.
  std::size_t bytes() const { return sides_[0].bytes + sides_[1].bytes; }

  /// Read `mate` (0, or 1 of a pair) of an entry, as it was sequenced.
  RecordView read(std::size_t entry, int mate) const;

  /// Its bases alone, which lie closer together than all of it.
  std::string_view basesOfRead(std::size_t entry, int mate) const {
    return sides_[static_cast<std::size_t>(mate)].bases[entry];
  }

  /// Has the processor fetch what read() will return of an entry.
  void prefetch(std::size_t entry) const;

  /// The bases of all first, or second, reads, which the caller leaves as they are; or copies, made
  /// at each call, which it may change.
  std::string* basesOf(int mate) { return sides_[static_cast<std::size_t>(mate)].bases.data(); }
  std::string* copiesOfBases(int mate);

 private:
  // Name and quality in the side's text, one behind the other. An entry's quality has as many
  // characters as its bases, or none.
  struct Slices {
    std::size_t start;
    uint32_t name;  // characters
    bool hasQuality;
  };
  struct Side {
    std::string text;
    std::vector<Slices> reads;
    std::vector<std::string> bases;  // at least as many; strings of earlier reads are used again
    std::vector<std::string> copies;
    std::size_t bytes = 0;  // of all texts
  };

  static void addTo(Side& side, const RecordView& read);

  uint32_t input_ = 0;
  uint64_t firstRecord_ = 0;
  bool arePairs_ = false;
  std::array<Side, 2> sides_;
};

}  // namespace velk::reads
