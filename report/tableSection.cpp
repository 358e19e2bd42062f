#include <algorithm>
#include <cmath>
#include <numeric>

#include "report/palette.h"
#include "report/sections.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

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
    html += "<span class=\"paper\"> On paper stand the first 100 rows.</span>";
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
