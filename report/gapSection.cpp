#include <algorithm>
#include <array>

#include "report/palette.h"
#include "report/sections.h"
#include "report/tally.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

std::string panel(const char* classes, const char* name, const std::string& hint,
                  const std::string& picture) {
  return std::string("<div class=\"panel ") + classes + "\"><h3>" + name +
         "</h3><p class=\"hint\">" + hint + "</p>" + picture + "</div>";
}

using Counts = std::array<ReasonCount, kReasons>;

std::string reasonBar(const Counts& counts) {
  std::vector<BarPart> parts;
  for (std::size_t reason = 1; reason < kReasons; ++reason) {
    const ReasonCount& count = counts[reason];
    std::string name = nameOf(static_cast<Reason>(reason));
    if (count.none > 0) {
      name += count.few > 0 ? " (" + countText(count.none) + " without reads)" : " (without reads)";
    }
    parts.push_back({reasonClass(static_cast<Reason>(reason)), name, count.none + count.few});
  }
  return stackedBar(parts);
}

uint64_t sumOf(const Counts& counts, uint64_t ReasonCount::*which) {
  uint64_t sum = 0;
  for (std::size_t reason = 1; reason < kReasons; ++reason) sum += counts[reason].*which;
  return sum;
}

std::string reasonsPanel(const Findings& findings) {
  const Counts counts = tallyOf(findings).reasons;
  const uint64_t none = sumOf(counts, &ReasonCount::none);
  const uint64_t few = sumOf(counts, &ReasonCount::few);
  std::string html =
      "<div class=\"panel wide\" id=\"reasons\"><h3>Why gaps have few reads or none</h3>";
  if (none + few == 0) {
    return html +
           "<p class=\"hint\">All gaps have at least a quarter of the reads that depth and "
           "reach predict.</p></div>";
  }
  html += "<p class=\"hint\">" + countText(none) + " gaps without reads, and " + countText(few) +
          " with under a quarter of what is predicted, by reason:</p>" + reasonBar(counts);
  html += "<details class=\"more\"><summary>What the reasons mean</summary><dl class=\"hint\">";
  for (std::size_t n = 1; n < kReasons; ++n) {
    if (counts[n].none + counts[n].few == 0) continue;
    html += std::string("<dt><b>") + nameOf(static_cast<Reason>(n)) + "</b></dt><dd>" +
            explain(static_cast<Reason>(n)) + "</dd>";
  }
  return html + "</dl></details></div>";
}

std::string aboutPlaceholders(const RunData& data) {
  const bool hasSome = std::any_of(data.gaps.begin(), data.gaps.end(),
                                   [](const GapData& gap) { return gap.isPlaceholder; });
  return hasSome ? " Gaps of unknown length stand where the search takes their length to be." : "";
}

std::string lengthsPanel(const Findings& findings) {
  std::size_t withLength = 0;
  const std::string lengths = plotLengths(findings, withLength);
  return panel(
      "", "Length by pairs",
      countText(withLength) + " of " + countText(findings.gaps.size()) +
          " gaps are spanned by five pairs or more. Far from the line lie placeholders "
          "(blue) and wrong joins. Where few fragments are long enough to span a gap with both "
          "reads beside it, the implied length is far from sure.",
      lengths);
}

}  // namespace

std::string gapSection(const Findings& findings) {
  if (findings.gaps.empty()) {
    return "<section id=\"gaps\"><h2>Gaps</h2><p>The assembly has no gap.</p></section>";
  }
  std::string html = "<section id=\"gaps\"><h2>Gaps</h2><div class=\"panels\">";
  html += panel("wide", "Reads against length",
                findings.judge.canPredict()
                    ? "A dot a gap. The line is what depth and reach of the libraries predict "
                      "between long contigs. Gaps with few reads or none have the colour of their "
                      "reason, as below." +
                          aboutPlaceholders(findings.data)
                    : "A dot a gap.",
                plotReads(findings));
  if (findings.data.evidence) html += reasonsPanel(findings);
  if (!findings.data.isOfVelk) html += lengthsPanel(findings);
  if (findings.data.evidence) {
    html += panel("", "Depth beside the gaps",
                  "Reads within 500 bases of each gap. Twice the median is where a repeat may be "
                  "collapsed in the contigs.",
                  plotFlanks(findings));
  }
  if (!findings.data.reach.empty()) {
    html += panel("wide", "Covered by exact reads",
                  "How much of each gap exact reads cover from either side, gaps in falling order "
                  "of it.",
                  plotReach(findings));
  }
  return html + "</div></section>";
}

}  // namespace velk::report
