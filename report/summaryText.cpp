#include "report/summaryText.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "report/figures.h"
#include "report/html.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

// Characters, not bytes.
std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  }));
}

}  // namespace

std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
  std::string lines;
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (!line.empty() && lengthOf(line) + 1 + lengthOf(word) > width) {
      lines += line + "\n";
      line = std::string(indent, ' ') + word;
    } else {
      line += (line.empty() ? "" : " ") + word;
    }
    at = end + 1;
  }
  return lines + line + "\n";
}

std::string padded(const std::string& text, std::size_t width, bool isRight) {
  const std::string room(width - std::min(width, lengthOf(text)), ' ');
  return isRight ? room + text : text + room;
}

namespace {

using run::countText;

constexpr std::size_t kFirstGaps = 10;

// A bar of marks, as long as its share of the largest.
std::string barOf(uint64_t number, uint64_t most, std::size_t width) {
  const double share =
      static_cast<double>(number) / static_cast<double>(std::max<uint64_t>(1, most));
  return std::string(static_cast<std::size_t>(std::ceil(share * static_cast<double>(width))), '#');
}

std::string reasonLines(const Tally& tally, std::size_t width) {
  constexpr std::size_t kName = 22;
  constexpr std::size_t kNumber = 10;
  uint64_t most = 0;
  for (std::size_t n = 1; n < kReasons; ++n) {
    most = std::max(most, tally.reasons[n].none + tally.reasons[n].few);
  }
  if (most == 0) return "\nAll gaps have at least a quarter of the reads that are predicted.\n";
  std::string text = "\nWhy gaps have few reads or none\n";
  text += "  " + padded("", kName, false) + padded("none", kNumber, true) +
          padded("few", kNumber, true) + "\n";
  const std::size_t taken = 2 + kName + 2 * kNumber + 2;
  const std::size_t room = std::min<std::size_t>(40, width - std::min(width, taken));
  for (std::size_t n = 1; n < kReasons; ++n) {
    const ReasonCount& count = tally.reasons[n];
    if (count.none + count.few == 0) continue;
    text += "  " + padded(nameOf(static_cast<Reason>(n)), kName, false) +
            padded(countText(count.none), kNumber, true) +
            padded(countText(count.few), kNumber, true);
    if (room > 4) text += "  " + barOf(count.none + count.few, most, room);
    text += "\n";
  }
  return text;
}

// The gaps that have least of what is predicted, the largest losses first.
std::vector<std::size_t> firstGaps(const std::vector<Judgement>& gaps) {
  std::vector<std::size_t> picked;
  for (std::size_t gap = 0; gap < gaps.size(); ++gap) {
    if (gaps[gap].reason != Reason::kEnough) picked.push_back(gap);
  }
  std::stable_sort(picked.begin(), picked.end(), [&](std::size_t one, std::size_t other) {
    const auto missing = [&](std::size_t gap) {
      return gaps[gap].expected - static_cast<double>(gaps[gap].belonging);
    };
    return missing(one) > missing(other);
  });
  picked.resize(std::min(kFirstGaps, picked.size()));
  return picked;
}

std::string gapLines(const Findings& findings, std::size_t width) {
  const std::vector<std::size_t> gaps = firstGaps(findings.gaps);
  if (gaps.empty()) return "";
  std::string text = "\nGaps to look at first\n";
  for (const std::size_t gap : gaps) {
    const GapData& facts = findings.data.gaps[gap];
    const Judgement& judged = findings.gaps[gap];
    std::string line = "  gap " + std::to_string(facts.number) + ", " +
                       cleaned(findings.data.scaffoldOf(facts), 30) + ":" +
                       std::to_string(facts.from + 1) + "-" + std::to_string(facts.to) + ", " +
                       countText(judged.belonging) +
                       (judged.belonging == 1 ? " read of about " : " reads of about ") +
                       countText(static_cast<uint64_t>(std::llround(judged.expected))) + ": " +
                       nameOf(judged.reason);
    if (!judged.figure.empty()) line += " (" + judged.figure + ")";
    text += "  " + wrapped(line.substr(2), width - std::min<std::size_t>(width, 2), 6);
  }
  return text;
}

}  // namespace

std::string summaryText(const Findings& findings, std::size_t width) {
  const RunData& data = findings.data;
  const Tally tally = tallyOf(findings);
  std::string first = cleaned(data.sample, 60) + ": found " + countText(data.readsFound);
  if (!data.isOfVelk) first += " of " + countText(data.readsSearched);
  first += " reads; " + countText(tally.withReads) + " of " + countText(data.gaps.size()) +
           " gaps have reads, " + countText(tally.medianReads) + " in the median";
  if (!data.reach.empty()) {
    first += "; " + countText(tally.covered) + (tally.covered == 1 ? " is" : " are") +
             " covered whole by exact reads";
  }
  std::string text = wrapped(first + ".", width, 0);
  for (const LibraryData& library : data.libraries) {
    std::string line = cleaned(library.name, 40) + ": found " + countText(library.readsFound);
    if (!data.isOfVelk) line += " of " + countText(library.readsSearched);
    if (library.arePairs && !data.isOfVelk) {
      line += ", insert size " + std::to_string(std::lround(library.insert)) + " +- " +
              std::to_string(std::lround(library.spread)) + ", " + cleaned(library.orientation, 4);
    }
    text += "  " + wrapped(line, width - std::min<std::size_t>(width, 2), 4);
  }
  for (const std::string& warning : data.warnings) {
    text += wrapped("[WARNING]: " + cleaned(warning, 400), width, 2);
  }
  return text + (data.evidence ? reasonLines(tally, width) + gapLines(findings, width) : "");
}

}  // namespace velk::report
