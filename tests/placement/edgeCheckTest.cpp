// The two checks of a read over a contig's end: MapRead2Lcontig and MapRead2Rcontig.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "placement/Read2Scaf.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

std::string contigOf(std::size_t length) {
  return randomBases(length, 17);
}

// ---- over the right end -------------------------------------------------------------------------

class MapRead2Lcontig : public RunParametersTest {
 protected:
  // The answer for a read that agrees with a contig, but for the read's bases `mismatches`.
  static int check(std::size_t contig, int64_t read, int64_t offset,
                   const std::vector<std::size_t>& mismatches = {}) {
    const std::string bases = contigOf(contig);
    return velk::MapRead2Lcontig(bases, withMismatches(readAt(bases, offset, read), mismatches),
                                 offset);
  }
};

TEST_F(MapRead2Lcontig, ThirtyOfAHundredBasesMustOverlap) {
  EXPECT_EQ(0, check(100, 100, 80));  // 20 bases
  EXPECT_EQ(0, check(100, 100, 71));  // 29 bases
  EXPECT_EQ(1, check(100, 100, 70));  // 30 bases
}

TEST_F(MapRead2Lcontig, AShortOverlapIsRefusedWhateverItsShareOfEqualBases) {
  mapCut = 0;
  EXPECT_EQ(0, check(100, 100, 80));
  EXPECT_EQ(0, check(100, 100, 71));
  EXPECT_EQ(1, check(100, 100, 70));
}

TEST_F(MapRead2Lcontig, AllOfThirtyBasesMustBeEqual) {
  for (std::size_t at = 0; at < 30; ++at) EXPECT_EQ(0, check(100, 100, 70, {at})) << at;
}

TEST_F(MapRead2Lcontig, TheLeastOverlapIsCutOffToAWholeNumber) {
  EXPECT_EQ(1, check(100, 101, 70));  // 30.3 bases are 30
  EXPECT_EQ(1, check(100, 99, 71));   // 29.7 bases are 29
  EXPECT_EQ(0, check(100, 99, 72));
}

TEST_F(MapRead2Lcontig, TheReadMustReachTheContigsLastBase) {
  EXPECT_EQ(0, check(100, 50, 49));  // ends one base before
  EXPECT_EQ(1, check(100, 50, 50));
  EXPECT_EQ(1, check(100, 50, 51));
  mapCut = 0;
  EXPECT_EQ(0, check(100, 50, 49));
}

TEST_F(MapRead2Lcontig, TheOverhangIsNotLookedAt) {
  // 50 overlapping bases, of which one may differ.
  EXPECT_EQ(1, check(100, 100, 50, {50, 60, 70, 80, 99}));
  EXPECT_EQ(1, check(100, 100, 50, {49, 50, 60, 70, 80, 99}));
  EXPECT_EQ(0, check(100, 100, 50, {48, 49}));
}

TEST_F(MapRead2Lcontig, OneMismatchNeedsFiftyBases) {
  EXPECT_EQ(0, check(100, 100, 51, {20}));  // 48 of 49
  EXPECT_EQ(1, check(100, 100, 50, {20}));  // 49 of 50
  EXPECT_EQ(0, check(200, 100, 101, {20, 21}));
  EXPECT_EQ(1, check(200, 100, 100, {20, 21}));  // 98 of 100
}

TEST_F(MapRead2Lcontig, CaseDiffersAndNEqualsOnlyN) {
  const std::string contig = contigOf(70) + "acgtNNNNNNacgtacgtacgtacgtacgt";
  const std::string overhang(40, 'G');
  std::string read = contig.substr(70) + overhang;
  EXPECT_EQ(1, velk::MapRead2Lcontig(contig, read, 70));
  read[0] = 'A';
  EXPECT_EQ(0, velk::MapRead2Lcontig(contig, read, 70));
  read[0] = 'a';
  read[4] = 'n';
  EXPECT_EQ(0, velk::MapRead2Lcontig(contig, read, 70));
}

TEST_F(MapRead2Lcontig, OddOverRatios) {
  for (const double none : {kNoNumber, -1.0, -1e300, -std::numeric_limits<double>::infinity()}) {
    OverRatio = none;
    EXPECT_EQ(1, check(100, 100, 99)) << none;
  }
  for (const double all : {1e9, 1e300, std::numeric_limits<double>::infinity()}) {
    OverRatio = all;
    EXPECT_EQ(0, check(100, 100, 1)) << all;
  }
  OverRatio = 0.99;
  EXPECT_EQ(1, check(100, 100, 1));
  OverRatio = 1;
  EXPECT_EQ(0, check(100, 100, 1));
}

TEST_F(MapRead2Lcontig, OddMapCuts) {
  for (const double never : {kNoNumber, 1.01, 1e300, std::numeric_limits<double>::infinity()}) {
    mapCut = never;
    EXPECT_EQ(0, check(100, 100, 50)) << never;
  }
  mapCut = 1;
  EXPECT_EQ(1, check(100, 100, 50));
  mapCut = -1;
  EXPECT_EQ(1, velk::MapRead2Lcontig(std::string(100, 'A'), std::string(100, 'C'), 50));
}

// ---- over the left end --------------------------------------------------------------------------

class MapRead2Rcontig : public RunParametersTest {
 protected:
  static int check(std::size_t contig, int64_t read, int64_t offset,
                   const std::vector<std::size_t>& mismatches = {}) {
    const std::string bases = contigOf(contig);
    return velk::MapRead2Rcontig(bases, withMismatches(readAt(bases, offset, read), mismatches),
                                 offset);
  }
};

TEST_F(MapRead2Rcontig, ComparesTheReachOnly) {
  EXPECT_EQ(1, check(200, 100, -40));
  EXPECT_EQ(1, check(200, 100, -40, {0, 10, 20, 39}));
  EXPECT_EQ(1, check(200, 100, -40, {40}));  // 59 of 60
  EXPECT_EQ(1, check(200, 100, -40, {99}));
  EXPECT_EQ(0, check(200, 100, -40, {40, 99}));  // 58 of 60
}

TEST_F(MapRead2Rcontig, OneMismatchNeedsFiftyBases) {
  EXPECT_EQ(0, check(200, 100, -51, {60}));
  EXPECT_EQ(1, check(200, 100, -50, {60}));
}

TEST_F(MapRead2Rcontig, NoLeastReach) {
  EXPECT_EQ(1, check(200, 100, -95));
  EXPECT_EQ(0, check(200, 100, -95, {97}));
  EXPECT_EQ(1, check(200, 100, -99));
  EXPECT_EQ(0, check(200, 100, -99, {99}));
}

TEST_F(MapRead2Rcontig, ReadOverAShortContigIsRefusedThoughAllItsBasesAgree) {
  EXPECT_EQ(0, check(50, 100, -40));  // 50 of 60
}

// Measured against the contig's 50 bases, one mismatch would be accepted.
TEST_F(MapRead2Rcontig, ShortContigIsMeasuredAgainstTheReach) {
  EXPECT_EQ(1, check(50, 100, -50));        // the read ends with the contig
  EXPECT_EQ(1, check(50, 100, -49));        // 50 of 51
  EXPECT_EQ(0, check(50, 100, -48));        // 50 of 52
  EXPECT_EQ(1, check(50, 100, -50, {60}));  // 49 of 50
  EXPECT_EQ(0, check(50, 100, -49, {60}));  // 49 of 51
}

TEST_F(MapRead2Rcontig, BasesBehindAShortContigDoNotCount) {
  mapCut = 0.8;
  EXPECT_EQ(1, check(50, 100, -40, {95, 96, 97, 98, 99}));  // 50 of 60
  EXPECT_EQ(0, check(50, 100, -40, {40, 88, 89}));          // 47 of 60
  EXPECT_EQ(1, check(50, 100, -40, {88, 89}));              // 48 of 60
}

TEST_F(MapRead2Rcontig, ContigShorterThanTheReadsShareCountsNothing) {
  mapCut = 0.5;
  OverRatio = 0.5;
  EXPECT_EQ(1, check(50, 100, -40));  // 50 is not more than 50
  OverRatio = 0.51;
  EXPECT_EQ(0, check(50, 100, -40));
  EXPECT_EQ(1, check(60, 100, -40));  // the read does not run past the contig's end
  OverRatio = 0.9;
  EXPECT_EQ(1, check(60, 100, -40));
  EXPECT_EQ(0, check(59, 100, -40));
}

TEST_F(MapRead2Rcontig, CountingNothingIsNoRefusal) {
  mapCut = 0;
  OverRatio = 0.9;
  EXPECT_EQ(1, check(50, 100, -40));
}

TEST_F(MapRead2Rcontig, OddParameters) {
  mapCut = 0.5;
  OverRatio = kNoNumber;
  EXPECT_EQ(1, check(50, 100, -40));
  OverRatio = 1e300;
  EXPECT_EQ(0, check(50, 100, -40));
  EXPECT_EQ(1, check(200, 100, -40));
  OverRatio = -1e300;
  EXPECT_EQ(1, check(50, 100, -40));
  for (const double never : {kNoNumber, 1.01, 1e300}) {
    mapCut = never;
    EXPECT_EQ(0, check(200, 100, -40)) << never;
  }
  mapCut = -1e300;
  EXPECT_EQ(1, velk::MapRead2Rcontig(std::string(100, 'A'), std::string(100, 'C'), -50));
}

TEST_F(MapRead2Rcontig, NoReachIsRefused) {
  OverRatio = 0;
  EXPECT_EQ(0, check(200, 100, -100));
}

}  // namespace
}  // namespace velk::test
