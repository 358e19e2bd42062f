#include "report/drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <tuple>

#include "report/figures.h"
#include "report/html.h"
#include "report/svg.h"
#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;

constexpr double kWidth = 1040;
constexpr double kSideMargin = 14;
constexpr double kDepthHeight = 44;
constexpr double kTop = 14;
constexpr double kBandHeight = 14;
constexpr double kLaneHeight = 5;
constexpr double kColumn = 4;  // pixels over which depth is taken together

// The reads of a fragment that are drawn, in one lane.
struct Fragment {
  int64_t start;
  int64_t end;
  uint32_t library;
  std::vector<const GapRead*> reads;
};

std::vector<Fragment> fragmentsOf(const std::vector<GapRead>& reads) {
  std::map<std::pair<uint64_t, uint32_t>, Fragment> byName;
  for (const GapRead& read : reads) {
    Fragment& fragment = byName
                             .try_emplace({read.fragment, read.library},
                                          Fragment{read.start, read.end, read.library, {}})
                             .first->second;
    fragment.start = std::min(fragment.start, read.start);
    fragment.end = std::max(fragment.end, read.end);
    fragment.reads.push_back(&read);
  }
  // Names are hashed, so their order is one by chance.
  std::vector<Fragment> picked;
  std::size_t drawn = 0;
  for (auto& [name, fragment] : byName) {
    if (drawn + fragment.reads.size() > kDrawnReads) break;
    drawn += fragment.reads.size();
    picked.push_back(std::move(fragment));
  }
  std::sort(picked.begin(), picked.end(), [](const Fragment& one, const Fragment& other) {
    return std::tie(one.start, one.end) < std::tie(other.start, other.end);
  });
  return picked;
}

class Drawing {
 public:
  Drawing(const RunData& data, std::size_t gap, const GapReads& reads, Setting setting)
      : data_(data),
        gap_(data.gaps[gap]),
        reads_(reads.reads),
        setting_(setting),
        fragments_(fragmentsOf(reads.reads)) {
    findWindow();
    packLanes();
  }

  std::string make() {
    const double below = laneTop() + kLaneHeight * static_cast<double>(lanes_) + 8;
    Svg svg(kWidth, below + 26, label());
    if (setting_ == Setting::kAlone) svg.style(drawingStyle());
    drawGapColumn(svg, below);
    drawDepth(svg);
    drawBand(svg);
    drawReads(svg);
    drawRuler(svg, below);
    return std::move(svg).finish();
  }

 private:
  static double laneTop() { return kTop + kDepthHeight + kBandHeight + 12; }

  std::string label() const {
    return "Gap " + std::to_string(gap_.number) + " of " + cleaned(data_.scaffoldOf(gap_), 60) +
           ", " + countText(gap_.to - gap_.from) + " bases, with " + countText(reads_.size()) +
           " reads";
  }

  // What is shown: the gap with all reads that are drawn, and some of the contigs.
  void findWindow() {
    const auto from = static_cast<int64_t>(gap_.from);
    const auto to = static_cast<int64_t>(gap_.to);
    low_ = from;
    high_ = to;
    for (const Fragment& fragment : fragments_) {
      low_ = std::min(low_, fragment.start);
      high_ = std::max(high_, fragment.end);
    }
    const int64_t room = std::max<int64_t>(20, (high_ - low_) / 25);
    const int64_t least = fragments_.empty() ? std::max<int64_t>(room, (to - from) / 2) : room;
    low_ = std::max(low_ - least, from - static_cast<int64_t>(gap_.basesBefore));
    high_ = std::min(high_ + least, to + static_cast<int64_t>(gap_.basesBehind));
  }

  double x(int64_t position) const {
    const double share = static_cast<double>(std::clamp(position, low_, high_) - low_) /
                         static_cast<double>(std::max<int64_t>(1, high_ - low_));
    return kSideMargin + share * (kWidth - 2 * kSideMargin);
  }

  void packLanes() {
    std::vector<double> ends;
    for (const Fragment& fragment : fragments_) {
      const double from = x(fragment.start);
      auto lane = std::find_if(ends.begin(), ends.end(), [&](double end) { return end < from; });
      if (lane == ends.end()) lane = ends.insert(lane, 0);
      *lane = std::max(x(fragment.end), from + 2) + 3;
      laneOf_.push_back(static_cast<std::size_t>(lane - ends.begin()));
    }
    lanes_ = std::max<std::size_t>(ends.size(), 1);
  }

  void drawGapColumn(Svg& svg, double below) const {
    const double left = x(static_cast<int64_t>(gap_.from));
    const double right = x(static_cast<int64_t>(gap_.to));
    svg.rect(left, kTop, std::max(right - left, 1.5), below - kTop, "gap-column");
  }

  // How many reads cover each column, exact ones and estimates; anchors and contained ones lie in
  // contigs.
  void drawDepth(Svg& svg) const {
    constexpr auto kColumns = static_cast<std::size_t>((kWidth - 2 * kSideMargin) / kColumn);
    std::array<std::vector<uint32_t>, 2> depth;
    for (std::size_t estimates = 0; estimates < 2; ++estimates) {
      std::vector<int64_t> change(kColumns + 2);
      for (const GapRead& read : reads_) {
        const bool isEstimate = read.kind == ReadKind::kEstimate;
        if (read.kind != ReadKind::kExact && !(isEstimate && estimates == 1)) continue;
        ++change[columnOf(read.start)];
        --change[columnOf(read.end) + 1];
      }
      int64_t sum = 0;
      for (std::size_t c = 0; c <= kColumns; ++c) {
        depth[estimates].push_back(static_cast<uint32_t>(sum += change[c]));
      }
    }
    const uint32_t most = *std::max_element(depth[1].begin(), depth[1].end());
    if (most == 0) return;
    svg.path(areaOf(depth[1], most), "depth-estimate");
    svg.path(areaOf(depth[0], most), "depth-exact");
    svg.text(kWidth - kSideMargin, kTop - 3, "depth up to " + countText(most), "end", "tick");
  }

  std::size_t columnOf(int64_t position) const {
    return static_cast<std::size_t>((x(position) - kSideMargin) / kColumn);
  }

  static std::string areaOf(const std::vector<uint32_t>& depth, uint32_t most) {
    const double base = kTop + kDepthHeight;
    std::string d = "M" + brief(kSideMargin) + " " + brief(base);
    double before = base;
    for (std::size_t c = 0; c < depth.size(); ++c) {
      const double y = base - kDepthHeight * depth[c] / most;
      if (brief(y) == brief(before)) continue;
      d += "H" + brief(kSideMargin + kColumn * static_cast<double>(c)) + "V" + brief(y);
      before = y;
    }
    return d + "H" + brief(kWidth - kSideMargin) + "V" + brief(base) + "z";
  }

  // Contig, gap, contig.
  void drawBand(Svg& svg) const {
    const double top = kTop + kDepthHeight + 4;
    const double left = x(static_cast<int64_t>(gap_.from));
    const double right = std::max(x(static_cast<int64_t>(gap_.to)), left + 1.5);
    svg.rect(kSideMargin, top, left - kSideMargin, kBandHeight, "contig");
    svg.rect(right, top, kWidth - kSideMargin - right, kBandHeight, "contig");
    svg.line(left, top + kBandHeight / 2, right, top + kBandHeight / 2, "unknown");
    const std::string name = countText(gap_.to - gap_.from) + " N";
    const bool hasRoom = right - left > 7 * static_cast<double>(name.size());
    if (hasRoom) svg.text((left + right) / 2, top + 11, name, "middle", "gap-name");
    nameContig(svg, kSideMargin, left, gap_.basesBefore);
    nameContig(svg, right, kWidth - kSideMargin, gap_.basesBehind);
  }

  static void nameContig(Svg& svg, double from, double to, uint64_t bases) {
    const std::string name = "contig, " + countText(bases) + " bases";
    if (to - from < 6.5 * static_cast<double>(name.size())) return;
    svg.text((from + to) / 2, kTop + kDepthHeight + kBandHeight + 0.5, name, "middle",
             "contig-name");
  }

  // All reads of a library and kind in one path, a stroke for each, on whole pixels.
  void drawReads(Svg& svg) const {
    std::string joins;
    std::map<std::pair<uint32_t, ReadKind>, std::string> strokes;
    for (std::size_t n = 0; n < fragments_.size(); ++n) {
      const Fragment& fragment = fragments_[n];
      const double y = laneTop() + kLaneHeight * static_cast<double>(laneOf_[n]) + 3;
      const double from = std::round(x(fragment.start));
      if (fragment.reads.size() > 1) {
        joins += "M" + brief(from) + " " + brief(y) + "H" + brief(std::round(x(fragment.end)));
      }
      for (const GapRead* read : fragment.reads) {
        const double start = std::round(x(read->start));
        const double length = std::max(std::round(x(read->end)) - start, 1.0);
        strokes[{fragment.library, read->kind}] +=
            "M" + brief(start) + " " + brief(y) + "h" + brief(length);
      }
    }
    svg.path(joins, "join");
    for (const auto& [what, d] : strokes) {
      svg.path(d, "read " + libraryClass(what.first) + " " + kindClass(what.second));
    }
  }

  void drawRuler(Svg& svg, double y) const {
    svg.line(kSideMargin, y, kWidth - kSideMargin, y, "axis");
    const Scale scale = Scale::linear(static_cast<double>(low_), static_cast<double>(high_),
                                      kSideMargin, kWidth - kSideMargin);
    for (const Tick& tick : scale.ticks(8)) {
      const double at = scale.at(tick.value);
      const bool hasRoom = at >= 40 && at <= kWidth - 40;  // for its number
      if (!hasRoom) continue;
      svg.line(at, y, at, y + 4, "axis");
      svg.text(at, y + 17, countText(static_cast<uint64_t>(std::max(0.0, tick.value))), "middle",
               "tick");
    }
  }

  const RunData& data_;
  const GapData& gap_;
  const std::vector<GapRead>& reads_;
  Setting setting_;
  std::vector<Fragment> fragments_;
  std::vector<std::size_t> laneOf_;
  std::size_t lanes_ = 1;
  int64_t low_ = 0;
  int64_t high_ = 0;
};

}  // namespace

std::string drawGap(const RunData& data, std::size_t gap, const GapReads& reads, Setting setting) {
  return Drawing(data, gap, reads, setting).make();
}

}  // namespace velk::report
