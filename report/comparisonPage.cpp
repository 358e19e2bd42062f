// The page that compares two runs.
#include <algorithm>
#include <cmath>

#include "report/comparison.h"
#include "report/figures.h"
#include "report/page.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

constexpr std::size_t kMostRows = 100;  // gaps that gained, and as many that lost

std::string signedText(int64_t number) {
  const std::string size = countText(static_cast<uint64_t>(std::llabs(number)));
  return number == 0 ? "0" : (number > 0 ? "+" : "&minus;") + size;
}

int64_t difference(uint64_t one, uint64_t other) {
  return static_cast<int64_t>(other) - static_cast<int64_t>(one);
}

std::string tile(const std::string& figure, const char* what, const std::string& more) {
  return "<div class=\"tile\"><b>" + figure + "</b><span>" + what + "</span><small>" + more +
         "</small></div>";
}

std::string tiles(const Comparison& comparison, const Findings& one, const Findings& other) {
  std::string html = "<div class=\"tiles\">";
  html += tile(signedText(difference(one.data.readsFound, other.data.readsFound)), "reads found",
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

std::string kindTable(const Comparison& comparison) {
  std::string html =
      "<section id=\"kinds\"><h2>By library and kind</h2><div class=\"panel scroll rows\">"
      "<table class=\"sorts\"><thead><tr><th class=word>Library<th class=word>Kind<th>First"
      "<th>Second<th>Change</tr></thead><tbody>";
  for (const KindCounts& counts : comparison.kinds) {
    html += "<tr><td class=\"word name\">" + named(counts.library, 60) + "<td class=word>" +
            kindClass(counts.kind) + "<td>" + countText(counts.one) + "<td>" +
            countText(counts.other) +
            "<td data-v=" + std::to_string(difference(counts.one, counts.other)) + ">" +
            signedText(difference(counts.one, counts.other)) + "</tr>\n";
  }
  return html + "</tbody></table></div></section>";
}

std::string plotBoth(const Comparison& comparison, const Findings& one, const Findings& other) {
  Svg svg(1040, 420, "Reads of each gap in the second run against the first");
  const Frame frame{54, 12, svg.width() - 14, svg.height() - 44};
  double most = 10;
  for (const SharedGap& gap : comparison.gaps) {
    most = std::max({most, static_cast<double>(one.gaps[gap.one].belonging),
                     static_cast<double>(other.gaps[gap.other].belonging)});
  }
  const Scale x = Scale::logarithmic(0.5, most * 1.3, frame.left, frame.right);
  const Scale y = Scale::logarithmic(0.5, most * 1.3, frame.bottom, frame.top);
  drawAxes(svg, frame, x, y, "reads in the first run (left edge: none)",
           "reads in the second (lower edge: none)");
  svg.line(x.at(0.5), y.at(0.5), x.at(most * 1.3), y.at(most * 1.3), "same");
  Dots dots;
  for (const SharedGap& gap : comparison.gaps) {
    dots.add(x.at(static_cast<double>(one.gaps[gap.one].belonging)),
             y.at(static_cast<double>(other.gaps[gap.other].belonging)));
  }
  svg.path(dots.path(), comparison.gaps.size() > 1500 ? "dots dense" : "dots");
  return std::move(svg).finish();
}

std::string rowOf(const SharedGap& gap, const Findings& one, const Findings& other) {
  const Judgement& before = one.gaps[gap.one];
  const Judgement& after = other.gaps[gap.other];
  const GapData& facts = one.data.gaps[gap.one];
  std::string html = "<tr><td>" + std::to_string(gap.one) + "<td>" + std::to_string(gap.other) +
                     "<td class=\"word name\">" + named(one.data.scaffoldOf(facts), 60) +
                     "<td data-v=" + std::to_string(facts.from) + ">" + placeText(facts) + "<td>" +
                     countText(before.belonging) + "<td>" + countText(after.belonging) +
                     "<td data-v=" + std::to_string(gap.gain) + ">" + signedText(gap.gain);
  for (const Judgement* judged : {&before, &after}) {
    html += "<td class=\"word why\">";
    if (judged->reason == Reason::kEnough) continue;
    html += "<i class=" + reasonClass(judged->reason) + "></i>" + nameOf(judged->reason);
  }
  return html + "</tr>\n";
}

std::string gapTable(const Comparison& comparison, const Findings& one, const Findings& other) {
  std::string html =
      "<section id=\"table\"><h2>Gaps that gained and lost most</h2><div class=\"panel scroll "
      "rows\"><table class=\"sorts\"><thead><tr><th>Gap<th>There<th class=word>Scaffold"
      "<th>Position<th>First<th>Second<th>Change<th class=word>Why few, first<th class=word>Why "
      "few, second</tr></thead><tbody>";
  const std::vector<SharedGap>& gaps = comparison.gaps;
  for (std::size_t n = 0; n < gaps.size(); ++n) {
    const bool isShown = n < kMostRows || n + kMostRows >= gaps.size();
    if (isShown && gaps[n].gain != 0) html += rowOf(gaps[n], one, other);
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
      "</h1><p class=\"about\">Gaps are the same at the same place of a scaffold.</p><nav>"
      "<a href=\"#kinds\">By library and kind</a><a href=\"#both\">Reads</a>"
      "<a href=\"#table\">Gaps</a></nav></div></header>\n<main><p class=\"lead\">The second run "
      "found " +
      countText(other.data.readsFound) + " reads, the first one " + countText(one.data.readsFound) +
      "; " + countText(comparison.gained) + " gaps gained reads, and " +
      countText(comparison.lost) + " lost some.</p>";
  html += tiles(comparison, one, other) + kindTable(comparison);
  html +=
      "<section id=\"both\"><h2>Reads of both runs</h2><div class=\"panel\"><p class=\"hint\">A "
      "dot a gap; above the line the second run has more.</p>" +
      plotBoth(comparison, one, other) + "</div></section>";
  return html + gapTable(comparison, one, other) + pageEnd();
}

}  // namespace velk::report
