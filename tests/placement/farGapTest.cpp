// The mate in the gap beyond a short contig.
//
// Forward, the anchor covers bases 50 to 149 of its contig, and the mate's position in the far gap
// is the insert less 50 and less the bases of contig, gap and contig between: less 920 as a rule.
// In reverse the anchor lies as its mirror image.
#include "tests/placement/pairedTest.h"

namespace velk::test {
namespace {

// Lengths of what lies between the anchor's first base and the far gap's end.
struct FarLayout {
  std::size_t contig = 300;   // the anchor's
  int64_t gap = 400;          // next to it
  std::size_t between = 170;  // the contig between the two gaps
  int64_t farGap = 500;
};

const std::string& lastContig() {
  static const std::string bases = randomBases(150, 43);
  return bases;
}

class ForwardFarGap : public CheckForwardRead {
 protected:
  ForwardFarGap() { BIGGAPLEN = 5000; }

  Records found(const FarLayout& layout, int insert) {
    const std::string contig = randomBases(layout.contig, 41);
    assembleScaffold(
        {{contig}, {randomBases(layout.between, 42), layout.gap}, {lastContig(), layout.farGap}});
    return check(readAt(contig, 50, 100), mate, insert).records;
  }

  Records far(const FarLayout& layout, int64_t position) const {
    return {inGap(1, layout.farGap, mate, position)};
  }
};

class ReverseFarGap : public CheckReverseRead {
 protected:
  ReverseFarGap() { BIGGAPLEN = 5000; }

  Records found(const FarLayout& layout, int insert) {
    const std::string contig = randomBases(layout.contig, 41);
    assembleScaffold(
        {{lastContig()}, {randomBases(layout.between, 42), layout.farGap}, {contig, layout.gap}});
    const auto offset = static_cast<int64_t>(layout.contig) - 150;
    return check(readAt(contig, offset, 100), mate, insert).records;
  }

  Records far(const FarLayout& layout, int64_t position) const {
    return {inGap(0, layout.farGap, mate, position)};
  }
};

TEST_F(ForwardFarGap, TheMateAlone) {
  EXPECT_EQ(far({}, 80), found({}, 1000));
}

// 500 + 170 + 400 bases, then the 250 of the contig that end with the anchor, less the insert.
TEST_F(ReverseFarGap, TheMateAlone) {
  EXPECT_EQ(far({}, 320), found({}, 1000));
}

TEST_F(ForwardFarGap, TheContigBetweenIsShorterThanTwoReads) {
  EXPECT_EQ(far({.between = 199}, 51), found({.between = 199}, 1000));
  EXPECT_EQ(Records{}, found({.between = 200}, 1000));
}

TEST_F(ReverseFarGap, TheContigBetweenIsShorterThanTwoReads) {
  EXPECT_EQ(far({.between = 199}, 349), found({.between = 199}, 1000));
  EXPECT_EQ(Records{}, found({.between = 200}, 1000));
}

TEST_F(ForwardFarGap, TheFarGapIsLongerThanTwoReads) {
  EXPECT_EQ(far({.farGap = 201}, 80), found({.farGap = 201}, 1000));
  EXPECT_EQ(Records{}, found({.farGap = 200}, 1000));
}

TEST_F(ReverseFarGap, TheFarGapIsLongerThanTwoReads) {
  EXPECT_EQ(far({.farGap = 201}, 21), found({.farGap = 201}, 1000));
  EXPECT_EQ(Records{}, found({.farGap = 200}, 1000));
}

TEST_F(ForwardFarGap, TheAnchorsContigIsLongerThanTwoReads) {
  EXPECT_EQ(far({.contig = 201}, 79), found({.contig = 201}, 900));
  EXPECT_EQ(Records{}, found({.contig = 200}, 900));
}

TEST_F(ReverseFarGap, TheAnchorsContigIsLongerThanTwoReads) {
  EXPECT_EQ(far({.contig = 201}, 321), found({.contig = 201}, 900));
  EXPECT_EQ(Records{}, found({.contig = 200}, 900));
}

// Two reads are twice the expected length, not the lengths of these two.
TEST_F(ForwardFarGap, TheExpectedReadLengthCounts) {
  readLen = 86;
  EXPECT_EQ(far({}, 80), found({}, 1000));
  readLen = 85;  // 170 is not more than 170
  EXPECT_EQ(Records{}, found({}, 1000));
  readLen = 149;
  EXPECT_EQ(far({}, 80), found({}, 1000));
  readLen = 150;  // 300 is not less than 300
  EXPECT_EQ(Records{}, found({}, 1000));
  readLen = 2000000000;
  EXPECT_EQ(Records{}, found({}, 1000));
}

TEST_F(ReverseFarGap, TheExpectedReadLengthCounts) {
  readLen = 86;
  EXPECT_EQ(far({}, 320), found({}, 1000));
  readLen = 85;
  EXPECT_EQ(Records{}, found({}, 1000));
  readLen = 149;
  EXPECT_EQ(far({}, 320), found({}, 1000));
  readLen = 150;
  EXPECT_EQ(Records{}, found({}, 1000));
  readLen = 2000000000;
  EXPECT_EQ(Records{}, found({}, 1000));
}

TEST_F(ForwardFarGap, TheMatesLastBaseLiesInOrBehindTheFarGap) {
  EXPECT_EQ(Records{}, found({}, 820));
  EXPECT_EQ(far({}, -99), found({}, 821));
}

TEST_F(ReverseFarGap, TheMatesFirstBaseLiesInOrBeforeTheFarGap) {
  EXPECT_EQ(Records{}, found({}, 820));
  EXPECT_EQ(far({}, 499), found({}, 821));
}

TEST_F(ForwardFarGap, TheMatesFirstBaseLiesInOrBeforeTheFarGap) {
  EXPECT_EQ(far({}, 499), found({}, 1419));
  EXPECT_EQ(Records{}, found({}, 1420));
}

TEST_F(ReverseFarGap, TheMatesLastBaseLiesInOrBehindTheFarGap) {
  EXPECT_EQ(far({}, -99), found({}, 1419));
  EXPECT_EQ(Records{}, found({}, 1420));
}

// The range is that of the mate, not of the anchor.
TEST_F(ForwardFarGap, AMateOfAnotherLengthThanTheAnchor) {
  const std::string contig = randomBases(300, 41);
  const std::string shorter = mate.substr(0, 60);
  assembleScaffold({{contig}, {randomBases(170, 42), 400}, {lastContig(), 500}});
  const std::string anchor = readAt(contig, 50, 100);
  EXPECT_EQ((Records{inGap(1, 500, shorter, -59)}), check(anchor, shorter, 821).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 820).records);
  EXPECT_EQ((Records{inGap(1, 500, shorter, 499)}), check(anchor, shorter, 1379).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 1380).records);
}

TEST_F(ReverseFarGap, AMateOfAnotherLengthThanTheAnchor) {
  const std::string contig = randomBases(300, 41);
  const std::string shorter = mate.substr(0, 60);
  assembleScaffold({{lastContig()}, {randomBases(170, 42), 500}, {contig, 400}});
  const std::string anchor = readAt(contig, 150, 100);
  EXPECT_EQ((Records{inGap(0, 500, shorter, 499)}), check(anchor, shorter, 821).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 820).records);
  EXPECT_EQ((Records{inGap(0, 500, shorter, -59)}), check(anchor, shorter, 1379).records);
  EXPECT_EQ(Records{}, check(anchor, shorter, 1380).records);
}

// 455 bases behind the near gap's start, moved to its end, and 95 in front of the far gap's.
TEST_F(ForwardFarGap, BothGapsMayHoldTheMate) {
  const FarLayout layout{.between = 150};
  EXPECT_EQ((Records{inGap(0, 400, mate, 400), inGap(1, 500, mate, -95)}), found(layout, 805));
  EXPECT_EQ((Records{inGap(0, 400, mate, 400)}), found(layout, 800));
  EXPECT_EQ((Records{inGap(1, 500, mate, -88)}), found(layout, 812));
}

TEST_F(ReverseFarGap, BothGapsMayHoldTheMate) {
  const FarLayout layout{.between = 150};
  EXPECT_EQ((Records{inGap(1, 400, mate, -100), inGap(0, 500, mate, 495)}), found(layout, 805));
  EXPECT_EQ((Records{inGap(1, 400, mate, -100)}), found(layout, 800));
  EXPECT_EQ((Records{inGap(0, 500, mate, 488)}), found(layout, 812));
}

// A near gap of -20 bases shortens the way to the far gap.
TEST_F(ForwardFarGap, ANegativeNearGap) {
  const FarLayout layout{.gap = -20};
  EXPECT_EQ(far(layout, 100), found(layout, 600));
}

TEST_F(ReverseFarGap, ANegativeNearGap) {
  const FarLayout layout{.gap = -20};
  EXPECT_EQ(far(layout, 300), found(layout, 600));
}

TEST_F(ForwardFarGap, ANegativeFarGapHoldsNoMate) {
  EXPECT_EQ(Records{}, found({.farGap = -20}, 840));
}

TEST_F(ReverseFarGap, ANegativeFarGapHoldsNoMate) {
  EXPECT_EQ(Records{}, found({.farGap = -20}, 840));
}

// Two contigs must follow: the last but one has only one gap behind it.
TEST_F(CheckForwardRead, NoFarGapBehindTheLastButOneContig) {
  BIGGAPLEN = 5000;
  const std::string contig = randomBases(300, 41);
  const std::string anchor = readAt(contig, 50, 100);
  const TestContig front{randomBases(150, 44), 30};
  const TestContig between{randomBases(170, 42), 400};
  assembleScaffold({front, {contig, 30}, between});
  EXPECT_EQ(Records{}, check(anchor, mate, 1000).records);
  assembleScaffold({front, {contig, 30}, between, {lastContig(), 500}});
  EXPECT_EQ((Records{inGap(2, 500, mate, 80)}), check(anchor, mate, 1000).records);
}

TEST_F(CheckReverseRead, NoFarGapInFrontOfTheSecondContig) {
  BIGGAPLEN = 5000;
  const std::string contig = randomBases(300, 41);
  const std::string anchor = readAt(contig, 150, 100);
  const TestContig behind{randomBases(150, 44), 30};
  const std::string between = randomBases(170, 42);
  assembleScaffold({{between}, {contig, 400}, behind});
  EXPECT_EQ(Records{}, check(anchor, mate, 1000).records);
  assembleScaffold({{lastContig()}, {between, 500}, {contig, 400}, behind});
  EXPECT_EQ((Records{inGap(0, 500, mate, 320)}), check(anchor, mate, 1000).records);
}

}  // namespace
}  // namespace velk::test
