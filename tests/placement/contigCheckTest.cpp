// The check of a read anywhere on a contig: MapRead2Contig.
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <string>
#include <vector>

#include "placement/Read2Scaf.h"
#include "placement/edgeCheck.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

constexpr double kNoNumber = std::numeric_limits<double>::quiet_NaN();

class MapRead2Contig : public RunParametersTest {
 protected:
  // The answer for a read that agrees with a contig, but for the read's bases `mismatches`.
  static int check(std::size_t contig, int64_t read, int64_t offset,
                   const std::vector<std::size_t>& mismatches = {}) {
    const std::string bases = randomBases(contig, 17);
    return velk::MapRead2Contig(bases, withMismatches(readAt(bases, offset, read), mismatches),
                                offset);
  }
};

TEST_F(MapRead2Contig, ThirtyOfAHundredBasesMustLieBeforeTheRightEnd) {
  mapCut = 0;
  EXPECT_EQ(1, check(100, 100, 70));
  EXPECT_EQ(0, check(100, 100, 71));
  EXPECT_EQ(0, check(100, 100, 99));
}

TEST_F(MapRead2Contig, ThirtyOfAHundredBasesMustLieBehindTheLeftEnd) {
  mapCut = 0;
  EXPECT_EQ(1, check(200, 100, -70));
  EXPECT_EQ(0, check(200, 100, -71));
  EXPECT_EQ(0, check(200, 100, -99));
}

// Unlike MapRead2Lcontig, which cuts 30.3 down to 30.
TEST_F(MapRead2Contig, TheLeastOverlapIsNotCutOff) {
  EXPECT_EQ(0, check(100, 101, 70));
  EXPECT_EQ(1, check(100, 101, 69));
  EXPECT_EQ(0, check(200, 101, -71));
  EXPECT_EQ(1, check(200, 101, -70));
}

TEST_F(MapRead2Contig, NoOverlapIsAskedForAtOffsetZero) {
  EXPECT_EQ(1, check(10, 100, 0));
  EXPECT_EQ(0, check(10, 100, 0, {9}));
  EXPECT_EQ(1, check(10, 100, 0, {10, 11, 12}));
  OverRatio = 5;
  EXPECT_EQ(1, check(10, 100, 0));
}

TEST_F(MapRead2Contig, ComparesTheWholeReadInsideTheContig) {
  EXPECT_EQ(1, check(100, 50, 0));
  EXPECT_EQ(1, check(100, 50, 0, {0}));  // 49 of 50
  EXPECT_EQ(0, check(100, 50, 0, {0, 49}));
  EXPECT_EQ(1, check(100, 50, 20, {49}));
  EXPECT_EQ(0, check(100, 50, 20, {0, 49}));
  EXPECT_EQ(0, check(100, 49, 20, {48}));  // 48 of 49
  EXPECT_EQ(1, check(100, 50, 50, {49}));
  EXPECT_EQ(0, check(100, 50, 50, {0, 49}));
}

TEST_F(MapRead2Contig, ComparesUpToTheRightEnd) {
  EXPECT_EQ(1, check(100, 100, 50, {20, 50, 51, 99}));  // 49 of 50
  EXPECT_EQ(0, check(100, 100, 50, {20, 49}));
  EXPECT_EQ(0, check(100, 100, 51, {20}));  // 48 of 49
}

TEST_F(MapRead2Contig, ComparesFromTheLeftEnd) {
  EXPECT_EQ(1, check(200, 100, -50, {0, 1, 49, 70}));  // 49 of 50
  EXPECT_EQ(0, check(200, 100, -50, {50, 99}));
  EXPECT_EQ(0, check(200, 100, -51, {70}));  // 48 of 49
}

// Unlike MapRead2Rcontig, which measures against the reach.
TEST_F(MapRead2Contig, ReadOverAShortContigIsMeasuredAgainstTheContig) {
  EXPECT_EQ(1, check(50, 100, -40));
  EXPECT_EQ(1, check(50, 100, -40, {0, 39, 60, 90, 99}));  // 49 of 50
  EXPECT_EQ(0, check(50, 100, -40, {40, 89}));
  EXPECT_EQ(0, check(49, 100, -40, {60}));  // 48 of 49
  EXPECT_EQ(1, check(60, 100, -40, {99}));  // the read ends with the contig: 59 of 60
  EXPECT_EQ(1, check(59, 100, -40, {99}));  // one base before it: 59 of 59
  EXPECT_EQ(1, check(61, 100, -40, {99}));  // one base behind it: 59 of 60
}

// The share asked for looks at the read's reach alone, not at how much the contig covers.
TEST_F(MapRead2Contig, AContigShorterThanTheShareIsNoRefusalInFrontOfIt) {
  EXPECT_EQ(1, check(10, 100, -40));
  EXPECT_EQ(0, check(10, 100, 1));
}

TEST_F(MapRead2Contig, CaseDiffers) {
  EXPECT_EQ(0, velk::MapRead2Contig("ACGTACGT", "ACGTACGt", 0));
  EXPECT_EQ(1, velk::MapRead2Contig("ACGTacgN", "ACGTacgN", 0));
}

TEST_F(MapRead2Contig, OddOverRatios) {
  for (const double none : {kNoNumber, 0.0, -1.0, -1e300}) {
    OverRatio = none;
    EXPECT_EQ(1, check(100, 100, 99)) << none;
    EXPECT_EQ(1, check(200, 100, -99)) << none;
  }
  OverRatio = 1e300;
  EXPECT_EQ(0, check(200, 100, 1));
  EXPECT_EQ(0, check(200, 100, -1));
  EXPECT_EQ(1, check(200, 100, 0));
  OverRatio = 2;  // the contig's share behind the offset, not the read's: 100 bases ask for 200
  EXPECT_EQ(1, check(300, 100, 100));
  EXPECT_EQ(0, check(300, 100, 101));
}

TEST_F(MapRead2Contig, OddMapCuts) {
  for (const double never : {kNoNumber, 1.01, 1e300}) {
    mapCut = never;
    EXPECT_EQ(0, check(200, 100, 50)) << never;
  }
  mapCut = -1e300;
  EXPECT_EQ(1, velk::MapRead2Contig(std::string(100, 'A'), std::string(100, 'C'), 0));
}

TEST_F(MapRead2Contig, NothingToCompareIsRefused) {
  OverRatio = 0;
  mapCut = 0;
  EXPECT_EQ(0, check(200, 100, -100));
  EXPECT_EQ(0, check(0, 100, 0));
  EXPECT_EQ(0, check(200, 0, 0));
}

// The comparison kernel against a loop.

std::size_t naiveCount(const char* one, const char* other, std::size_t length) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < length; ++i) {
    if (one[i] == other[i]) equal = equal + 1;
  }
  return equal;
}

// Bytes of which about half agree between two texts, unlike at every alignment.
std::string halfEqual(std::size_t length, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(length, ' ');
  for (char& byte : bytes) byte = random() % 2 == 0 ? 'A' : 'C';
  return bytes;
}

TEST(CountEqual, LengthsUpTo130AtAllAlignments) {
  constexpr std::size_t kAlignments = 64;
  const std::string one = halfEqual(256, 1);
  const std::string other = halfEqual(256, 2);
  for (std::size_t i = 0; i < kAlignments; ++i) {
    for (std::size_t j = 0; j < kAlignments; ++j) {
      for (std::size_t length = 0; length <= 130; ++length) {
        ASSERT_EQ(naiveCount(one.data() + i, other.data() + j, length),
                  countEqual(one.data() + i, other.data() + j, length))
            << "length " << length << " from " << i << " and " << j;
      }
    }
  }
}

TEST(CountEqual, EqualBytesOutsideTheStretchesDoNotCount) {
  const std::string text(300, 'A');
  for (std::size_t length = 0; length <= 130; ++length) {
    EXPECT_EQ(length, countEqual(text.data() + 100, text.data() + 101, length));
  }
}

TEST(CountEqual, EveryPlaceCountsOnce) {
  const std::string one(130, 'A');
  for (std::size_t at = 0; at < one.size(); ++at) {
    std::string other(130, 'C');
    other[at] = 'A';
    EXPECT_EQ(1U, countEqual(one.data(), other.data(), one.size())) << at;
    EXPECT_EQ(0U, countEqual(one.data(), other.data(), at)) << at;
  }
}

TEST(CountEqual, LongStretches) {
  for (const std::size_t length : {255U, 256U, 257U, 4080U, 4096U, 65536U, 100003U}) {
    const std::string same(length, 'G');
    EXPECT_EQ(length, countEqual(same.data(), same.data(), length));
    const std::string one = halfEqual(length, 3);
    const std::string other = halfEqual(length, 4);
    EXPECT_EQ(naiveCount(one.data(), other.data(), length),
              countEqual(one.data(), other.data(), length));
  }
}

TEST(CountEqual, BytesAreComparedAsTheyStand) {
  std::string all(256, '\0');
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<char>(i);
  EXPECT_EQ(256U, countEqual(all.data(), all.data(), 256));
  for (std::size_t bit = 0; bit < 8; ++bit) {
    std::string flipped = all;
    for (char& byte : flipped) byte = static_cast<char>(byte ^ (1 << bit));
    EXPECT_EQ(0U, countEqual(all.data(), flipped.data(), 256)) << "bit " << bit;
  }
  EXPECT_EQ(0U, countEqual("acgt", "ACGT", 4));
}

// With AddressSanitizer a byte read behind either stretch is an error.
TEST(CountEqual, ReadsNothingOutsideTheStretches) {
  for (std::size_t length = 0; length <= 130; ++length) {
    const std::vector<char> one(length, 'A');
    const std::vector<char> other(length, 'A');
    EXPECT_EQ(length, countEqual(one.data(), other.data(), length));
  }
}

}  // namespace

}  // namespace velk::test
