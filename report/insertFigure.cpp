// The histogram of the insert sizes of a library.
#include <algorithm>
#include <cmath>

#include "report/figures.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

// What lies between the smallest and the largest of all, but for the outermost.
struct Range {
  double low;
  double high;
};

Range middleOf(const std::vector<InsertBin>& bins) {
  constexpr double kOutside = 0.005;  // share of the pairs on each side
  uint64_t pairs = 0;
  for (const InsertBin& bin : bins) pairs += bin.pairs;
  const auto least = static_cast<double>(pairs) * kOutside;
  double seen = 0;
  Range range{0, 0};
  for (const InsertBin& bin : bins) {
    const double before = seen;
    seen += static_cast<double>(bin.pairs);
    if (before <= least) range.low = static_cast<double>(bin.from);
    if (seen >= static_cast<double>(pairs) - least) {
      range.high = static_cast<double>(bin.to);
      break;
    }
  }
  return range;
}

// Bins as pairs a base, at most some tens of bars.
std::vector<Bar> barsOf(const std::vector<InsertBin>& bins, const Range& range) {
  constexpr double kBars = 70;
  const double width = std::max(1.0, (range.high - range.low) / kBars);
  std::vector<Bar> bars;
  for (const InsertBin& bin : bins) {
    const auto from = static_cast<double>(bin.from);
    const auto to = static_cast<double>(bin.to);
    if (bars.empty() || from >= bars.back().from + width) bars.push_back({from, to, 0});
    bars.back().to = to;
    bars.back().height += static_cast<double>(bin.pairs);
  }
  for (Bar& bar : bars) bar.height /= bar.to - bar.from;
  return bars;
}

const std::vector<InsertBin>& mainInserts(const LibraryData& library) {
  return library.inserts[library.orientation == "RF" ? 1 : 0];
}

}  // namespace

std::string plotInserts(const LibraryData& library, std::size_t number) {
  Svg svg(500, 190, "Insert sizes of library " + cleaned(library.name, 60));
  const Frame frame{14, 14, svg.width() - 14, svg.height() - 42};
  const std::vector<InsertBin>& bins = mainInserts(library);
  const double given = library.insert;
  Range range = middleOf(bins);
  if (bins.empty()) range = {std::max(0.0, given - 4 * library.spread), given + 4 * library.spread};
  range.low = std::min(range.low, given - 3 * library.spread);
  range.high = std::max(range.high, given + 3 * library.spread);
  const Scale x = Scale::linear(std::max(0.0, range.low), range.high, frame.left, frame.right);
  const std::vector<Bar> bars = barsOf(bins, range);
  const Scale y = Scale::linear(0, highest(bars), frame.bottom, frame.top + 18);
  std::vector<Bar> others;
  for (const std::vector<InsertBin>& ofOther : library.inserts) {
    if (&ofOther == &bins) continue;
    const std::vector<Bar> more = barsOf(ofOther, range);
    others.insert(others.end(), more.begin(), more.end());
  }
  drawBars(svg, frame, x, y, bars, "bars " + libraryClass(number));
  drawBars(svg, frame, x, y, others, "bars other");
  svg.line(frame.left, frame.bottom, frame.right, frame.bottom, "axis");
  for (const Tick& tick : x.ticks(7)) {
    svg.line(x.at(tick.value), frame.bottom, x.at(tick.value), frame.bottom + 4, "axis");
    const bool isAtEdge = x.at(tick.value) > frame.right - 12;
    svg.text(isAtEdge ? svg.width() : x.at(tick.value), frame.bottom + 17,
             countText(static_cast<uint64_t>(std::llround(tick.value))),
             isAtEdge ? "end" : "middle", "tick");
  }
  svg.text((frame.left + frame.right) / 2, frame.bottom + 36, "insert size, bases", "middle",
           "axis-name");
  const double at = x.at(given);
  svg.line(at, frame.top + 2, at, frame.bottom, "mark");
  const bool isRight = at < svg.width() * 0.6;
  svg.text(at + (isRight ? 6 : -6), frame.top + 10,
           library.insertSource + " " + countText(static_cast<uint64_t>(std::llround(given))),
           isRight ? "start" : "end", "mark-name");
  if (bins.empty()) {
    svg.text(frame.left, frame.bottom - 8, "No pair of the sample lies on one contig.", "start",
             "note");
  }
  return std::move(svg).finish();
}

}  // namespace velk::report
