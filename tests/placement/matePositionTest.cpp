// The mate in the gap next to the anchor's contig, and its moving to the gap's ends.
//
// The anchor covers bases 50 to 149 of a contig of 300 in front of a gap of 400, or lies as its
// mirror image, bases 150 to 249 of a contig of 300 behind a gap of 400. Forward, the mate's
// position is the insert less 350; in reverse it is 650 less the insert, so that the two positions
// of one insert add up to the 300 bases of the gap that a mate of 100 leaves free.
#include <optional>

#include "tests/placement/pairedTest.h"

namespace velk::test {
namespace {

struct MateCase {
  int insert;
  std::optional<int64_t> position;  // where the mate is recorded, if it is
};

const std::string& near() {
  static const std::string bases = randomBases(300, 31);
  return bases;
}

const std::string& other() {
  static const std::string bases = randomBases(300, 32);
  return bases;
}

// Checks that `outcome` accepted a hit at the first k-mer with the mate at `position` alone.
void expectMate(const Outcome& outcome, const TestRecord& record,
                const std::optional<int64_t>& position, int insert) {
  EXPECT_EQ(0, outcome.stop) << "insert " << insert;
  if (position) {
    EXPECT_EQ(Records{record}, outcome.records) << "insert " << insert;
  } else {
    EXPECT_EQ(Records{}, outcome.records) << "insert " << insert;
  }
}

class ForwardMate : public CheckForwardRead {
 protected:
  ForwardMate() { assembleScaffold({{near()}, {other(), 400}}); }

  void expectCases(const std::vector<MateCase>& cases) const {
    for (const auto& [insert, position] : cases) {
      expectMate(check(readAt(near(), 50, 100), mate, insert),
                 inGap(0, 400, mate, position.value_or(0)), position, insert);
    }
  }
};

class ReverseMate : public CheckReverseRead {
 protected:
  ReverseMate() { assembleScaffold({{other()}, {near(), 400}}); }

  void expectCases(const std::vector<MateCase>& cases) const {
    for (const auto& [insert, position] : cases) {
      expectMate(check(readAt(near(), 150, 100), mate, insert),
                 inGap(0, 400, mate, position.value_or(0)), position, insert);
    }
  }
};

TEST_F(ForwardMate, InsideTheGap) {
  expectCases({{500, 150}});
}

TEST_F(ReverseMate, InsideTheGap) {
  expectCases({{500, 150}});
}

TEST_F(ForwardMate, OverlappingTheContig) {
  expectCases({{300, -50}});
}

TEST_F(ReverseMate, OverlappingTheContig) {
  expectCases({{300, 350}});
}

TEST_F(ForwardMate, InFrontOfTheGap) {
  expectCases({{200, -100}, {180, std::nullopt}});
}

TEST_F(ReverseMate, BehindTheGap) {
  expectCases({{200, 400}, {180, std::nullopt}});
}

TEST_F(ForwardMate, BehindTheGap) {
  expectCases({{760, 400}, {812, std::nullopt}});
}

TEST_F(ReverseMate, InFrontOfTheGap) {
  expectCases({{760, -100}, {812, std::nullopt}});
}

TEST_F(ForwardMate, EndsOfTheBandInFrontOfTheGap) {
  expectCases({{188, std::nullopt}, {189, -100}, {249, -100}, {250, -100}, {251, -99}});
}

TEST_F(ReverseMate, EndsOfTheBandInFrontOfTheGap) {
  expectCases({{812, std::nullopt}, {811, -100}, {751, -100}, {750, -100}, {749, -99}});
}

TEST_F(ForwardMate, EndsOfTheBandBehindTheGap) {
  expectCases({{749, 399}, {750, 400}, {751, 400}, {811, 400}, {812, std::nullopt}});
}

TEST_F(ReverseMate, EndsOfTheBandBehindTheGap) {
  expectCases({{251, 399}, {250, 400}, {249, 400}, {189, 400}, {188, std::nullopt}});
}

TEST_F(ForwardMate, InsertsOfNothingAndBelow) {
  expectCases({{0, std::nullopt}, {-500, std::nullopt}});
}

TEST_F(ReverseMate, InsertsOfNothingAndBelow) {
  expectCases({{0, std::nullopt}, {-500, std::nullopt}});
}

// The bands are two k-mers wide, whatever the length of a k-mer.
TEST_F(ForwardMate, ShorterKmersNarrowTheBands) {
  Kmer = 20;
  assembleScaffold({{near()}, {other(), 400}});
  expectCases({{210, std::nullopt}, {211, -100}, {250, -100}});
  expectCases({{750, 400}, {789, 400}, {790, std::nullopt}});
}

TEST_F(ReverseMate, ShorterKmersNarrowTheBands) {
  Kmer = 20;
  assembleScaffold({{other()}, {near(), 400}});
  expectCases({{790, std::nullopt}, {789, -100}, {750, -100}});
  expectCases({{250, 400}, {211, 400}, {210, std::nullopt}});
}

// A mate of 60 bases: forward it starts 40 bases later, in reverse it starts where it did.
TEST_F(ForwardMate, AMateOfAnotherLengthThanTheAnchor) {
  const std::string anchor = readAt(near(), 50, 100);
  const std::string shorter = mate.substr(0, 60);
  EXPECT_EQ((Records{inGap(0, 400, shorter, 190)}), check(anchor, shorter, 500).records);
  EXPECT_EQ((Records{inGap(0, 400, shorter, -59)}), check(anchor, shorter, 251).records);
  EXPECT_EQ((Records{inGap(0, 400, shorter, -60)}), check(anchor, shorter, 189).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 188).records);
}

TEST_F(ReverseMate, AMateOfAnotherLengthThanTheAnchor) {
  const std::string anchor = readAt(near(), 150, 100);
  const std::string shorter = mate.substr(0, 60);
  EXPECT_EQ((Records{inGap(0, 400, shorter, 150)}), check(anchor, shorter, 500).records);
  EXPECT_EQ((Records{inGap(0, 400, shorter, -59)}), check(anchor, shorter, 709).records);
  EXPECT_EQ((Records{inGap(0, 400, shorter, -60)}), check(anchor, shorter, 771).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 772).records);
}

// In reverse the fragment ends with the anchor's last base: 20 bases less, 20 bases further left.
TEST_F(ReverseMate, AShorterAnchor) {
  EXPECT_EQ((Records{inGap(0, 400, mate, 130)}), check(readAt(near(), 150, 80), mate, 500).records);
}

TEST_F(ForwardMate, AShorterAnchor) {
  EXPECT_EQ((Records{inGap(0, 400, mate, 150)}), check(readAt(near(), 50, 80), mate, 500).records);
}

TEST_F(ForwardMate, EmptyGap) {
  assembleScaffold({{near()}, {other(), 0}});
  const std::string anchor = readAt(near(), 50, 100);
  EXPECT_EQ((Records{inGap(0, 0, mate, -50)}), check(anchor, mate, 300).records);
  EXPECT_EQ((Records{inGap(0, 0, mate, 0)}), check(anchor, mate, 411).records);
  EXPECT_EQ(Records{}, check(anchor, mate, 412).records);
}

// A gap of -20 bases: a mate at -20 to 41 is moved to -20, the end of the gap.
TEST_F(ForwardMate, NegativeGap) {
  assembleScaffold({{near()}, {other(), -20}});
  const std::string anchor = readAt(near(), 50, 100);
  EXPECT_EQ((Records{inGap(0, -20, mate, -21)}), check(anchor, mate, 329).records);
  EXPECT_EQ((Records{inGap(0, -20, mate, -20)}), check(anchor, mate, 330).records);
  EXPECT_EQ((Records{inGap(0, -20, mate, -20)}), check(anchor, mate, 391).records);
  EXPECT_EQ(Records{}, check(anchor, mate, 392).records);
}

// Here the mate's position is 230 less the insert.
TEST_F(ReverseMate, NegativeGap) {
  assembleScaffold({{other()}, {near(), -20}});
  const std::string anchor = readAt(near(), 150, 100);
  EXPECT_EQ((Records{inGap(0, -20, mate, -21)}), check(anchor, mate, 251).records);
  EXPECT_EQ((Records{inGap(0, -20, mate, -20)}), check(anchor, mate, 250).records);
  EXPECT_EQ((Records{inGap(0, -20, mate, -20)}), check(anchor, mate, 189).records);
  EXPECT_EQ(Records{}, check(anchor, mate, 188).records);
}

// Moved to -100 in front of the gap, the mate lies in the band behind a gap of -150 and is moved on
// to -150, where it no longer reaches the gap.
TEST_F(ForwardMate, GapNegativeByMoreThanAMate) {
  assembleScaffold({{near()}, {other(), -150}});
  EXPECT_EQ(Records{}, check(readAt(near(), 50, 100), mate, 250).records);
  assembleScaffold({{near()}, {other(), -100}});
  EXPECT_EQ((Records{inGap(0, -100, mate, -100)}),
            check(readAt(near(), 50, 100), mate, 250).records);
}

}  // namespace
}  // namespace velk::test
