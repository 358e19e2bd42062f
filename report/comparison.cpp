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

std::vector<SharedLibrary> librariesOf(const RunData& one, const RunData& other) {
  std::vector<SharedLibrary> libraries;
  for (std::size_t l = 0; l < one.libraries.size(); ++l) {
    libraries.push_back({one.libraries[l].name, l, {}});
  }
  for (std::size_t l = 0; l < other.libraries.size(); ++l) {
    const std::string& name = other.libraries[l].name;
    const auto same = std::find_if(libraries.begin(), libraries.end(),
                                   [&](const SharedLibrary& each) { return each.name == name; });
    if (same == libraries.end()) {
      libraries.push_back({name, {}, l});
    } else {
      same->other = l;
    }
  }
  return libraries;
}

// Nothing of a library that the run does not have.
uint64_t countAt(const RunData& data, std::size_t gap, std::optional<std::size_t> library,
                 ReadKind kind) {
  return library ? data.count(gap, *library, kind) : 0;
}

uint64_t countOf(const RunData& data, std::optional<std::size_t> library, ReadKind kind) {
  uint64_t sum = 0;
  for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) {
    sum += countAt(data, gap, library, kind);
  }
  return sum;
}

KindCounts countsOf(const Comparison& comparison, std::size_t number, ReadKind kind,
                    const RunData& one, const RunData& other) {
  const SharedLibrary& library = comparison.libraries[number];
  KindCounts counts{number, kind, countOf(one, library.one, kind),
                    countOf(other, library.other, kind)};
  for (const SharedGap& gap : comparison.gaps) {
    const uint64_t before = countAt(one, gap.one, library.one, kind);
    const uint64_t after = countAt(other, gap.other, library.other, kind);
    if (before == after) continue;
    Change& change = after > before ? counts.gained : counts.lost;
    change.reads += after > before ? after - before : before - after;
    ++change.gaps;
  }
  return counts;
}

constexpr std::array kKinds{ReadKind::kExact, ReadKind::kEstimate, ReadKind::kContained,
                            ReadKind::kAnchor};

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
  comparison.libraries = librariesOf(one.data, other.data);
  for (std::size_t library = 0; library < comparison.libraries.size(); ++library) {
    for (const ReadKind kind : kKinds) {
      comparison.kinds.push_back(countsOf(comparison, library, kind, one.data, other.data));
    }
  }
  return comparison;
}

std::vector<KindChange> changesAt(const Comparison& comparison, const SharedGap& gap,
                                  const Findings& one, const Findings& other) {
  std::vector<KindChange> changes;
  for (const KindCounts& counts : comparison.kinds) {
    const SharedLibrary& library = comparison.libraries[counts.library];
    const uint64_t before = countAt(one.data, gap.one, library.one, counts.kind);
    const uint64_t after = countAt(other.data, gap.other, library.other, counts.kind);
    if (before == after) continue;
    changes.push_back(
        {counts.library, counts.kind, static_cast<int64_t>(after) - static_cast<int64_t>(before)});
  }
  return changes;
}

std::string signedText(int64_t number, const std::string& minus) {
  const std::string size = run::countText(static_cast<uint64_t>(std::llabs(number)));
  return number == 0 ? "0" : (number > 0 ? "+" : minus) + size;
}

std::string changesText(const Comparison& comparison, const std::vector<KindChange>& changes,
                        const std::string& minus, std::string (*nameOf)(const std::string&)) {
  std::string text;
  for (std::size_t n = 0; n < changes.size(); ++n) {
    const KindChange& change = changes[n];
    if (n > 0 && changes[n - 1].library == change.library) {
      text += ", ";
    } else {
      text += (n > 0 ? "; " : "") + nameOf(comparison.libraries[change.library].name) + ": ";
    }
    text += signedText(change.reads, minus) + " " + kindClass(change.kind);
  }
  return text;
}

namespace {

using run::countText;

constexpr std::size_t kMostGaps = 10;  // that gained, and as many that lost

// "+5 at 2".
std::string changeText(const Change& change, const char* sign) {
  if (change.gaps == 0) return "0";
  return sign + countText(change.reads) + " at " + countText(change.gaps);
}

std::string kindLines(const Comparison& comparison) {
  constexpr std::size_t kName = 18;
  constexpr std::size_t kKind = 9;
  constexpr std::size_t kNumber = 11;
  constexpr std::size_t kChange = 15;
  std::string text = "\n" + padded("Reads at gaps", kName + kKind, false) +
                     padded("first", kNumber, true) + padded("second", kNumber, true) +
                     padded("gained at gaps", kChange, true) +
                     padded("lost at gaps", kChange, true) + "\n";
  for (const KindCounts& counts : comparison.kinds) {
    text +=
        padded("  " + cleaned(comparison.libraries[counts.library].name, kName - 4), kName, false) +
        padded(kindClass(counts.kind), kKind, false) +
        padded(countText(counts.one), kNumber, true) +
        padded(countText(counts.other), kNumber, true) +
        padded(changeText(counts.gained, "+"), kChange, true) +
        padded(changeText(counts.lost, "-"), kChange, true) + "\n";
  }
  return text;
}

std::string shortName(const std::string& name) {
  return cleaned(name, 30);
}

std::string gapLine(const Comparison& comparison, const SharedGap& gap, const Findings& one,
                    const Findings& other) {
  const GapData& facts = one.data.gaps[gap.one];
  const Judgement& after = other.gaps[gap.other];
  std::string line =
      "gap " + std::to_string(gap.other) + ", " + cleaned(one.data.scaffoldOf(facts), 30) + ":" +
      std::to_string(facts.from + 1) + "-" + std::to_string(facts.to) + ", " +
      countText(one.gaps[gap.one].belonging) + " reads, then " + countText(after.belonging) + " (" +
      changesText(comparison, changesAt(comparison, gap, one, other), "-", shortName) + ")";
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
      lines += "  " + wrapped(gapLine(comparison, *first, one, other), room, 6);
    }
    if (!lines.empty()) text += std::string("\n") + title + "\n" + lines;
  };
  list("Gaps that gained most", gaps.begin(), gaps.end(), true);
  list("Gaps that lost most", gaps.rbegin(), gaps.rend(), false);
  return text;
}

}  // namespace velk::report
