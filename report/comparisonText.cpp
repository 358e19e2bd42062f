#include <algorithm>
#include <cstdlib>

#include "report/comparison.h"
#include "report/html.h"
#include "report/palette.h"
#include "report/textLines.h"
#include "run/terminal.h"

namespace velk::report {
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
