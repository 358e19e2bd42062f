#include "report/comparison.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <tuple>

#include "report/figures.h"
#include "report/html.h"
#include "report/summaryText.h"
#include "run/terminal.h"

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

namespace {

using run::countText;

constexpr std::size_t kMostGaps = 10;  // that gained, and as many that lost

std::string signedText(int64_t number) {
  const std::string size = countText(static_cast<uint64_t>(std::llabs(number)));
  return number == 0 ? "0" : (number > 0 ? "+" : "-") + size;
}

std::string kindLines(const Comparison& comparison) {
  constexpr std::size_t kName = 24;
  constexpr std::size_t kNumber = 13;
  std::string text = "\n" + padded("Reads at gaps", kName + 11, false) +
                     padded("first", kNumber, true) + padded("second", kNumber, true) +
                     padded("change", kNumber, true) + "\n";
  for (const KindCounts& counts : comparison.kinds) {
    const auto change = static_cast<int64_t>(counts.other) - static_cast<int64_t>(counts.one);
    text += padded("  " + cleaned(counts.library, kName - 4), kName, false) +
            padded(kindClass(counts.kind), 11, false) +
            padded(countText(counts.one), kNumber, true) +
            padded(countText(counts.other), kNumber, true) +
            padded(signedText(change), kNumber, true) + "\n";
  }
  return text;
}

std::string gapLine(const SharedGap& gap, const Findings& one, const Findings& other) {
  const GapData& facts = one.data.gaps[gap.one];
  const Judgement& after = other.gaps[gap.other];
  std::string line =
      "gap " + std::to_string(gap.other) + ", " + cleaned(one.data.scaffoldOf(facts), 30) + ":" +
      std::to_string(facts.from + 1) + "-" + std::to_string(facts.to) + ", " +
      countText(one.gaps[gap.one].belonging) + " reads, then " + countText(after.belonging);
  if (after.reason != Reason::kEnough) line += std::string(": ") + nameOf(after.reason);
  return line;
}

}  // namespace

std::string comparisonText(const Findings& one, const Findings& other, std::size_t width) {
  const Comparison comparison = compare(one, other);
  const std::size_t room = width - std::min<std::size_t>(width, 2);
  std::string text =
      wrapped("found " + countText(one.data.readsFound) + " reads, then " +
                  countText(other.data.readsFound) + "; of " + countText(comparison.gaps.size()) +
                  " gaps of both runs " + countText(comparison.gained) + " gained reads (" +
                  countText(comparison.filled) + " had none), " + countText(comparison.lost) +
                  " lost some (" + countText(comparison.emptied) + " have none left); " +
                  countText(comparison.onlyOne) + " gaps are of the first run alone, " +
                  countText(comparison.onlyOther) + " of the second.",
              width, 0);
  text += kindLines(comparison);
  const std::vector<SharedGap>& gaps = comparison.gaps;
  const auto list = [&](const char* title, auto first, auto last, bool isGain) {
    std::string lines;
    for (std::size_t n = 0; first != last && n < kMostGaps; ++first, ++n) {
      if (isGain ? first->gain <= 0 : first->gain >= 0) break;
      lines += "  " + wrapped(gapLine(*first, one, other), room, 6);
    }
    if (!lines.empty()) text += std::string("\n") + title + "\n" + lines;
  };
  list("Gaps that gained most", gaps.begin(), gaps.end(), true);
  list("Gaps that lost most", gaps.rbegin(), gaps.rend(), false);
  return text;
}

}  // namespace velk::report
