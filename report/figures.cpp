#include "report/figures.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>

#include "report/svg.h"

namespace velk::report {
namespace {

constexpr std::size_t kFew = 120;    // gaps, of which each is a larger dot
constexpr std::size_t kMany = 1500;  // gaps, of which each is a smaller one

// The frame of a plot with room for the names of its axes.
Frame frameOf(const Svg& svg) {
  return {54, 12, svg.width() - 14, svg.height() - 44};
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

// The curve of what is predicted, times `share`, with its name at its end.
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
  const double end = share * findings.judge.expectedAt(lengths.high);
  svg.text(x.at(lengths.high) - 4, y.at(end) - 6, share == 1 ? "predicted" : "a quarter of it",
           "end", "curve-name");
}

}  // namespace

std::string dotClasses(std::size_t dots, const std::string& more) {
  const char* const size = dots > kMany ? " dense " : dots <= kFew ? " large " : " ";
  return std::string("dots") + size + more;
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
  const bool hasCurve = findings.judge.canPredict();
  for (const double length : {lengths.low, lengths.high}) {
    const double predicted = findings.judge.expectedAt(length);
    for (const double share : {1.0, kFewShare}) {
      if (hasCurve) reads.take(std::max(1.0, share * predicted));
    }
  }
  reads.take(std::max(1.0, reads.high));
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
  if (hasCurve) {
    drawPrediction(svg, findings, x, y, lengths, 1);
    drawPrediction(svg, findings, x, y, lengths, kFewShare);
  }
  return std::move(svg).finish();
}

std::string plotLengths(const Findings& findings, std::size_t& gaps) {
  constexpr double kLeastShown = 10;  // bases; what is less, or below nothing, stands at the edge
  Svg svg(500, 330, "Length by the pairs that span a gap, against the length that is written");
  const Frame frame = frameOf(svg);
  Span lengths;
  gaps = 0;
  bool isBelow = false;
  for (const GapData& gap : findings.data.gaps) {
    if (!gap.implied) continue;
    ++gaps;
    isBelow = isBelow || static_cast<double>(*gap.implied) < kLeastShown / 1.5;
    for (const double length :
         {static_cast<double>(*gap.implied), static_cast<double>(gap.to - gap.from)}) {
      lengths.take(std::max(length, kLeastShown));
    }
  }
  const double low = std::max(lengths.low, kLeastShown) / 1.5;
  const double high = std::max(lengths.high * 1.5, 10 * low);
  const Scale x = Scale::logarithmic(low, high, frame.left, frame.right);
  const Scale y = Scale::logarithmic(low, high, frame.bottom, frame.top);
  drawAxes(svg, frame, x, y, "written length, bases",
           isBelow ? "implied length, bases (lower edge: less)" : "implied length, bases");
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
  const auto steps = static_cast<std::size_t>(std::lround(kWidest / kStep));
  std::vector<Bar> bars;
  bars.reserve(steps);
  for (std::size_t i = 0; i < steps; ++i) {
    const auto n = static_cast<double>(i);
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
  drawAxes(svg, frame, x, y, "depth of the flanks, times the median (the last bar: 3.9 and more)",
           "gaps");
  drawBars(svg, frame, x, y, bars, "bars");
  for (const double mark : {1.0, 2.0}) {
    svg.line(x.at(mark), frame.top, x.at(mark), frame.bottom, "same");
  }
  return std::move(svg).finish();
}

Reached reachedOf(const RunData& data, std::size_t gap) {
  const auto length = static_cast<double>(data.gaps[gap].to - data.gaps[gap].from);
  if (data.reach.empty() || length == 0) return {};
  const double front = data.reach[gap].front / length;
  const double behind = data.reach[gap].behind / length;
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

Tally tallyOf(const Findings& findings) {
  Tally tally;
  std::vector<uint64_t> reads;
  for (std::size_t gap = 0; gap < findings.gaps.size(); ++gap) {
    const Judgement& judged = findings.gaps[gap];
    reads.push_back(judged.belonging);
    if (judged.hasReads()) ++tally.withReads;
    if (judged.isFew()) ++tally.few;
    const Reached reached = reachedOf(findings.data, gap);
    if (reached.front + reached.behind >= 1) ++tally.covered;
    tally.exact += findings.data.count(gap, ReadKind::kExact);
    tally.estimates += findings.data.count(gap, ReadKind::kEstimate);
    ReasonCount& count = tally.reasons[static_cast<std::size_t>(judged.reason)];
    ++(judged.hasReads() ? count.few : count.none);
  }
  if (reads.empty()) return tally;
  const auto middle = reads.begin() + static_cast<std::ptrdiff_t>(reads.size() / 2);
  std::nth_element(reads.begin(), middle, reads.end());
  const bool isOdd = reads.size() % 2 == 1;
  const uint64_t below = isOdd ? *middle : *std::max_element(reads.begin(), middle);
  tally.medianReads = std::midpoint(below, *middle);
  return tally;
}

}  // namespace velk::report
