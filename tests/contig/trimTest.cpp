// The trimming of kept contigs by CuttEdge.
#include <limits>

#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

TEST_F(SplitScaffold, NothingIsTrimmedByDefault) {
  EXPECT_EQ(split(bases(5000)), (PlainContigs{{bases(5000), 0, 0}}));
}

TEST_F(SplitScaffold, ContigJustTooShortIsNotTrimmed) {
  CuttEdge = 10;
  readLen = 100;
  const std::string first = bases(300);
  const std::string second = bases(219);
  EXPECT_EQ(split(first + "NNN" + second),
            (PlainContigs{{first.substr(10, 280), 0, 10}, {second, 0, 3}}));
  EXPECT_EQ(positions_, "7\t0\t10\t290\n7\t1\t303\t522\n");
}

TEST_F(SplitScaffold, ContigOfTheLeastLengthIsTrimmedAtBothEnds) {
  CuttEdge = 10;
  readLen = 100;
  const std::string first = bases(219);
  const std::string second = bases(220);
  EXPECT_EQ(split("NN" + first + "NNN" + second),
            (PlainContigs{{first, 0, 0}, {second.substr(10, 200), 0, 13}}));
  EXPECT_EQ(positions_, "7\t0\t2\t221\n7\t1\t234\t434\n");
}

TEST_F(SplitScaffold, OnlyTheFrontCutCounts) {
  CuttEdge = 10;
  readLen = 5;
  const std::string contig = bases(100);
  EXPECT_EQ(split(contig + "NN" + contig + "NNN" + contig),
            (PlainContigs{{contig.substr(10, 80), 0, 10},
                          {contig.substr(10, 80), 0, 12},
                          {contig.substr(10, 80), 1, 13}}));
}

TEST_F(SplitScaffold, MergedGapIsMeasuredBetweenUntrimmedEnds) {
  CuttEdge = 10;
  readLen = 5;
  const std::string contig = bases(100);
  EXPECT_EQ(split(contig + "NN" + letters(60, 'A') + "NNN" + contig),
            (PlainContigs{{contig.substr(10, 80), 0, 10}, {contig.substr(10, 80), 0, 75}}));
}

TEST_F(SplitScaffold, TrimmingMayLeaveNothing) {
  CuttEdge = 50;
  readLen = 0;
  EXPECT_EQ(split(bases(100)), (PlainContigs{{"", 0, 50}}));
  EXPECT_EQ(positions_, "7\t0\t50\t50\n");
}

TEST_F(SplitScaffold, HugeTrimIsNoOverflow) {
  const int largest = std::numeric_limits<int>::max();
  CuttEdge = 1;
  readLen = largest;
  EXPECT_EQ(split(bases(300)), (PlainContigs{{bases(300), 0, 0}}));
  CuttEdge = largest;
  readLen = 0;
  EXPECT_EQ(split(bases(300)), (PlainContigs{{bases(300), 0, 0}}));
  // twice their sum is zero in 32 bits
  CuttEdge = 1 << 30;
  readLen = 1 << 30;
  EXPECT_EQ(split(bases(300)), (PlainContigs{{bases(300), 0, 0}}));
}

}  // namespace
}  // namespace velk::test
