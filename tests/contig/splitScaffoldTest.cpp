// Cutting one scaffold at its gaps: which runs are kept, how gaps are numbered and measured, what
// is trimmed.
#include <limits>
#include <sstream>

#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::ExitedWithCode;
using ::testing::MatchesRegex;

const std::string kLong = bases(100);

TEST_F(SplitScaffold, WorkedExample) {
  const std::string sequence =
      bases(100) + letters(10, 'N') + bases(30) + letters(5, 'N') + bases(200) + letters(3, 'N');
  EXPECT_EQ(split(sequence), (PlainContigs{{bases(100), 0, 0}, {bases(200), 0, 45}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n7\t1\t145\t345\n");
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, GapsAreNumberedOnFromTheCounter) {
  gaps_ = 41;
  const std::string sequence = kLong + "NN" + kLong + "NNN" + kLong;
  EXPECT_EQ(split(sequence), (PlainContigs{{kLong, 0, 0}, {kLong, 41, 2}, {kLong, 42, 3}}));
  EXPECT_EQ(gaps_, 43U);
}

TEST_F(SplitScaffold, BothLettersAreGapAndEveryOtherCharacterIsSequence) {
  CONTIGLEN = 1;
  EXPECT_EQ(split("acgtRYn.-NnX\r*\xff"),
            (PlainContigs{{"acgtRY", 0, 0}, {".-", 0, 1}, {"X\r*\xff", 1, 2}}));
}

TEST_F(SplitScaffold, LeadingGapShiftsPositionsButIsNoGap) {
  EXPECT_EQ(split("NnN" + kLong + "NN" + kLong), (PlainContigs{{kLong, 0, 0}, {kLong, 0, 2}}));
  EXPECT_EQ(positions_, "7\t0\t3\t103\n7\t1\t105\t205\n");
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, TrailingGapIsRecordedNowhere) {
  EXPECT_EQ(split(kLong + "NNNN"), (PlainContigs{{kLong, 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n");
  EXPECT_EQ(gaps_, 0U);
}

TEST_F(SplitScaffold, ShortFirstRunIsKept) {
  EXPECT_EQ(split("ACG" + letters(4, 'N') + kLong), (PlainContigs{{"ACG", 0, 0}, {kLong, 0, 4}}));
  EXPECT_EQ(split("NACGNN"), (PlainContigs{{"ACG", 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t1\t4\n");
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, ShortInnerRunJoinsTheGap) {
  const std::string inner = letters(69, 'A');
  EXPECT_EQ(split(kLong + "NN" + inner + "NNN" + kLong),
            (PlainContigs{{kLong, 0, 0}, {kLong, 0, 74}}));
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, InnerRunOfTheLeastLengthIsKept) {
  const std::string inner = letters(70, 'A');
  EXPECT_EQ(split(kLong + "NN" + inner + "NNN" + kLong),
            (PlainContigs{{kLong, 0, 0}, {inner, 0, 2}, {kLong, 1, 3}}));
}

TEST_F(SplitScaffold, SeveralShortRunsJoinOneGapUnderItsFirstNumber) {
  gaps_ = 5;
  EXPECT_EQ(split(kLong + "N" + "AC" + "NN" + "ACG" + "NNN" + "A" + "N" + kLong + "N" + kLong),
            (PlainContigs{{kLong, 0, 0}, {kLong, 5, 13}, {kLong, 6, 1}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n7\t1\t113\t213\n7\t2\t214\t314\n");
  EXPECT_EQ(gaps_, 7U);
}

TEST_F(SplitScaffold, ShortLastRunIsKept) {
  EXPECT_EQ(split(kLong + "NN" + "AC"), (PlainContigs{{kLong, 0, 0}, {"AC", 0, 2}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n7\t1\t102\t104\n");
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, ShortLastRunBeforeATrailingGapIsDropped) {
  EXPECT_EQ(split(kLong + "NN" + "ACGT" + "N"), (PlainContigs{{kLong, 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n");
  EXPECT_EQ(gaps_, 0U);
}

TEST_F(SplitScaffold, SingleFinalBaseHasNoSlot) {
  gaps_ = 3;
  EXPECT_EQ(split(kLong + "NN" + "A"), (PlainContigs{{kLong, 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n7\t1\t102\t103\n");
  EXPECT_EQ(gaps_, 4U);
}

TEST_F(SplitScaffold, SingleFinalBaseHasNoSlotWhateverTheLeastLength) {
  CONTIGLEN = 1;
  EXPECT_EQ(split("ANAN" + std::string("A")), (PlainContigs{{"A", 0, 0}, {"A", 0, 1}}));
  EXPECT_EQ(positions_, "7\t0\t0\t1\n7\t1\t2\t3\n7\t2\t4\t5\n");
  EXPECT_EQ(gaps_, 2U);
}

TEST_F(SplitScaffold, SingleBaseAloneIsAContig) {
  EXPECT_EQ(split("A"), (PlainContigs{{"A", 0, 0}}));
  EXPECT_EQ(split("NNA"), (PlainContigs{{"A", 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t2\t3\n");
}

TEST_F(SplitScaffold, GapsBehindTheLastSlotAreHeldApart) {
  // every run behind the first is dropped, one after the other; no slot is there to hold the gaps
  EXPECT_EQ(split(kLong + "N" + "AC" + "NN" + "ACG" + "NNN"), (PlainContigs{{kLong, 0, 0}}));
  EXPECT_EQ(gaps_, 0U);
  // the gap of a single last base is merged from what was held apart
  EXPECT_EQ(split(kLong + "N" + "AC" + "NN" + "A"), (PlainContigs{{kLong, 0, 0}}));
  EXPECT_EQ(positions_, "7\t0\t0\t100\n7\t1\t105\t106\n");
  EXPECT_EQ(gaps_, 1U);
}

TEST_F(SplitScaffold, ScaffoldWithoutBasesHasNoContigs) {
  for (const char* sequence : {"", "N", "nnNN"}) {
    EXPECT_EQ(split(sequence), PlainContigs{}) << sequence;
    EXPECT_EQ(scaffoldInfo[0].contigsSum, 0U);
    EXPECT_NE(scaffoldInfo[0].contigsInfo, nullptr);
    EXPECT_EQ(positions_, "");
  }
  EXPECT_EQ(gaps_, 0U);
}

TEST_F(SplitScaffold, LeastLengthIsComparedAsASignedNumber) {
  CONTIGLEN = -1;
  EXPECT_EQ(split("AC"
                  "N"
                  "A"
                  "N"
                  "AC"),
            (PlainContigs{{"AC", 0, 0}, {"A", 0, 1}, {"AC", 1, 1}}));
}

TEST_F(SplitScaffold, NumberChoosesTheScaffold) {
  scaffoldInfo = new ScaffoldInfo[3]();
  scaffoldSum = 3;
  std::ostringstream positions;
  uint32_t scaffold = 1;
  splitScaffold(scaffoldInfo, "ACGT", "some id", scaffold, gaps_, positions);
  EXPECT_EQ(scaffold, 1U);
  EXPECT_EQ(ids(), (std::vector<std::string>{"", "some id", ""}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"ACGT", 0, 0}}));
  EXPECT_EQ(positions.str(), "some id\t0\t0\t4\n");
  EXPECT_EQ(scaffoldInfo[0].contigsInfo, nullptr);
  EXPECT_EQ(scaffoldInfo[2].contigsInfo, nullptr);
}

TEST_F(SplitScaffold, NoMemoryForTheContigs) {
  CONTIGLEN = 1;
  std::string sequence;
  for (int i = 0; i < 2000; ++i) sequence += "ACN";
  EXPECT_EXIT(
      {
        failArraysAbove(2000 * sizeof(ContigInfo));
        split(sequence);
      },
      ExitedWithCode(2),
      MatchesRegex("Out of memory! Line: [0-9]+[.] Function: splitScaffold[.]\n"));
}

// The trimming of kept contigs by CuttEdge.

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
