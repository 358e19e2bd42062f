#include "run/spans.h"

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace velk::test
