#include "run/spans.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>
#include <string>

#include "kmer/Sequence.h"
#include "run/alignment.h"
#include "run/layReads.h"
#include "run/library.h"

namespace velk::run {
namespace {

constexpr int kSteps = 40;      // each halves what is in doubt
constexpr double kFarTail = 8;  // deviations; from there on a normal tail is its first terms
constexpr double kLeastSpread = 1e-3;

// How much longer than the insert size the spanning fragments are on average, when a gap of
// `length` has them. A fragment of f bases has max(0, f - bases - length) places over the gap.
double excess(const SpanningPairs& pairs, double length) {
  const double spread = std::max(pairs.spread, kLeastSpread);
  const double a = (pairs.bases + length - pairs.insert) / spread;
  if (a > kFarTail) return spread * (a + 2 / a);
  const double tail = std::erfc(a * std::numbers::sqrt2 / 2) / 2;
  const double density = std::exp(-a * a / 2) * std::numbers::inv_sqrtpi * std::numbers::sqrt2 / 2;
  return spread * tail / (density - a * tail);
}

// Of the likelihood's logarithm, up to a factor of each library, the slope at `length`.
double slopeAt(const std::vector<SpanningPairs>& pairs, double length) {
  double slope = 0;
  for (const SpanningPairs& of : pairs) {
    const double spread = std::max(of.spread, kLeastSpread);
    slope += of.number * (of.left + excess(of, length) - length) / (spread * spread);
  }
  return slope;
}

}  // namespace

double likeliestLength(const std::vector<SpanningPairs>& pairs) {
  assert(!pairs.empty());
  double low = 0;
  double high = 0;
  for (const SpanningPairs& of : pairs) {
    low = std::min(low, -kDeviations * of.spread);
    high = std::max(high, of.insert + kDeviations * of.spread - of.bases);
  }
  for (int step = 0; step < kSteps; ++step) {
    const double middle = (low + high) / 2;
    (slopeAt(pairs, middle) > 0 ? low : high) = middle;
  }
  return (low + high) / 2;
}

std::optional<Span> Spans::find(const FoundAnchor& anchor, const PairBases& pair,
                                const Library& library) const {
  const auto anchorLength = static_cast<int64_t>(pair.anchor.size());
  const auto mateLength = static_cast<int64_t>(pair.mate.size());
  const ScaffoldText scaffold{assembly_, anchor.scaffold};
  const auto& contigs = scaffold.contigs();
  const int64_t contigLength = stretchOf(contigs[anchor.contig]).length();
  const int64_t end = anchor.offset + anchorLength;
  const bool isInFront = anchor.isReversed == (library.orientation == Orientation::kOutward);
  // 1. What of the fragment is left for the gap and the other contig, if it is a long one.
  const int64_t onContig = isInFront ? contigLength - anchor.offset : end;
  const int64_t insert = std::llround(library.insert);
  const auto spread = std::llround(kDeviations * library.spread);
  if (insert + spread < onContig + mateLength || mateLength < kmer_) return std::nullopt;
  if (anchor.offset < 0 || end > contigLength) return std::nullopt;
  if (isInFront ? anchor.contig + 1 == contigs.size() : anchor.contig == 0) return std::nullopt;
  const uint64_t next = isInFront ? anchor.contig + 1 : anchor.contig - 1;
  // 2. Where the mate lies there.
  const std::string mate =
      anchor.isReversed ? std::string(pair.mate) : reverseComplementOf(pair.mate);
  const int64_t middle = (mateLength - kmer_) / 2;
  const auto place = index_.placeOf(packedKmer(std::string_view(mate).substr(
      static_cast<std::size_t>(middle), static_cast<std::size_t>(kmer_))));
  if (!place || !place->isUnique) return std::nullopt;
  if (place->first.scaffold != anchor.scaffold || place->first.contig != next) return std::nullopt;
  const std::string_view bases = scaffold.basesOf(next);
  const int64_t start = static_cast<int64_t>(place->first.start) - middle;
  const int64_t behind = static_cast<int64_t>(bases.size()) - start - mateLength;
  if (start < 0 || behind < 0) return std::nullopt;
  // 3. What the insert size leaves for the gap.
  const int64_t length = insert - onContig - mateLength - (isInFront ? start : behind);
  if (length < -spread || !agrees(bases.data() + start, mate.data(), mateLength, mapCut_)) {
    return std::nullopt;
  }
  return Span{assembly_.gapInFront(anchor.scaffold, isInFront ? next : anchor.contig), length,
              anchorLength + mateLength};
}

}  // namespace velk::run
