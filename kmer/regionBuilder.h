// Builds a region of the seed index: all that kinds of seeds with hashes in one range have.
//
// The runs of windows are brought into groups by their seeds' kinds, in text order. Equal windows
// and reverse complements are of one kind: what becomes of a window follows from its group alone.
// Of each key the first occurrence counts; all occurrences are marked in the text.
// Regions may be built at the same time, by several threads.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "kmer/seedIndex.h"

namespace velk {

/// Windows in a row whose seeds are of one kind, or one odd window.
struct Run {
  static constexpr uint64_t kPosition = (uint64_t{1} << 42) - 1;
  static constexpr uint64_t kMostWindows = (1U << 15) - 1;

  uint64_t first : 42;    // position of the first window
  uint64_t offset : 5;    // of the seed in it
  uint64_t windows : 15;  // number
  uint64_t isMixed : 1;   // seeds may change from window to window, or tie
  uint64_t isOdd : 1;

  static Run of(const SeedRun& run) {
    return {run.first & kPosition, (run.at - run.first) & 31U,
            (run.last - run.first + 1) & kMostWindows, run.isTied ? 1U : 0U, 0};
  }
  static Run oddAt(uint64_t window) { return {window & kPosition, 0, 1, 0, 1}; }

  /// Adds the windows of a run that follows, with a seed of the same kind, if there is room.
  bool join(const SeedRun& run) {
    const uint64_t all = run.last - first + 1;
    if (all > kMostWindows) return false;
    windows = all & kMostWindows;
    isMixed = 1;
    return true;
  }
};
static_assert(sizeof(Run) == sizeof(uint64_t));

class RegionBuilder {
 public:
  RegionBuilder(const SeedIndex& index, ContigText& text) : index_(index), text_(text) {}

  /// Finds the places of all windows of these runs, which may come in any order, and marks the
  /// windows in the text. Throws std::bad_alloc without memory.
  void build(std::span<const Run> runs);

  struct Place {
    uint64_t position;
    uint64_t hash;
  };

  // What has been found:
  std::vector<Place> seeds;       // in the order in which they go into buckets
  std::vector<uint64_t> windows;  // positions of windows of the second level
  std::vector<uint64_t> strays;   // windows whose reverse complement may be in another region
  uint64_t distinctKeys = 0;

 private:
  struct KindRun {
    uint64_t hash;  // of the seed's kind
    Run run;
  };
  struct Known {
    uint64_t first : 62;  // position of the first occurrence of a key; 0: none
    uint64_t isOdd : 1;
    uint64_t isRepeated : 1;
  };

  void group(std::span<const Run> runs);
  void addKind(std::span<const KindRun> runs);
  void findFirsts(std::span<const KindRun> runs);
  void markReversed(std::span<const KindRun> runs);
  template <class OnWindow>
  void forEachWindow(std::span<const KindRun> runs, OnWindow onWindow) const;
  uint64_t keyAt(uint64_t p, bool isOdd) const {
    return isOdd ? text_.oddKeyAt(p) : text_.basesAt(p, text_.windowLength());
  }
  Known& knownOf(uint64_t key);
  void growKnown();

  const SeedIndex& index_;
  ContigText& text_;
  std::vector<KindRun> runs_;  // sorted by hash and position

  // Of one kind:
  std::vector<Known> known_;      // a hash table of its keys
  uint64_t keys_ = 0;             // in it
  std::vector<uint64_t> places_;  // of the seeds of first occurrences; no more than make it heavy
};

}  // namespace velk
