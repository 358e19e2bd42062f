// The length of a gap by the pairs that span it, against fragments that are laid over it at random.
#include "run/spans.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

namespace velk::test {
namespace {

struct Kind {
  double insert;
  double spread;
  double bases;  // of both reads
};

// Lays fragments at random places until so many span a gap of `length` with both reads beside it.
run::SpanningPairs laid(const Kind& kind, double length, int pairs, uint32_t seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> lengths(kind.insert, kind.spread);
  std::uniform_real_distribution<double> starts(0, kind.insert + 5 * kind.spread);
  double left = 0;
  for (int n = 0; n < pairs;) {
    const double fragment = lengths(random);
    const double inFront = starts(random);  // bases of the fragment before the gap
    const double behind = fragment - inFront - length;
    if (inFront < kind.bases / 2 || behind < kind.bases / 2) continue;
    left += kind.insert - inFront - behind;
    ++n;
  }
  return {static_cast<double>(pairs), left / pairs, kind.bases, kind.insert, kind.spread};
}

TEST(LikeliestLength, ManyPairsTellTheLength) {
  const std::vector<Kind> kinds{{320, 66, 202}, {400, 40, 300}, {3000, 300, 200}, {215, 11, 200}};
  for (const Kind& kind : kinds) {
    for (const double share : {0.0, 0.3, 0.9}) {
      const double length = share * (kind.insert - kind.bases);
      const run::SpanningPairs pairs = laid(kind, length, 20000, 7);
      EXPECT_NEAR(run::likeliestLength({pairs}), length, 0.06 * kind.spread)
          << kind.insert << " " << length;
    }
  }
}

// What the insert size leaves on average is far too little where few fragments are long enough.
TEST(LikeliestLength, IsNoMean) {
  const run::SpanningPairs pairs = laid({320, 66, 202}, 90, 20000, 3);
  EXPECT_LT(pairs.left, 60);
  EXPECT_NEAR(run::likeliestLength({pairs}), 90, 4);
}

TEST(LikeliestLength, LibrariesAreTakenTogether) {
  const run::SpanningPairs narrow = laid({400, 20, 200}, 80, 400, 11);
  const run::SpanningPairs wide = laid({3000, 400, 200}, 80, 40, 12);
  EXPECT_NEAR(run::likeliestLength({narrow, wide}), 80, 4);
  EXPECT_NEAR(run::likeliestLength({wide, narrow}), run::likeliestLength({narrow, wide}), 1e-3);
}

TEST(LikeliestLength, FragmentsOfOneLengthLeaveTheLength) {
  EXPECT_NEAR(run::likeliestLength({{10, 55, 200, 500, 0}}), 55, 0.01);
}

TEST(LikeliestLength, StaysWithinWhatFragmentsReach) {
  EXPECT_GE(run::likeliestLength({{5, -1e6, 200, 500, 50}}), -150);
  EXPECT_LE(run::likeliestLength({{5, 1e6, 200, 500, 50}}), 500 + 150 - 200);
}

}  // namespace
}  // namespace velk::test
