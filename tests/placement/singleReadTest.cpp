// checkSingleRead: which reads it records, and as what.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "placement/Read2Scaf.h"
#include "streaming/readBuffer.h"
#include "tests/placement/singleTest.h"

namespace velk::test {
namespace {

TEST_F(CheckSingleRead, AbsentReadLeavesTheWalkAtItsEnd) {
  const Outcome outcome = single(randomBases(100, 50));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(CheckSingleRead, ReadOfOneKmer) {
  const std::string read = readAt(a, 69, 31);
  Outcome outcome = single(read);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -31, 0, 400}}), outcome.records);

  outcome = single(randomBases(31, 50));
  EXPECT_EQ(1, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

// The 30 bases that overlap hold a k-mer only when it is no longer than they are.
TEST_F(CheckSingleRead, ReadOverTheRightEndOfAHundredBases) {
  Kmer = 30;
  assembleContigs();
  const std::string read = readAt(a, 70, 100);
  const Outcome outcome = single(read);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -30, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, ReadOverTheLeftEnd) {
  const std::string read = readAt(b, -40, 100);
  const Outcome outcome = single(read);
  EXPECT_EQ(40, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, 360, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, ReadThatTouchesTheGapIsRecorded) {
  const std::string read = readAt(a, 40, 60);
  Outcome outcome = single(read);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -60, 0, 400}}), outcome.records);

  outcome = single(readAt(a, 39, 60));
  EXPECT_EQ(30, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(CheckSingleRead, EveryGapOfEveryScaffold) {
  std::string read = readAt(b, 250, 100);
  EXPECT_EQ((Records{{read, 0, 1, -50, 1, 50}}), single(read).records);
  read = readAt(c, -20, 90);
  EXPECT_EQ((Records{{read, 0, 1, 30, 1, 50}}), single(read).records);
  read = readAt(d, 120, 100);
  EXPECT_EQ(Records{}, single(read).records);  // 30 bases hold no k-mer
  read = readAt(d, 119, 100);
  EXPECT_EQ((Records{{read, 1, 0, -31, 2, 7}}), single(read).records);
  read = readAt(e, -60, 100);
  EXPECT_EQ((Records{{read, 1, 0, -53, 2, 7}}), single(read).records);
}

TEST_F(CheckSingleRead, OffsetZeroIsPassedOver) {
  Outcome outcome = single(readAt(b, 0, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  // A later k-mer puts the same read in front of contig c.
  const std::string read = b.substr(0, 31) + c.substr(0, 69);
  outcome = single(read);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 1, 19, 1, 50}}), outcome.records);
}

TEST_F(CheckSingleRead, ShortContigSpannedFromOffsetZeroIsPassedOver) {
  const std::string between = randomBases(80, 60);
  assemble({{{a}, {between, 10}, {b, 20}}});
  EXPECT_EQ(Records{}, single(readAt(between, 0, 100)).records);
  const std::string read = readAt(between, -1, 81);
  EXPECT_EQ((Records{{read, 0, 0, 9, 0, 10}}), single(read).records);
}

TEST_F(CheckSingleRead, HitOverTheEndOfTheLastContigIsPassedOver) {
  Outcome outcome = single(readAt(c, 150, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  const std::string read = c.substr(169) + b.substr(0, 69);
  outcome = single(read);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, 369, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, HitInFrontOfTheFirstContigIsPassedOver) {
  Outcome outcome = single(readAt(a, -40, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
  EXPECT_EQ(Records{}, single(readAt(d, -40, 100)).records);

  const std::string read = "ACGTA" + a.substr(0, 31) + b.substr(0, 64);
  outcome = single(read);
  EXPECT_EQ(36, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, 364, 0, 400}}), outcome.records);
}

// The only contig of a scaffold is its first and its last.
TEST_F(CheckSingleRead, ScaffoldWithoutGaps) {
  assemble({{}, {{a}}, {{d}, {e, 7}}});
  EXPECT_EQ(Records{}, single(readAt(a, 60, 80)).records);
  EXPECT_EQ(Records{}, single(readAt(a, -40, 80)).records);
  const std::string read = readAt(e, -40, 80);
  EXPECT_EQ((Records{{read, 2, 0, -33, 0, 7}}), single(read).records);
}

TEST_F(CheckSingleRead, AContigRunOverAtBothEndsIsJudgedFromTheLeft) {
  const std::string between = randomBases(80, 60);
  assemble({{{a}, {between, 10}, {b, 20}}});
  EXPECT_EQ(Records{}, single(readAt(between, -10, 92)).records);  // 80 of 82
  mapCut = 0.9;
  const std::string read = readAt(between, -10, 95);  // 80 of 85
  EXPECT_EQ((Records{{read, 0, 0, 0, 0, 10}}), single(read).records);
}

TEST_F(CheckSingleRead, NegativeAndEmptyGaps) {
  assemble({{{a}, {b, -10}, {c, 0}}});
  std::string read = readAt(a, 50, 80);
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, ~uint64_t{0} - 9}}), single(read).records);
  read = readAt(b, -40, 80);
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, ~uint64_t{0} - 9}}), single(read).records);
  read = readAt(c, -40, 80);
  EXPECT_EQ((Records{{read, 0, 1, -40, 1, 0}}), single(read).records);
}

TEST_F(CheckSingleRead, WritesToTheNextSlotOfItsRow) {
  setWorkers(3);
  const TestRecord kept{"kept", 9, 8, 7, 6, 5};
  for (int t = 0; t < 3; ++t) {
    for (uint32_t slot = 0; slot < 9;) recordFound(t, slot, "kept", {9, 8, 7, 6, 5});
  }
  const std::string first = readAt(a, 50, 80);
  const std::string second = readAt(b, -40, 80);
  int64_t i = 0;
  uint32_t n = 5;
  checkSingleRead(i, first, n, 2);
  EXPECT_EQ(6U, n);
  checkSingleRead(i, randomBases(80, 50), n, 2);
  EXPECT_EQ(6U, n);
  checkSingleRead(i, second, n, 2);
  EXPECT_EQ(7U, n);
  const TestRecord firstRecord{first, 0, 0, -50, 0, 400};
  const TestRecord secondRecord{second, 0, 0, 360, 0, 400};
  EXPECT_EQ((Records{kept, kept, kept, kept, kept, firstRecord, secondRecord, kept, kept}),
            recordsOf(2, 9));
  EXPECT_EQ(Records(9, kept), recordsOf(0, 9));
  EXPECT_EQ(Records(9, kept), recordsOf(1, 9));
}

}  // namespace
}  // namespace velk::test
