#include "report/comparison.h"

#include <algorithm>
#include <map>
#include <tuple>

namespace velk::report {
namespace {

using Place = std::tuple<std::string_view, uint64_t, uint64_t>;

Place placeOf(const RunData& data, std::size_t gap) {
  const GapData& facts = data.gaps[gap];
  return {data.scaffoldOf(facts), facts.from, facts.to};
}

// Libraries by name, those of the first run in front.
std::vector<std::string> librariesOf(const RunData& one, const RunData& other) {
  std::vector<std::string> names;
  for (const RunData* data : {&one, &other}) {
    for (const LibraryData& library : data->libraries) {
      if (std::find(names.begin(), names.end(), library.name) == names.end()) {
        names.push_back(library.name);
      }
    }
  }
  return names;
}

uint64_t countOf(const RunData& data, const std::string& library, ReadKind kind) {
  uint64_t sum = 0;
  for (std::size_t l = 0; l < data.libraries.size(); ++l) {
    if (data.libraries[l].name != library) continue;
    for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) sum += data.count(gap, l, kind);
  }
  return sum;
}

void countChange(uint64_t before, uint64_t after, Comparison& comparison) {
  if (after > before) ++comparison.gained;
  if (after < before) ++comparison.lost;
  if (before == 0 && after > 0) ++comparison.filled;
  if (before > 0 && after == 0) ++comparison.emptied;
}

}  // namespace

Comparison compare(const Findings& one, const Findings& other) {
  Comparison comparison;
  std::map<Place, std::size_t> ofOne;
  for (std::size_t gap = 0; gap < one.gaps.size(); ++gap) ofOne[placeOf(one.data, gap)] = gap;
  for (std::size_t gap = 0; gap < other.gaps.size(); ++gap) {
    const auto same = ofOne.find(placeOf(other.data, gap));
    if (same == ofOne.end()) {
      ++comparison.onlyOther;
      continue;
    }
    const uint64_t before = one.gaps[same->second].belonging;
    const uint64_t after = other.gaps[gap].belonging;
    comparison.gaps.push_back(
        {same->second, gap, static_cast<int64_t>(after) - static_cast<int64_t>(before)});
    countChange(before, after, comparison);
  }
  comparison.onlyOne = one.gaps.size() - comparison.gaps.size();
  std::stable_sort(comparison.gaps.begin(), comparison.gaps.end(),
                   [](const SharedGap& a, const SharedGap& b) { return a.gain > b.gain; });
  for (const std::string& library : librariesOf(one.data, other.data)) {
    for (const ReadKind kind : {ReadKind::kExact, ReadKind::kEstimate, ReadKind::kContained}) {
      comparison.kinds.push_back(
          {library, kind, countOf(one.data, library, kind), countOf(other.data, library, kind)});
    }
  }
  return comparison;
}

}  // namespace velk::report
