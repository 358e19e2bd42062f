#include "run/spans.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <random>
#include <vector>

#include "driver/velk.h"
#include "tests/run/world.h"

namespace velk::test {
namespace {

using run::FoundAnchor;
using run::Library;
using run::PairBases;
using run::Span;

constexpr int kKmer = 21;

// Contig 0 is the truth's bases 0 to 400, contig 1 500 to 900, contig 2 950 to 1200; the gap of 100
// bases between the first two is written as 140.
class SpansTest : public RunWorld {
 protected:
  SpansTest() : truth_(randomBases(1200, 1)) {
    Kmer = kKmer;
    makeAssembly(
        {{"chr",
          {{truth_.substr(0, 400)}, {truth_.substr(500, 400), 140}, {truth_.substr(950), 50}}}});
    EXPECT_TRUE(index_.build(assembly().model(), 1, kKmer, 1));
  }

  std::string truth(std::size_t start) const { return truth_.substr(start, 50); }

  // A pair, inward, whose anchor is its left read, at `offset` of contig 0; `mate` as it reads on
  // the scaffold.
  std::optional<Span> fromFront(int64_t offset, const std::string& mate, const Library& library) {
    const std::string anchor = truth(static_cast<std::size_t>(offset));
    return find({0, false, 0, 0, offset}, anchor, reverseComplement(mate), library);
  }

  std::optional<Span> find(const FoundAnchor& anchor, const std::string& anchorBases,
                           const std::string& mate, const Library& library) {
    return run::Spans(assembly(), index_, kKmer, 0.98).find(anchor, {anchorBases, mate}, library);
  }

  std::string truth_;
  SeedIndex index_;
};

TEST_F(SpansTest, APairOfTheInsertSizeGivesTheTrueLength) {
  const auto span = fromFront(300, truth(550), pairs("l", 300, 10));
  ASSERT_TRUE(span);
  EXPECT_EQ(span->gap, 0U);
  EXPECT_EQ(span->length, 100);
}

TEST_F(SpansTest, TheRightReadAsAnchor) {
  const auto span =
      find({1, true, 0, 1, 60}, reverseComplement(truth(560)), truth(320), pairs("l", 300, 10));
  ASSERT_TRUE(span);
  EXPECT_EQ(span->gap, 0U);
  EXPECT_EQ(span->length, 110);  // the pair is 290 bases long
}

TEST_F(SpansTest, OutwardPairs) {
  Library library = pairs("l", 300, 10);
  library.orientation = run::Orientation::kOutward;
  const auto span = find({0, true, 0, 0, 300}, reverseComplement(truth(300)), truth(550), library);
  ASSERT_TRUE(span);
  EXPECT_EQ(span->length, 100);
}

TEST_F(SpansTest, TheLastContigHasNoGapBehind) {
  EXPECT_FALSE(find({0, false, 0, 2, 100}, truth(1050), reverseComplement(truth(1150)),
                    pairs("l", 300, 10)));
  const auto span =
      find({1, true, 0, 2, 10}, reverseComplement(truth(960)), truth(800), pairs("l", 210, 10));
  ASSERT_TRUE(span);
  EXPECT_EQ(span->gap, 1U);
  EXPECT_EQ(span->length, 50);
}

TEST_F(SpansTest, AMateOverAnEdgeDoesNotSpan) {
  EXPECT_FALSE(fromFront(300, truth(499), pairs("l", 300, 20)));
  EXPECT_TRUE(fromFront(300, truth(500), pairs("l", 300, 20)));
}

TEST_F(SpansTest, AnAnchorOverAnEdgeDoesNotSpan) {
  EXPECT_FALSE(fromFront(351, truth(550), pairs("l", 300, 20)));
  EXPECT_TRUE(fromFront(350, truth(550), pairs("l", 300, 20)));
}

TEST_F(SpansTest, NoGapIsFarBelowNothing) {
  EXPECT_FALSE(fromFront(300, truth(681), pairs("l", 300, 10)));
  const auto span = fromFront(300, truth(680), pairs("l", 300, 10));
  ASSERT_TRUE(span);
  EXPECT_EQ(span->length, -30);
}

TEST_F(SpansTest, AMateThatDiffersDoesNotSpan) {
  std::string mate = truth(550);
  mate[3] = mate[3] == 'A' ? 'C' : 'A';
  EXPECT_TRUE(fromFront(300, mate, pairs("l", 300, 10)));
  mate[44] = mate[44] == 'A' ? 'C' : 'A';
  EXPECT_FALSE(fromFront(300, mate, pairs("l", 300, 10)));
}

TEST_F(SpansTest, ShortMatesDoNotSpan) {
  EXPECT_FALSE(find({0, false, 0, 0, 300}, truth(300), reverseComplement(truth(550).substr(0, 20)),
                    pairs("l", 300, 10)));
}

// The length of a gap by the pairs that span it, against fragments that are laid over it at random.

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
