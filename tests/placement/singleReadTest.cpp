// checkSingleRead: which reads it records, and as what.
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "contig/contig.h"
#include "placement/Read2Scaf.h"
#include "streaming/readBuffer.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

using Records = std::vector<TestRecord>;

/// Two scaffolds, a 400 b 50 c and d 7 e (contigs and the lengths of gaps 0, 1 and 2).
class CheckSingleRead : public PlacementTest {
 protected:
  CheckSingleRead() { assembleContigs(); }

  void assembleContigs() { assemble({{{a}, {b, 400}, {c, 50}}, {{d}, {e, 7}}}); }

  const std::string a = randomBases(100, 1);
  const std::string b = randomBases(300, 2);
  const std::string c = randomBases(200, 3);
  const std::string d = randomBases(150, 4);
  const std::string e = randomBases(150, 5);
};

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

TEST_F(CheckSingleRead, OffsetZeroIsNotPlaced) {
  Outcome outcome = single(readAt(b, 0, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  // A later k-mer puts the same read in front of contig c.
  const std::string read = b.substr(0, 31) + c.substr(0, 69);
  outcome = single(read);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 1, 19, 1, 50}}), outcome.records);
}

TEST_F(CheckSingleRead, ShortContigSpannedFromOffsetZeroIsNotPlaced) {
  const std::string between = randomBases(80, 60);
  assemble({{{a}, {between, 10}, {b, 20}}});
  EXPECT_EQ(Records{}, single(readAt(between, 0, 100)).records);
  const std::string read = readAt(between, -1, 81);
  EXPECT_EQ((Records{{read, 0, 0, 9, 0, 10}}), single(read).records);
}

TEST_F(CheckSingleRead, HitOverTheEndOfTheLastContigIsSkipped) {
  Outcome outcome = single(readAt(c, 150, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  const std::string read = c.substr(169) + b.substr(0, 69);
  outcome = single(read);
  EXPECT_EQ(31, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, 369, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, HitInFrontOfTheFirstContigIsSkipped) {
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

// checkSingleRead: how it walks over the k-mers of a read.

TEST_F(CheckSingleRead, AHitRefusedOverTheRightEndMovesTheWalkOn) {
  const std::string read = a.substr(50, 40) + b.substr(0, 60);
  const Outcome outcome = single(read);
  EXPECT_EQ(40, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, 360, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, AHitRefusedOverTheLeftEndMovesTheWalkOn) {
  const std::string read = "ACGTACGTAC" + b.substr(0, 40) + e.substr(0, 50);
  const Outcome outcome = single(read);
  EXPECT_EQ(50, outcome.stop);
  EXPECT_EQ((Records{{read, 1, 0, -43, 2, 7}}), outcome.records);
}

// The first k-mer places the read on contig a, a later one would place it on contig b.
TEST_F(CheckSingleRead, TheFirstKmerThatPlacesTheReadDecides) {
  const std::string read = a.substr(50) + b.substr(0, 50);
  const Outcome outcome = single(read);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, AMismatchInTheFirstKmersMovesTheWalkBehindIt) {
  const std::string read = withMismatches(readAt(a, 30, 100), {12});  // 69 of 70
  const Outcome outcome = single(read);
  EXPECT_EQ(13, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -70, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, RepeatedKmersAreSkipped) {
  // d ends with the bases 40 to 79 of a: the k-mers 40 to 49 of a are repeated.
  assemble({{{a}, {b, 400}}, {{d + a.substr(40, 40)}, {e, 7}}});
  const std::string read = readAt(a, 40, 100);
  const Outcome outcome = single(read);
  EXPECT_EQ(10, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -60, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, AReadOfRepeatedKmersIsNotPlaced) {
  assemble({{{a}, {b, 400}}, {{d + a.substr(40)}, {e, 7}}});
  Outcome outcome = single(readAt(a, 40, 100));
  EXPECT_EQ(70, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);

  // Twice in the same contig.
  assemble({{{a + a.substr(60)}, {b, 400}}});
  outcome = single(readAt(a, 60, 100));
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(CheckSingleRead, ContigsBelowTheLeastLengthAreNotInTheIndex) {
  const std::string read = readAt(a, 50, 100);
  CONTIGLEN = 101;
  assembleContigs();
  EXPECT_EQ(Records{}, single(read).records);
  CONTIGLEN = 100;
  assembleContigs();
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, 400}}), single(read).records);
}

TEST_F(CheckSingleRead, OnlyTheStrandAsPassedIsLookedUp) {
  EXPECT_EQ(Records{}, single(reverseComplement(readAt(a, 50, 100))).records);
  EXPECT_EQ(Records{}, single(reverseComplement(readAt(b, -50, 100))).records);
}

// K-mers are looked up without regard to case, bases are compared as they stand.
TEST_F(CheckSingleRead, LowerCaseReadsHitButDoNotAgree) {
  std::string read = readAt(a, 50, 100);
  for (char& base : read) base = static_cast<char>(base - 'A' + 'a');
  EXPECT_EQ(Records{}, single(read).records);
  mapCut = 0;
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, 400}}), single(read).records);
}

TEST_F(CheckSingleRead, ANReadsAsAAndRaisesTheBaseBeforeIt) {
  const std::string contig = "CAGTNGTCCATGAC";
  Kmer = 5;
  CONTIGLEN = 5;
  mapCut = 0.7;
  assemble({{{contig}, {std::string(50, 'T'), 400}}});
  // The k-mers of CAGTN.. and CAGTA.. meet: a T is raised to itself.
  const std::string read = "CAGTAGTCCATGACGGG";
  EXPECT_EQ(Records{}, single(read).records);  // offset 0
  const Outcome outcome = single(read.substr(1));
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read.substr(1), 0, 0, -13, 0, 400}}), outcome.records);
}

TEST_F(CheckSingleRead, KmersBeyond32BasesMeetByTheirLast32) {
  Kmer = 40;
  assembleContigs();
  // The first eight bases differ: refused by the bases at 0.98, accepted at 0.8.
  const std::string read = withMismatches(readAt(a, 50, 100), {0, 1, 2, 3, 4, 5, 6, 7});
  EXPECT_EQ(Records{}, single(read).records);
  mapCut = 0.8;
  const Outcome outcome = single(read);
  EXPECT_EQ(0, outcome.stop);
  EXPECT_EQ((Records{{read, 0, 0, -50, 0, 400}}), outcome.records);
}

// Every read has a k-mer of no bases at each of its places, and it lies at many places.
TEST_F(CheckSingleRead, KmersOfNoBasesPlaceNothing) {
  Kmer = 0;
  assembleContigs();
  EXPECT_EQ(101, single(readAt(a, 50, 100)).stop);
  EXPECT_EQ(1, single("").stop);

  // Unique only where the whole index is one empty contig, which is both first and last.
  CONTIGLEN = 0;
  assemble({{{""}}});
  mapCut = -1;
  const Outcome outcome = single("ACGT");
  EXPECT_EQ(5, outcome.stop);
  EXPECT_EQ(Records{}, outcome.records);
}

TEST_F(CheckSingleRead, OddOverRatiosAndMapCuts) {
  const double noNumber = std::numeric_limits<double>::quiet_NaN();
  const std::string right = readAt(a, 50, 100);
  const std::string left = readAt(b, -50, 100);
  for (const double odd : {noNumber, -1e300}) {
    OverRatio = odd;
    EXPECT_EQ(1U, single(right).records.size()) << odd;
    EXPECT_EQ(1U, single(left).records.size()) << odd;
  }
  OverRatio = 1e300;
  EXPECT_EQ(0U, single(right).records.size());
  EXPECT_EQ(1U, single(left).records.size());
  OverRatio = 0.3;
  for (const double never : {noNumber, 1e300}) {
    mapCut = never;
    EXPECT_EQ(70, single(right).stop) << never;
    EXPECT_EQ(70, single(left).stop) << never;
  }
}

// A read much longer than any contig. Were all that is left of it gone through for each of its
// k-mers, the test would meet its time limit.

// The n has every k-mer looked up, as no filter is asked about such a read.
TEST_F(CheckSingleRead, AVeryLongReadComesToItsEnd) {
  std::string read = randomBases(std::size_t{1} << 23, 6);
  read[read.size() / 2] = 'n';
  int64_t stop = 0;
  uint32_t n = 0;
  checkSingleRead(stop, read, n, 0);
  EXPECT_EQ(stop, static_cast<int64_t>(read.size()) - Kmer + 1);
  EXPECT_EQ(n, 0U);
}

}  // namespace
}  // namespace velk::test
