// Builds one region of the seed index: the seeds whose hashes fall in one range.
//
// A group holds, in text order, the windows whose seeds have the same canonical m-mer. Equal
// windows are in the same group, and so are most reverse complements. So groups are independent. A
// key's first occurrence is stored; all its occurrences are marked in the text. Several threads may
// build regions at the same time.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "kmer/seedIndex.h"

namespace velk {

/// Windows in a row whose seeds have the same canonical m-mer, or one non-ACGT window.
struct Run {
  static constexpr uint64_t kPosition = (uint64_t{1} << 40) - 1;
  static constexpr uint64_t kMostWindows = (1U << 15) - 1;

  uint64_t first : 40;     // position of the first window
  uint64_t offset : 5;     // of the seed in it
  uint64_t windows : 15;   // number
  uint64_t places : 3;     // upper bound of its seed places; 1: all windows share one untied seed
  uint64_t isNonAcgt : 1;  // the window is non-ACGT
};
static_assert(sizeof(Run) == sizeof(uint64_t));

/// The places of a region, in the order in which they are added to its buckets.
struct Region {
  struct Place {
    uint64_t position;
    uint64_t hash;
  };
  std::vector<Place> seedPlaces;
  std::vector<uint64_t> windowPlaces;  // of the second level
  uint64_t distinctKeys = 0;
};

class RegionBuilder {
 public:
  RegionBuilder(const SeedIndex& index, ContigText& text) : index_(index), text_(text) {}

  /// Finds the places of all windows of these runs, which may come in any order, and marks the
  /// windows in the text. To be called once. Throws std::bad_alloc without memory.
  Region build(std::span<const Run> runs) {
    assert(runs_.empty());
    sortIntoGroups(runs);
    for (auto from = runs_.cbegin(); from != runs_.cend();) {
      auto to = from + 1;
      while (to != runs_.cend() && to->hash == from->hash) ++to;
      addGroup({from, to});
      from = to;
    }
    return std::move(region_);
  }

 private:
  struct GroupRun {
    uint64_t hash;  // of the seeds' canonical m-mer, the same in the whole group
    Run run;
  };
  struct Known {
    uint64_t first : 62;  // position of the first occurrence of a key; 0: none
    uint64_t isNonAcgt : 1;
    uint64_t isRepeated : 1;
  };

  uint64_t keyAt(uint64_t p, bool isNonAcgt) const {
    return isNonAcgt ? text_.rawKeyAt(p) : text_.basesAt(p, text_.windowLength());
  }

  // Sorts the runs by their hashes, and those of a group by their positions.
  void sortIntoGroups(std::span<const Run> runs) {
    constexpr std::size_t kAhead = 16;  // runs between the prefetch of their text and its use
    runs_.reserve(runs.size());
    for (std::size_t n = 0; n < runs.size(); ++n) {
      const Run& ahead = runs[std::min(n + kAhead, runs.size() - 1)];
      text_.prefetchRange(ahead.first, ahead.first + DATA_LEN);
      runs_.push_back({hashOf(runs[n]), runs[n]});
    }
    std::sort(runs_.begin(), runs_.end(), [](const GroupRun& one, const GroupRun& other) {
      return one.hash != other.hash ? one.hash < other.hash : one.run.first < other.run.first;
    });
  }

  uint64_t hashOf(const Run& run) const {
    if (run.isNonAcgt != 0) return index_.seeds().seedOf(text_.rawKeyAt(run.first)).hash;
    const Seeds& ofIndex = index_.seeds();
    return ofIndex.hashOf(text_.basesAt(run.first + run.offset, ofIndex.length()));
  }

  // Adds the seed places of a group. Adds window places instead if it has many seed places, or
  // non-ACGT windows.
  void addGroup(std::span<const GroupRun> runs) {
    const auto& [hash, run] = runs.front();
    if (runs.size() == 1 && run.places == 1 && run.isNonAcgt == 0) {
      // Its windows differ, and none is the reverse complement of another.
      region_.seedPlaces.push_back({run.first + run.offset, hash});
      region_.distinctKeys += run.windows;
      return;
    }
    findFirsts(runs);
    markReversed(runs);
    region_.distinctKeys += keys_;
    const bool hasNonAcgt = std::any_of(runs.begin(), runs.end(),
                                        [](const GroupRun& of) { return of.run.isNonAcgt != 0; });
    if (hasNonAcgt || places_.size() > SeedIndex::kMostPlaces) {
      places_ = {SeedIndex::kElsewhere};
      for (const Known& known : known_) {
        if (known.first != 0) region_.windowPlaces.push_back(known.first);
      }
    }
    for (const uint64_t place : places_) region_.seedPlaces.push_back({place, hash});
  }

  // Calls onWindow(position, isNonAcgt, place of its seed) for the windows of a group, in text
  // order.
  template <class OnWindow>
  void forEachWindow(std::span<const GroupRun> runs, OnWindow onWindow) const {
    for (const auto& [hash, run] : runs) {
      const uint64_t first = run.first;
      const uint64_t end = first + run.windows;
      if (run.places == 1) {
        for (uint64_t p = first; p < end; ++p) onWindow(p, run.isNonAcgt != 0, first + run.offset);
        continue;
      }
      index_.seeds().forEachRun(text_, first, end, [&](const SeedRun& part) {
        for (uint64_t p = part.first; p <= part.last; ++p) onWindow(p, false, part.at);
      });
    }
  }

  // Finds the first occurrences of all keys of a group, and marks the windows of repeated keys.
  void findFirsts(std::span<const GroupRun> runs) {
    constexpr std::size_t kFirstSize = 128;
    known_.assign(kFirstSize, Known{});
    keys_ = 0;
    places_.clear();
    forEachWindow(runs, [&](uint64_t p, bool isNonAcgt, uint64_t place) {
      Known& known = knownOf(keyAt(p, isNonAcgt));
      if (known.first != 0) {
        known.isRepeated = 1;
        text_.markRepeated(known.first);
        text_.markRepeated(p);
        return;
      }
      known = {p & Run::kPosition, isNonAcgt ? 1U : 0U, 0};
      const bool isNewPlace = places_.empty() || places_.back() != place;
      if (isNewPlace && places_.size() <= SeedIndex::kMostPlaces) places_.push_back(place);
      if (4 * ++keys_ > 3 * known_.size()) growKnown();
    });
  }

  // Marks the windows whose reverse complement is indexed or may be, and repeated non-ACGT windows.
  void markReversed(std::span<const GroupRun> runs) {
    const bool areInjective = index_.seeds().length() <= kLongestInjective;
    forEachWindow(runs, [&](uint64_t p, bool isNonAcgt, uint64_t) {
      const uint64_t key = keyAt(p, isNonAcgt);
      if (isNonAcgt) {
        if (knownOf(key).isRepeated != 0) text_.markReversed(p);
        return;
      }
      const uint64_t reversed = reversedKey(key, text_.windowLength());
      const bool isThere = knownOf(reversed).first != 0;
      // A reverse complement in another group, which is rare, counts as indexed.
      const bool mayBe = !areInjective && index_.seeds().seedOf(reversed).hash != runs.front().hash;
      if (isThere || mayBe) text_.markReversed(p);
    });
  }

  // The entry of a key, or the free one where it belongs.
  Known& knownOf(uint64_t key) {
    std::size_t n = scaledTo(mixed(key), known_.size());
    while (known_[n].first != 0 && keyAt(known_[n].first, known_[n].isNonAcgt != 0) != key) {
      n = n + 1 == known_.size() ? 0 : n + 1;
    }
    return known_[n];
  }

  void growKnown() {
    std::vector<Known> old(known_.size() + known_.size() / 2);
    old.swap(known_);
    for (const Known& known : old) {
      if (known.first != 0) knownOf(keyAt(known.first, known.isNonAcgt != 0)) = known;
    }
  }

  const SeedIndex& index_;
  ContigText& text_;
  Region region_;
  std::vector<GroupRun> runs_;  // sorted by hash and position

  // Of the current group:
  std::vector<Known> known_;      // a hash table of its keys
  uint64_t keys_ = 0;             // in it
  std::vector<uint64_t> places_;  // of the seeds of first occurrences; no more than make it heavy
};

}  // namespace velk
