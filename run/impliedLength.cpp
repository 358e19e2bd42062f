#include "run/impliedLength.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <numbers>

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

}  // namespace velk::run
