// checkSingleRead: how it walks over the k-mers of a read.
#include <gtest/gtest.h>

#include <limits>
#include <string>

#include "contig/contig.h"
#include "tests/placement/singleTest.h"

namespace velk::test {
namespace {

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
TEST_F(CheckSingleRead, TheFirstPlacingKmerSettlesTheRead) {
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

TEST_F(CheckSingleRead, RepeatedKmersArePassedOver) {
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

}  // namespace
}  // namespace velk::test
