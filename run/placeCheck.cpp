#include "run/placeCheck.h"

#include <algorithm>
#include <cstdlib>

#include "placement/countEqual.h"
namespace velk::run {
namespace {

// The first bases that are looked at, both included.
struct Reach {
  int64_t lowest;
  int64_t highest;
};

// A place where a read agrees with a contig.
struct Match {
  int64_t start;
  int64_t bases;  // equal ones, or those that were compared
  uint64_t contig;
};

class Comparison {
 public:
  Comparison(const ScaffoldText& scaffold, std::string_view read, double mapCut)
      : scaffold_(scaffold),
        read_(read),
        length_(static_cast<int64_t>(read.size())),
        mapCut_(mapCut) {}

  Stretch placeOf(uint64_t contig) const { return stretchOf(scaffold_.contigs()[contig]); }
  uint64_t contigs() const { return scaffold_.contigs().size(); }

  // Looks for all of the read in a contig, and keeps the best place (inout).
  void findIn(uint64_t contig, const Reach& reach, int64_t expected,
              std::optional<Match>& best) const {
    const Stretch edge = placeOf(contig);
    const int64_t last = std::min(reach.highest, edge.end - length_);
    for (int64_t start = std::max(reach.lowest, edge.start); start <= last; ++start) {
      if (!agreesAt(contig, start, {start, start + length_})) continue;
      const Match match{start, sameAt(contig, start), contig};
      if (!best || isBetter(match, *best, expected)) best = match;
    }
  }

  // The one overlap with the end of the contig in front of a gap.
  std::optional<Match> overEnd(uint64_t contig, const Reach& reach) const {
    const Stretch edge = placeOf(contig);
    return onlyOverlap(contig, {std::max(reach.lowest, edge.end - length_ + 1),
                                std::min(reach.highest, edge.end - kLeastOverlap)});
  }

  // The one overlap with the start of the contig behind a gap.
  std::optional<Match> overStart(uint64_t contig, const Reach& reach) const {
    const Stretch edge = placeOf(contig);
    return onlyOverlap(contig, {std::max(reach.lowest, edge.start + kLeastOverlap - length_),
                                std::min(reach.highest, edge.start - 1)});
  }

 private:
  const char* basesAt(uint64_t contig, int64_t position) const {
    return scaffold_.basesOf(contig).data() + (position - placeOf(contig).start);
  }

  bool agreesAt(uint64_t contig, int64_t start, const Stretch& shared) const {
    return agrees(basesAt(contig, shared.start), read_.data() + (shared.start - start),
                  shared.length(), mapCut_);
  }

  int64_t sameAt(uint64_t contig, int64_t start) const {
    return static_cast<int64_t>(countEqual(basesAt(contig, start), read_.data(), read_.size()));
  }

  static bool isBetter(const Match& one, const Match& other, int64_t expected) {
    if (one.bases != other.bases) return one.bases > other.bases;
    return std::abs(one.start - expected) < std::abs(other.start - expected);
  }

  // Nothing where there are several: a repeat at the edge, and any of them may be meant.
  std::optional<Match> onlyOverlap(uint64_t contig, const Reach& starts) const {
    const Stretch edge = placeOf(contig);
    std::optional<Match> only;
    for (int64_t start = starts.lowest; start <= starts.highest; ++start) {
      const Stretch shared = common({start, start + length_}, edge);
      if (shared.length() < kLeastOverlap || !agreesAt(contig, start, shared)) continue;
      if (only) return std::nullopt;
      only = Match{start, shared.length(), contig};
    }
    return only;
  }

  const ScaffoldText& scaffold_;
  std::string_view read_;
  int64_t length_;
  double mapCut_;
};

// Where the read may start as seen from the contigs in front of a gap, and from those behind.
// Beyond a gap of unknown length it may lie anywhere from where it would lie without that gap.
struct Reaches {
  Reach front;
  Reach behind;
};

Reaches reachesOf(const Gap& gap, const Expected& expected) {
  const Reach around{expected.start - expected.spread, expected.start + expected.spread};
  if (!gap.isPlaceholder) return {around, around};
  const auto width = static_cast<int64_t>(gap.end - gap.start);
  const auto length = static_cast<int64_t>(expected.bases.size());
  if (expected.isFromFront) {
    return {around, {static_cast<int64_t>(gap.end) - length, around.highest + width}};
  }
  return {{around.lowest - width, static_cast<int64_t>(gap.start)}, around};
}

// The best place in the contigs up to `front` and those from `behind` on.
std::optional<Match> bestIn(const Comparison& comparison, const Reaches& reaches, uint64_t behind,
                            int64_t expected) {
  std::optional<Match> best;
  for (uint64_t c = behind; c-- > 0 && comparison.placeOf(c).end > reaches.front.lowest;) {
    comparison.findIn(c, reaches.front, expected, best);
  }
  const int64_t last = reaches.behind.highest;
  for (uint64_t c = behind; c < comparison.contigs() && comparison.placeOf(c).start <= last; ++c) {
    comparison.findIn(c, reaches.behind, expected, best);
  }
  return best;
}

}  // namespace

CheckedPlace checkPlace(const ScaffoldText& scaffold, const Gap& gap, const Expected& expected,
                        double mapCut) {
  const Comparison comparison(scaffold, expected.bases, mapCut);
  const Reaches reaches = reachesOf(gap, expected);
  const uint64_t behind = gap.contigBehind;
  if (const auto inside = bestIn(comparison, reaches, behind, expected.start)) {
    return {Certainty::kContained, inside->start, inside->contig};
  }
  const auto front = comparison.overEnd(behind - 1, reaches.front);
  const auto back = comparison.overStart(behind, reaches.behind);
  const auto& longer = !back || (front && front->bases >= back->bases) ? front : back;
  if (longer) return {Certainty::kExact, longer->start, longer->contig};
  return {Certainty::kEstimate, expected.start, 0};
}

std::optional<CheckedPlace> findContained(const ScaffoldText& scaffold, std::string_view bases,
                                          int64_t start, int64_t spread, double mapCut) {
  const Comparison comparison(scaffold, bases, mapCut);
  const Reach around{start - spread, start + spread};
  const std::vector<ContigPlace>& contigs = scaffold.contigs();
  const auto next = std::partition_point(
      contigs.begin(), contigs.end(),
      [&](const ContigPlace& contig) { return stretchOf(contig).end <= around.lowest; });
  const auto first = static_cast<uint64_t>(next - contigs.begin());
  const auto inside = bestIn(comparison, {around, around}, first, start);
  if (!inside) return std::nullopt;
  return CheckedPlace{Certainty::kContained, inside->start, inside->contig};
}

}  // namespace velk::run
