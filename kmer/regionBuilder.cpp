#include "kmer/regionBuilder.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace velk {

void RegionBuilder::build(std::span<const Run> runs) {
  group(runs);
  for (auto from = runs_.cbegin(); from != runs_.cend();) {
    auto to = from + 1;
    while (to != runs_.cend() && to->hash == from->hash) ++to;
    addKind({from, to});
    from = to;
  }
}

// Sorts the runs: by the hashes of their kinds into bins of about one, then each bin.
void RegionBuilder::group(std::span<const Run> runs) {
  constexpr std::size_t kAhead = 16;  // runs between the prefetch of their text and its use
  const int length = index_.seeds_.length();
  const auto binOf = [&](uint64_t hash) { return scaledTo(hash << kRegionBits, runs.size()); };
  std::vector<uint64_t> hashes(runs.size());
  std::vector<uint32_t> starts(runs.size() + 1);
  for (std::size_t n = 0; n < runs.size(); ++n) {
    const Run& ahead = runs[std::min(n + kAhead, runs.size() - 1)];
    text_.prefetchRange(ahead.first, ahead.first + DATA_LEN);
    const Run& run = runs[n];
    hashes[n] = run.isOdd != 0
                    ? index_.lookUpOf(text_.oddKeyAt(run.first)).hash
                    : mixed(index_.seeds_.kindOf(text_.basesAt(run.first + run.offset, length)));
    ++starts[binOf(hashes[n]) + 1];
  }
  std::partial_sum(starts.begin(), starts.end(), starts.begin());
  runs_.resize(runs.size());
  for (std::size_t n = 0; n < runs.size(); ++n) {
    runs_[starts[binOf(hashes[n])]++] = {hashes[n], runs[n]};
  }
  auto begin = runs_.begin();
  for (std::size_t n = 0; n < runs.size(); ++n) {  // each bin ends where the next one began
    const auto end = runs_.begin() + starts[n];
    std::sort(begin, end, [](const KindRun& one, const KindRun& other) {
      return one.hash != other.hash ? one.hash < other.hash : one.run.first < other.run.first;
    });
    begin = end;
  }
}

// Adds the places of a kind of seed, or of the windows that have such a seed.
void RegionBuilder::addKind(std::span<const KindRun> runs) {
  const auto& [hash, run] = runs.front();
  if (runs.size() == 1 && run.isMixed == 0 && run.isOdd == 0) {
    // Its windows differ, and none is the reverse complement of another.
    seeds.push_back({run.first + run.offset, hash});
    distinctKeys += run.windows;
    return;
  }
  findFirsts(runs);
  markReversed(runs);
  distinctKeys += keys_;
  const bool hasOdd =
      std::any_of(runs.begin(), runs.end(), [](const KindRun& of) { return of.run.isOdd != 0; });
  if (hasOdd || places_.size() > SeedIndex::kMostPlaces) {
    places_ = {SeedIndex::kElsewhere};
    windows.reserve(std::max(windows.capacity(), windows.size() + keys_));
    for (const Known& known : known_) {
      if (known.first != 0) windows.push_back(known.first);
    }
  }
  for (const uint64_t place : places_) seeds.push_back({place, hash});
}

// Calls onWindow(position, isOdd, place of its seed) for the windows of a kind, in text order.
template <class OnWindow>
void RegionBuilder::forEachWindow(std::span<const KindRun> runs, OnWindow onWindow) const {
  for (const auto& [hash, run] : runs) {
    const uint64_t first = run.first;
    const uint64_t end = first + run.windows;
    if (run.isMixed == 0) {
      for (uint64_t p = first; p < end; ++p) onWindow(p, run.isOdd != 0, first + run.offset);
      continue;
    }
    index_.seeds_.forEachRun(text_, first, end, [&](const SeedRun& part) {
      for (uint64_t p = part.first; p <= part.last; ++p) onWindow(p, false, part.at);
    });
  }
}

// Finds the first occurrences of all keys of a kind, and marks those that are repeated.
void RegionBuilder::findFirsts(std::span<const KindRun> runs) {
  constexpr std::size_t kFirstSize = 128;
  known_.assign(kFirstSize, Known{});
  keys_ = 0;
  places_.clear();
  forEachWindow(runs, [&](uint64_t p, bool isOdd, uint64_t place) {
    Known& known = knownOf(keyAt(p, isOdd));
    if (known.first != 0) {
      known.isRepeated = 1;
      text_.markRepeated(known.first);
      text_.markRepeated(p);
      return;
    }
    known = {p & Run::kPosition, isOdd ? 1U : 0U, 0};
    const bool isNewPlace = places_.empty() || places_.back() != place;
    if (isNewPlace && places_.size() <= SeedIndex::kMostPlaces) places_.push_back(place);
    if (4 * ++keys_ > 3 * known_.size()) growKnown();
  });
}

// Marks the windows whose reverse complement is there, too, and odd windows that are repeated.
void RegionBuilder::markReversed(std::span<const KindRun> runs) {
  const bool areInjective = index_.seeds_.length() <= kLongestInjective;
  const uint64_t hash = runs.front().hash;
  forEachWindow(runs, [&](uint64_t p, bool isOdd, uint64_t) {
    const uint64_t key = keyAt(p, isOdd);
    if (isOdd) {
      if (knownOf(key).isRepeated != 0) text_.markReversed(p);
      return;
    }
    const uint64_t reversed = reversedKey(key, text_.windowLength());
    if (knownOf(reversed).first != 0) {
      text_.markReversed(p);
    } else if (!areInjective && index_.lookUpOf(reversed).hash != hash) {
      strays.push_back(p);
    }
  });
}

// The entry of a key, or the free one where it belongs.
RegionBuilder::Known& RegionBuilder::knownOf(uint64_t key) {
  std::size_t n = scaledTo(mixed(key), known_.size());
  while (known_[n].first != 0 && keyAt(known_[n].first, known_[n].isOdd != 0) != key) {
    n = n + 1 == known_.size() ? 0 : n + 1;
  }
  return known_[n];
}

void RegionBuilder::growKnown() {
  const std::vector<Known> old =
      std::exchange(known_, std::vector<Known>(known_.size() + known_.size() / 2));
  for (const Known& known : old) {
    if (known.first != 0) knownOf(keyAt(known.first, known.isOdd != 0)) = known;
  }
}

}  // namespace velk
