#include "run/placeCheck.h"

#include <algorithm>
#include <cstdlib>

#include "placement/edgeCheck.h"
#include "run/likeStart.h"

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
        mapCut_(mapCut),
        mostUnlike_(static_cast<int64_t>(static_cast<double>(length_) * (1 - mapCut)) + 1) {}

  Stretch placeOf(uint64_t contig) const { return stretchOf(scaffold_.contigs()[contig]); }
  uint64_t contigs() const { return scaffold_.contigs().size(); }

  // Looks for all of the read in a contig, and keeps the best place (inout).
  void findIn(uint64_t contig, const Reach& reach, int64_t expected,
              std::optional<Match>& best) const {
    const Stretch edge = placeOf(contig);
    const int64_t first = std::max(reach.lowest, edge.start);
    const int64_t places = std::min(reach.highest, edge.end - length_) + 1 - first;
    if (places <= 0) return;
    forEachLike(read_, basesFrom(contig, first), places, [&](int64_t i) {
      const int64_t start = first + i;
      if (!agreesAt(contig, start, {start, start + length_})) return;
      const Match match{start, sameAt(contig, start), contig};
      if (!best || isBetter(match, *best, expected)) best = match;
    });
  }

  // The one overlap with the end of the contig in front of a gap. The read starts on the contig, if
  // not in front of it.
  std::optional<Match> overEnd(uint64_t contig, const Reach& reach) const {
    const Stretch edge = placeOf(contig);
    const int64_t first = std::max(reach.lowest, edge.end - length_ + 1);
    const int64_t last = std::min(reach.highest, edge.end - kLeastOverlap);
    const int64_t onContig = std::max(first, edge.start);
    Overlaps overlaps;
    for (int64_t start = first; start < std::min(onContig, last + 1); ++start) {
      lookAt(contig, start, overlaps);
    }
    if (onContig <= last) {
      forEachLike(read_, basesFrom(contig, onContig), last + 1 - onContig,
                  [&](int64_t i) { lookAt(contig, onContig + i, overlaps); });
    }
    return overlaps.only();
  }

  // The one overlap with the start of the contig behind a gap: the contig starts on the read.
  std::optional<Match> overStart(uint64_t contig, const Reach& reach) const {
    const Stretch edge = placeOf(contig);
    const int64_t first = std::max<int64_t>(edge.start - reach.highest, 1);  // base of the read
    const int64_t last = std::min(edge.start - reach.lowest, length_ - kLeastOverlap);
    Overlaps overlaps;
    if (first <= last) {
      forEachLike(scaffold_.basesOf(contig), read_.substr(static_cast<std::size_t>(first)),
                  last + 1 - first,
                  [&](int64_t i) { lookAt(contig, edge.start - first - i, overlaps); });
    }
    return overlaps.only();
  }

 private:
  // Overlaps with an edge. Where there are several it is a repeat, and any of them may be meant.
  struct Overlaps {
    Match match{};
    int count = 0;

    std::optional<Match> only() const { return count == 1 ? std::optional(match) : std::nullopt; }
  };

  // The bases of a contig from a position of the scaffold on.
  std::string_view basesFrom(uint64_t contig, int64_t position) const {
    return scaffold_.basesOf(contig).substr(
        static_cast<std::size_t>(position - placeOf(contig).start));
  }

  // Calls visit(i) for the i in [0, places) at which `text` may agree with `pattern`.
  template <class Visit>
  void forEachLike(std::string_view pattern, std::string_view text, int64_t places,
                   Visit visit) const {
    int64_t i = 0;
    if (static_cast<int64_t>(pattern.size()) >= LikeStart::kBases) {
      const int64_t whole = static_cast<int64_t>(text.size()) - LikeStart::kBases + 1;
      i = std::clamp<int64_t>(whole, 0, places);
      LikeStart(pattern, mostUnlike_).forEachPlace(text.data(), i, visit);
    }
    for (; i < places; ++i) visit(i);
  }

  void lookAt(uint64_t contig, int64_t start, Overlaps& overlaps) const {
    const Stretch shared = common({start, start + length_}, placeOf(contig));
    if (shared.length() < kLeastOverlap || !agreesAt(contig, start, shared)) return;
    overlaps.match = {start, shared.length(), contig};
    ++overlaps.count;
  }

  bool agreesAt(uint64_t contig, int64_t start, const Stretch& shared) const {
    return agrees(basesFrom(contig, shared.start).data(), read_.data() + (shared.start - start),
                  shared.length(), mapCut_);
  }

  int64_t sameAt(uint64_t contig, int64_t start) const {
    return static_cast<int64_t>(
        countEqual(basesFrom(contig, start).data(), read_.data(), read_.size()));
  }

  static bool isBetter(const Match& one, const Match& other, int64_t expected) {
    if (one.bases != other.bases) return one.bases > other.bases;
    return std::abs(one.start - expected) < std::abs(other.start - expected);
  }

  const ScaffoldText& scaffold_;
  std::string_view read_;
  int64_t length_;
  double mapCut_;
  int64_t mostUnlike_;  // bases of a read that agrees
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
