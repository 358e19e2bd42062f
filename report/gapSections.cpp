// The sections of the page about gaps.
#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "report/figures.h"
#include "report/page.h"
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
  html += "<p class=\"hint\">" + countText(none) + (none == 1 ? " gap" : " gaps") +
          " without reads, and " + countText(few) +
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
  return hasSome ? " Gaps of unknown length stand at the length that the search assumes." : "";
}

std::string lengthsPanel(const Findings& findings) {
  std::size_t withLength = 0;
  const std::string lengths = plotLengths(findings, withLength);
  return panel(
      "", "Length by pairs",
      countText(withLength) + " of " + countText(findings.gaps.size()) +
          (withLength == 1 ? " gaps is" : " gaps are") +
          " spanned by five pairs or more. Far from the line lie placeholders "
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
  html +=
      panel("wide", "Reads against length",
            findings.judge.canPredict()
                ? "Each dot is a gap. The line is what depth and reach of the libraries predict "
                  "between long contigs. Gaps with few reads or none have the colour of their "
                  "reason, as below." +
                      aboutPlaceholders(findings.data)
                : "Each dot is a gap.",
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
                  "How much of each gap exact reads cover from either side. Gaps stand in falling "
                  "order of it.",
                  plotReach(findings));
  }
  return html + "</div></section>";
}

namespace {

constexpr std::size_t kMostRows = 2000;
constexpr std::size_t kLeastWithReads = 200;  // of these rows, however many gaps have none
constexpr std::size_t kRowsOnPaper = 100;     // as page.css has it

// How a gap compares with what is predicted.
double shareOf(const Judgement& gap) {
  return static_cast<double>(gap.belonging) / std::max(gap.expected, 1.0);
}

// The gaps that are shown: those without reads first, then the poorest and the richest.
std::vector<std::size_t> pickRows(const std::vector<Judgement>& gaps) {
  std::vector<std::size_t> rows(gaps.size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  std::stable_sort(rows.begin(), rows.end(), [&](std::size_t one, std::size_t other) {
    if (gaps[one].hasReads() != gaps[other].hasReads()) return !gaps[one].hasReads();
    return gaps[one].hasReads() && shareOf(gaps[one]) < shareOf(gaps[other]);
  });
  if (rows.size() <= kMostRows) return rows;
  const auto empty = static_cast<std::size_t>(std::count_if(
      gaps.begin(), gaps.end(), [](const Judgement& gap) { return !gap.hasReads(); }));
  const std::size_t withReads = rows.size() - empty;
  const std::size_t shown = std::min(empty, kMostRows - std::min(withReads, kLeastWithReads));
  const std::size_t richest = (kMostRows - shown) / 2;
  const std::size_t poorest = kMostRows - shown - richest;
  std::vector<std::size_t> picked(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(shown));
  const auto first = rows.begin() + static_cast<std::ptrdiff_t>(empty);
  picked.insert(picked.end(), first, first + static_cast<std::ptrdiff_t>(poorest));
  picked.insert(picked.end(), rows.end() - static_cast<std::ptrdiff_t>(richest), rows.end());
  return picked;
}

std::string cell(const std::string& html) {
  return "<td>" + html;
}

std::string numberCell(uint64_t number) {
  return number == 0 ? "<td class=none>0" : "<td>" + countText(number);
}

// The gap as a bar, with what exact reads cover of it from either side.
std::string reachCell(const Reached& reached) {
  const double sum = std::min(1.0, reached.front + reached.behind);
  std::string html = "<td data-v=" + brief(100 * sum) + "><span class=reach>";
  html += "<i style=\"left:0;width:" + brief(100 * reached.front) + "%\"></i>";
  return html + "<i style=\"width:" + brief(100 * reached.behind) + "%\"></i></span>";
}

std::string rowOf(const Findings& findings, std::size_t number, bool isDrawn) {
  const RunData& data = findings.data;
  const GapData& gap = data.gaps[number];
  const Judgement& judged = findings.gaps[number];
  const std::string id = std::to_string(gap.number);
  const char* const plain = judged.hasReads() ? "with reads" : "without reads";
  std::string html =
      std::string("<tr data-why=\"") + (data.evidence ? nameOf(judged.reason) : plain) + "\"><td>";
  html += isDrawn ? "<a href=#gap-" + id + ">" + id + "</a>" : id;
  html += "<td class=\"word name\">" + named(data.scaffoldOf(gap), 60);
  html += "<td data-v=" + std::to_string(gap.from) + ">" + placeText(gap);
  html += cell(countText(gap.to - gap.from));
  if (!data.isOfVelk) {
    html += gap.implied ? cell((*gap.implied < 0 ? "-" : "") +
                               countText(static_cast<uint64_t>(std::abs(*gap.implied))))
                        : "<td class=none>.";
  }
  html += numberCell(judged.belonging);
  html += numberCell(data.count(number, ReadKind::kExact));
  html += numberCell(data.count(number, ReadKind::kContained));
  if (data.evidence) {
    html += cell(countText(static_cast<uint64_t>(std::llround(judged.expected))));
    const double depth = findings.judge.flankDepth(number);
    html += depth < 0 ? "<td class=none>." : cell(brief(depth));
  }
  if (!data.reach.empty()) html += reachCell(reachedOf(data, number));
  if (!data.evidence) return html;
  html += "<td class=\"word why\">";
  if (judged.reason == Reason::kEnough) return html;
  html += "<i class=" + reasonClass(judged.reason) + "></i>" + nameOf(judged.reason);
  return judged.figure.empty() ? html : html + "<small>" + judged.figure + "</small>";
}

}  // namespace

std::string placeText(const GapData& gap) {
  return countText(gap.from + 1) + "&ndash;" + countText(gap.to);
}

std::string tableSection(const Findings& findings, const std::set<std::size_t>& drawn) {
  const std::vector<std::size_t> rows = pickRows(findings.gaps);
  const RunData& data = findings.data;
  const std::size_t all = findings.gaps.size();
  const std::string measured = findings.judge.canPredict() ? ", measured by what is predicted" : "";
  std::string html = "<section id=\"table\"><h2>Gap by gap</h2><p class=\"hint\">";
  if (rows.size() < all) {
    html += "The " + countText(rows.size()) + " of " + countText(all) +
            " gaps that stand out: without reads first, then the poorest and the richest" +
            measured + ". All are in " + (data.isOfVelk ? "the gap report. " : "gaps.tsv. ");
  } else {
    html += "Gaps without reads first, then from poor to rich" + measured + ". ";
  }
  html += "Positions count from 1.";
  if (rows.size() > kRowsOnPaper) {
    html += "<span class=\"paper\"> On paper stand only the first 100 rows.</span>";
  }
  html +=
      "</p><div class=\"panel scroll rows\"><table class=\"sorts filters-too\">"
      "<thead><tr><th>Gap<th class=word>Scaffold<th>Position<th>Length";
  if (!data.isOfVelk) html += "<th>By pairs";
  html += "<th>Reads<th>Exact<th>Contained";
  if (data.evidence) html += "<th>Predicted<th>Flanks";
  if (!data.reach.empty()) html += "<th>Covered";
  if (data.evidence) html += "<th class=word>Why few or none";
  html += "</tr></thead><tbody>";
  for (const std::size_t row : rows) html += rowOf(findings, row, drawn.contains(row)) + "</tr>\n";
  return html + "</tbody></table></div></section>";
}

}  // namespace velk::report
