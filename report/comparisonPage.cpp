// The page that compares two runs.
#include <algorithm>
#include <limits>

#include "report/comparison.h"
#include "report/figures.h"
#include "report/page.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

constexpr std::size_t kMostChanges = 100;  // gaps that gained, and as many that lost

constexpr const char* kMinus = "&minus;";

int64_t difference(uint64_t one, uint64_t other) {
  return static_cast<int64_t>(other) - static_cast<int64_t>(one);
}

std::string tile(const std::string& figure, const char* what, const std::string& more) {
  return "<div class=\"tile\"><b>" + figure + "</b><span>" + what + "</span><small>" + more +
         "</small></div>";
}

std::string tiles(const Comparison& comparison, const Findings& one, const Findings& other) {
  std::string html = "<div class=\"tiles\">";
  html += tile(signedText(difference(one.data.readsFound, other.data.readsFound), kMinus),
               "reads found",
               countText(one.data.readsFound) + ", then " + countText(other.data.readsFound));
  html += tile(countText(comparison.gaps.size()), "gaps of both runs",
               countText(comparison.onlyOne) + " of the first alone, " +
                   countText(comparison.onlyOther) + " of the second");
  html += tile(countText(comparison.gained), "gaps gained reads",
               countText(comparison.filled) + " of them had none");
  html += tile(countText(comparison.lost), "gaps lost reads",
               countText(comparison.emptied) + " of them have none left");
  return html + "</div>";
}

// The reads that were gained or lost, and at how many gaps.
std::string changeCells(int64_t reads, uint64_t gaps) {
  return "<td data-v=" + std::to_string(reads) + ">" + signedText(reads, kMinus) + "<td>" +
         countText(gaps);
}

std::string kindTable(const Comparison& comparison) {
  std::string html =
      "<section id=\"kinds\"><h2>By library and kind</h2><p class=\"hint\">Reads at all gaps of "
      "either run; and how many more or fewer the second run has at gaps of both runs, gap by "
      "gap.</p><div class=\"panel scroll rows\"><table class=\"sorts\"><thead><tr><th "
      "class=word>Library<th class=word>Kind<th>First run<th>Second run<th>Change<th>Gained<th>at "
      "gaps<th>Lost<th>at gaps</tr></thead><tbody>";
  for (const KindCounts& counts : comparison.kinds) {
    html += "<tr><td class=\"word name\">" + named(comparison.libraries[counts.library].name, 60) +
            "<td class=word>" + kindClass(counts.kind) + "<td>" + countText(counts.one) + "<td>" +
            countText(counts.other) +
            "<td data-v=" + std::to_string(difference(counts.one, counts.other)) + ">" +
            signedText(difference(counts.one, counts.other), kMinus) +
            changeCells(static_cast<int64_t>(counts.gained.reads), counts.gained.gaps) +
            changeCells(-static_cast<int64_t>(counts.lost.reads), counts.lost.gaps) + "</tr>\n";
  }
  return html + "</tbody></table></div></section>";
}

std::string plotBoth(const Comparison& comparison, const Findings& one, const Findings& other) {
  Svg svg(1040, 420, "Reads of each gap in the second run against the first");
  const Frame frame{54, 12, svg.width() - 14, svg.height() - 44};
  double most = 1;
  double least = std::numeric_limits<double>::infinity();
  for (const SharedGap& gap : comparison.gaps) {
    for (const uint64_t reads : {one.gaps[gap.one].belonging, other.gaps[gap.other].belonging}) {
      most = std::max(most, static_cast<double>(reads));
      least = std::min(least, static_cast<double>(reads));
    }
  }
  const double high = std::max(most * 1.3, 10.0);
  const double low = std::clamp(least / 1.5, 0.5, high / 10);
  const Scale x = Scale::logarithmic(low, high, frame.left, frame.right);
  const Scale y = Scale::logarithmic(low, high, frame.bottom, frame.top);
  const bool hasEmpty = least == 0;
  drawAxes(svg, frame, x, y,
           hasEmpty ? "reads in the first run (left edge: none)" : "reads in the first run",
           hasEmpty ? "reads in the second (lower edge: none)" : "reads in the second");
  svg.line(x.at(low), y.at(low), x.at(high), y.at(high), "same");
  Dots dots;
  for (const SharedGap& gap : comparison.gaps) {
    dots.add(x.at(static_cast<double>(one.gaps[gap.one].belonging)),
             y.at(static_cast<double>(other.gaps[gap.other].belonging)));
  }
  svg.path(dots.path(), dotClasses(comparison.gaps.size(), ""));
  return std::move(svg).finish();
}

std::string libraryName(const std::string& name) {
  return named(name, 60);
}

// Of a gap that has no change: nothing.
std::string rowOf(const Comparison& comparison, const SharedGap& gap, const Findings& one,
                  const Findings& other) {
  const std::vector<KindChange> changes = changesAt(comparison, gap, one, other);
  if (changes.empty()) return "";
  const Judgement& before = one.gaps[gap.one];
  const Judgement& after = other.gaps[gap.other];
  const GapData& facts = one.data.gaps[gap.one];
  std::string html = "<tr><td>" + std::to_string(gap.one) + "<td>" + std::to_string(gap.other) +
                     "<td class=\"word name\">" + named(one.data.scaffoldOf(facts), 60) +
                     "<td data-v=" + std::to_string(facts.from) + ">" + placeText(facts) + "<td>" +
                     countText(before.belonging) + "<td>" + countText(after.belonging) +
                     "<td data-v=" + std::to_string(gap.gain) + ">" + signedText(gap.gain, kMinus) +
                     "<td class=\"word changes\">" +
                     changesText(comparison, changes, kMinus, libraryName);
  for (const Judgement* judged : {&before, &after}) {
    html += "<td class=\"word why\">";
    if (judged->reason == Reason::kEnough) continue;
    html += "<i class=" + reasonClass(judged->reason) + "></i>" + nameOf(judged->reason);
  }
  return html + "</tr>\n";
}

std::string gapTable(const Comparison& comparison, const Findings& one, const Findings& other) {
  std::string html =
      "<section id=\"table\"><h2>Gaps that gained and lost most</h2><p class=\"hint\">Reads that "
      "belong in a gap, exact ones and estimates. At most 100 gaps that gained, and 100 that "
      "lost.</p><div class=\"panel scroll rows\"><table class=\"sorts compared\"><thead><tr>"
      "<th>Gap, first<th>Gap, second<th class=word>Scaffold<th>Position<th>First run<th>Second "
      "run<th>Change<th class=word>By library and kind<th class=word>Why few, first<th "
      "class=word>Why few, second</tr></thead><tbody>";
  const std::vector<SharedGap>& gaps = comparison.gaps;
  for (std::size_t n = 0; n < gaps.size(); ++n) {
    const bool isShown = n < kMostChanges || n + kMostChanges >= gaps.size();
    if (isShown) html += rowOf(comparison, gaps[n], one, other);
  }
  return html + "</tbody></table></div></section>";
}

}  // namespace

std::string comparisonPage(const Findings& one, const Findings& other, const RunNames& names) {
  const Comparison comparison = compare(one, other);
  std::string html = pageHead(names[0] + " and " + names[1]) + "<body>\n";
  html +=
      "<header><div>" + std::string(kBrand) + "<h1>" + named(names[0], 100) + " and " +
      named(names[1], 100) +
      "</h1><p class=\"about\">Gaps are the same if they lie at the same place of a "
      "scaffold.</p><nav>"
      "<a href=\"#kinds\">By library and kind</a><a href=\"#both\">Reads</a>"
      "<a href=\"#table\">Gaps</a></nav></div></header>\n<main><p class=\"lead\">The second run "
      "found " +
      countText(other.data.readsFound) + " reads, the first one " + countText(one.data.readsFound) +
      "; " + countText(comparison.gained) + (comparison.gained == 1 ? " gap" : " gaps") +
      " gained reads, and " + countText(comparison.lost) + " lost some.</p>";
  html += tiles(comparison, one, other) + kindTable(comparison);
  html +=
      "<section id=\"both\"><h2>Reads of both runs</h2><div class=\"panel\"><p class=\"hint\">"
      "Each dot is a gap; above the line, the second run has more.</p>" +
      plotBoth(comparison, one, other) + "</div></section>";
  return html + gapTable(comparison, one, other) + pageEnd();
}

}  // namespace velk::report
