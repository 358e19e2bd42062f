#include "report/figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "report/palette.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;
using run::Side;

constexpr std::size_t kFew = 120;    // gaps, of which each is a larger dot
constexpr std::size_t kMany = 1500;  // gaps, of which each is a smaller one

// The frame of a plot with room for the names of its axes.
Frame frameOf(const Svg& svg) {
  return {54, 12, svg.width() - 14, svg.height() - 44};
}

// Bars between two bounds; their heights as shares of the highest.
struct Bar {
  double from;
  double to;
  double height;
};

void drawBars(Svg& svg, const Frame& frame, const Scale& x, const Scale& y,
              const std::vector<Bar>& bars, const std::string& classes) {
  std::string d;
  for (const Bar& bar : bars) {
    if (bar.height <= 0) continue;
    const double from = std::max(x.at(bar.from), frame.left);
    const double to = std::min(x.at(bar.to), frame.right);
    if (to <= from) continue;
    d += "M" + brief(from) + " " + brief(frame.bottom) + "V" + brief(y.at(bar.height)) + "H" +
         brief(to) + "V" + brief(frame.bottom) + "z";
  }
  svg.path(d, classes);
}

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

double highest(const std::vector<Bar>& bars) {
  double most = 0;
  for (const Bar& bar : bars) most = std::max(most, bar.height);
  return most;
}

std::string dotClasses(std::size_t dots, const std::string& more) {
  const char* const size = dots > kMany ? " dense " : dots <= kFew ? " large " : " ";
  return std::string("dots") + size + more;
}

// The smallest and the largest of what is taken in, at first nothing.
struct Span {
  double low = 0;
  double high = 0;

  void take(double value) {
    low = low == 0 ? value : std::min(low, value);
    high = std::max(high, value);
  }
};

// The curve of what is predicted, times `share`.
void drawPrediction(Svg& svg, const Findings& findings, const Scale& x, const Scale& y,
                    const Span& lengths, double share) {
  constexpr int kSteps = 90;
  std::string d;
  for (int n = 0; n <= kSteps; ++n) {
    const double length =
        lengths.low * std::pow(lengths.high / lengths.low, double{1} * n / kSteps);
    const double reads = share * findings.judge.expectedAt(length);
    d += (d.empty() ? "M" : "L") + brief(x.at(length)) + " " + brief(y.at(reads));
  }
  svg.path(d, share == 1 ? "curve" : "curve quarter");
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
  const Scale y = Scale::linear(0, highest(bars), frame.bottom, frame.top + 8);
  std::vector<Bar> others;
  for (std::size_t o = 0; o < library.inserts.size(); ++o) {
    if (&library.inserts[o] == &bins) continue;
    const std::vector<Bar> more = barsOf(library.inserts[o], range);
    others.insert(others.end(), more.begin(), more.end());
  }
  drawBars(svg, frame, x, y, bars, "bars " + libraryClass(number));
  drawBars(svg, frame, x, y, others, "bars other");
  svg.line(frame.left, frame.bottom, frame.right, frame.bottom, "axis");
  for (const Tick& tick : x.ticks(7)) {
    svg.line(x.at(tick.value), frame.bottom, x.at(tick.value), frame.bottom + 4, "axis");
    svg.text(x.at(tick.value), frame.bottom + 17,
             countText(static_cast<uint64_t>(std::llround(tick.value))), "middle", "tick");
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

std::string plotReads(const Findings& findings) {
  Svg svg(1040, 400, "Reads of each gap against its length");
  const Frame frame = frameOf(svg);
  Span lengths;
  Span reads;
  bool hasEmpty = false;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    lengths.take(std::max<double>(1, static_cast<double>(findings.data.gaps[gap].length)));
    const auto belonging = static_cast<double>(findings.gaps[gap].belonging);
    hasEmpty = hasEmpty || belonging == 0;
    if (belonging > 0) reads.take(belonging);
  }
  for (const double length : {lengths.low, lengths.high}) {
    reads.take(std::max(1.0, findings.judge.expectedAt(length)));
    reads.take(std::max(1.0, kFewShare * findings.judge.expectedAt(length)));
  }
  lengths = {lengths.low / 1.3, std::max(lengths.high * 1.3, lengths.low * 10)};
  const Scale x = Scale::logarithmic(lengths.low, lengths.high, frame.left, frame.right);
  const Scale y = Scale::logarithmic(hasEmpty ? 0.5 : reads.low / 1.5, reads.high * 1.5,
                                     frame.bottom - 10, frame.top);
  drawAxes(svg, frame, x, y, "length of the gap, bases", "reads that belong in it");
  if (hasEmpty) svg.text(frame.left - 8, frame.bottom - 6, "0", "end", "tick");
  std::array<Dots, kReasons> dots;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    const Judgement& judged = findings.gaps[gap];
    const auto length = static_cast<double>(findings.data.gaps[gap].length);
    dots[static_cast<std::size_t>(judged.reason)].add(x.at(length),
                                                      y.at(static_cast<double>(judged.belonging)));
  }
  for (std::size_t reason = 0; reason < kReasons; ++reason) {
    svg.path(dots[reason].path(),
             dotClasses(findings.gaps.size(),
                        reasonClass(static_cast<Reason>(reason)) + (reason == 0 ? "" : " few")));
  }
  drawPrediction(svg, findings, x, y, lengths, 1);
  drawPrediction(svg, findings, x, y, lengths, kFewShare);
  return std::move(svg).finish();
}

std::string plotLengths(const Findings& findings, std::size_t& gaps) {
  Svg svg(500, 330, "Length by the pairs that span a gap, against the length that is written");
  const Frame frame = frameOf(svg);
  Span lengths;
  gaps = 0;
  for (const GapData& gap : findings.data.gaps) {
    if (!gap.implied) continue;
    ++gaps;
    for (const double length :
         {static_cast<double>(*gap.implied), static_cast<double>(gap.to - gap.from)}) {
      lengths.take(std::max(length, 1.0));
    }
  }
  const double low = std::max(lengths.low, 1.0) / 1.5;
  const double high = std::max(lengths.high * 1.5, 10 * low);
  const Scale x = Scale::logarithmic(low, high, frame.left, frame.right);
  const Scale y = Scale::logarithmic(low, high, frame.bottom, frame.top);
  drawAxes(svg, frame, x, y, "written length, bases", "implied length, bases");
  svg.line(x.at(low), y.at(low), x.at(high), y.at(high), "same");
  Dots plain;
  Dots placeholders;
  for (const GapData& gap : findings.data.gaps) {
    if (!gap.implied) continue;
    (gap.isPlaceholder ? placeholders : plain)
        .add(x.at(static_cast<double>(gap.to - gap.from)), y.at(static_cast<double>(*gap.implied)));
  }
  svg.path(plain.path(), dotClasses(gaps, ""));
  svg.path(placeholders.path(), dotClasses(gaps, "placeholder"));
  if (gaps == 0) {
    svg.text(250, 150, "No gap is spanned by five pairs or more.", "middle", "note");
  }
  return std::move(svg).finish();
}

std::string plotFlanks(const Findings& findings) {
  constexpr double kWidest = 4;  // times the median; the last bar has all beyond
  constexpr double kStep = 0.1;
  Svg svg(500, 330, "Depth of reads in the flanks of the gaps, as multiples of the median");
  const Frame frame = frameOf(svg);
  std::vector<Bar> bars;
  for (int n = 0; n < std::lround(kWidest / kStep); ++n) {
    bars.push_back({n * kStep, (n + 1) * kStep - 0.01, 0});
  }
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    const double depth = findings.judge.flankDepth(gap);
    if (depth < 0) continue;
    const auto bar = static_cast<std::size_t>(std::min(depth, kWidest - kStep / 2) / kStep);
    ++bars[bar].height;
  }
  const Scale x = Scale::linear(0, kWidest, frame.left, frame.right);
  const Scale y = Scale::linear(0, std::max(5.0, highest(bars)), frame.bottom, frame.top);
  drawAxes(svg, frame, x, y, "depth of the flanks, times the median (the last bar: and more)",
           "gaps");
  drawBars(svg, frame, x, y, bars, "bars");
  for (const double mark : {1.0, 2.0}) {
    svg.line(x.at(mark), frame.top, x.at(mark), frame.bottom, "same");
  }
  return std::move(svg).finish();
}

Reached reachedOf(const RunData& data, std::size_t gap) {
  const auto length = static_cast<double>(data.gaps[gap].to - data.gaps[gap].from);
  if (!data.evidence || length == 0) return {};
  const double front = data.evidence->reach(gap, Side::kFront) / length;
  const double behind = data.evidence->reach(gap, Side::kBehind) / length;
  return {std::min(1.0, front), std::min(1.0, behind)};
}

std::string plotReach(const Findings& findings) {
  Svg svg(1040, 250, "Share of each gap that exact reads cover from either side");
  const Frame frame = frameOf(svg);
  const Scale x = Scale::linear(0, 100, frame.left, frame.right);
  const Scale y = Scale::linear(0, 100, frame.bottom, frame.top);
  drawAxes(svg, frame, x, y, "share of the gaps, %", "covered by exact reads, %");
  std::vector<double> shares;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    const Reached reached = reachedOf(findings.data, gap);
    shares.push_back(std::min(1.0, reached.front + reached.behind));
  }
  std::sort(shares.begin(), shares.end(), std::greater<>());
  constexpr int kSteps = 200;
  const int steps = static_cast<int>(std::min<std::size_t>(kSteps, shares.size()));
  std::vector<Bar> bars;
  for (int n = 0; n < steps; ++n) {
    const std::size_t at =
        shares.size() * static_cast<std::size_t>(2 * n + 1) / static_cast<std::size_t>(2 * steps);
    bars.push_back({100.0 * n / steps, 100.0 * (n + 1) / steps, 100 * shares[at]});
  }
  drawBars(svg, frame, x, y, bars, "bars");
  return std::move(svg).finish();
}

}  // namespace velk::report
