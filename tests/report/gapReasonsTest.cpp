#include "report/gapReasons.h"

#include <gtest/gtest.h>

#include <set>

#include "report/figures.h"

namespace velk::test {
namespace {

using report::Judge;
using report::ReadKind;
using report::Reason;
using report::RunData;
using run::Side;

// A run of a library of pairs, insert size 300, reads of 100 bases, one pair a base of the contigs:
// 101,000 bases in 100 gaps of 10 bases and contigs. Every gap has good flanks, 500 reads in each.
class JudgementTest : public ::testing::Test {
 protected:
  JudgementTest() {
    data_.settings.bigGapLength = 400;
    data_.assembly.bases = 101000;
    report::LibraryData library;
    library.name = "pairs";
    library.arePairs = true;
    library.orientation = "FR";
    library.insert = 300;
    library.readsSearched = 200000;
    library.basesSearched = 20000000;
    library.onContigs = 100000;
    data_.libraries.push_back(library);
    data_.scaffolds.emplace_back("s");
    for (uint64_t n = 0; n < kGaps; ++n) {
      data_.gaps.push_back({0, 1000 * n, 1000 * n + 10, 10, false, 10000, 10000, {}, 0, n});
    }
    data_.counts.resize(kGaps * run::kReadKinds);
    data_.evidence.emplace(kGaps, std::vector<std::string>{"pairs"});
    for (uint64_t n = 0; n < kGaps; ++n) {
      data_.evidence->setKmers(n, Side::kFront, 300, 0);
      data_.evidence->setKmers(n, Side::kBehind, 300, 0);
      addFlankReads(n, n < 2 ? 0 : 1000);
    }
  }

  void addFlankReads(uint64_t gap, int reads) {
    for (int n = 0; n < reads; ++n) data_.evidence->addFlankRead(gap);
  }

  void setCount(ReadKind kind, uint32_t count) {
    data_.counts[static_cast<std::size_t>(kind)] = count;
  }

  void refuse(Refusal why, int count) {
    for (int n = 0; n < count; ++n) data_.evidence->addRefused(0, 0, why);
  }

  report::Judgement judge() const { return Judge(data_).judge(0); }

  static constexpr uint64_t kGaps = 100;
  RunData data_;
};

// Each side gives mates that begin in the read before the gap and in the gap, 110 bases, and reads
// over the contig's end by up to 70 bases.
TEST_F(JudgementTest, ExpectedReads) {
  EXPECT_DOUBLE_EQ(judge().expected, 2 * (110 + 70));
  // Mates reach 300 - 130 bases into a long gap.
  EXPECT_DOUBLE_EQ(Judge(data_).expectedAt(5000), 2 * (170 + 100 + 70));
}

TEST_F(JudgementTest, AShortContigGivesFewerMates) {
  data_.gaps[0].basesBefore = 150;  // the first mates begin 50 bases into the gap
  EXPECT_DOUBLE_EQ(judge().expected, 110 + 70 + 0 + 70);
  data_.gaps[0].basesBefore = 250;  // 50 bases before it
  EXPECT_DOUBLE_EQ(judge().expected, 110 + 70 + 60 + 70);
}

TEST_F(JudgementTest, LargeInsertsGiveNothingAtSmallGaps) {
  data_.libraries[0].insert = 3000;
  EXPECT_DOUBLE_EQ(Judge(data_).expectedAt(399), 0);
  EXPECT_DOUBLE_EQ(Judge(data_).expectedAt(400), 2 * (400 + 100 + 70));
}

TEST_F(JudgementTest, SingleReadsLieOverTheEnds) {
  data_.libraries[0].arePairs = false;
  data_.libraries[0].insert = 0;
  EXPECT_DOUBLE_EQ(judge().expected, 2 * 70);
}

TEST_F(JudgementTest, AQuarterIsEnough) {
  setCount(ReadKind::kExact, 60);
  setCount(ReadKind::kEstimate, 30);
  EXPECT_EQ(judge().reason, Reason::kEnough);
  EXPECT_FALSE(judge().isFew());
  setCount(ReadKind::kEstimate, 29);
  EXPECT_NE(judge().reason, Reason::kEnough);
  EXPECT_TRUE(judge().isFew());
}

TEST_F(JudgementTest, NothingCame) {
  EXPECT_EQ(judge().reason, Reason::kNothingNear);
  EXPECT_EQ(judge().figure, "");
}

TEST_F(JudgementTest, InsertsTooLargeIfTheyAllAre) {
  data_.libraries[0].insert = 3000;
  refuse(Refusal::kSmallGap, 7);
  EXPECT_EQ(judge().reason, Reason::kInsertTooLarge);
  EXPECT_EQ(judge().figure, "7 refused");
}

TEST_F(JudgementTest, RepeatsAreMoreThanNineTenthsOfTheKmers) {
  data_.evidence->setKmers(0, Side::kFront, 300, 300);
  data_.evidence->setKmers(0, Side::kBehind, 300, 240);
  EXPECT_EQ(judge().reason, Reason::kNothingNear);
  data_.evidence->setKmers(0, Side::kBehind, 300, 241);
  EXPECT_EQ(judge().reason, Reason::kRepeats);
  EXPECT_EQ(judge().figure, "90 % of k-mers");
}

TEST_F(JudgementTest, AContigWithoutKmers) {
  data_.gaps[0].basesBehind = 40;
  data_.evidence->setKmers(0, Side::kBehind, 0, 0);
  EXPECT_EQ(judge().reason, Reason::kShortContig);
  EXPECT_EQ(judge().figure, "40 bases");
}

TEST_F(JudgementTest, RefusedReadsThatWouldBeEnough) {
  refuse(Refusal::kUnlike, 60);
  refuse(Refusal::kShortOverlap, 40);
  EXPECT_EQ(judge().reason, Reason::kUnlike);
  refuse(Refusal::kShortOverlap, 60);
  EXPECT_EQ(judge().reason, Reason::kShortOverlap);
}

TEST_F(JudgementTest, ReadsOfAnUnknownLength) {
  data_.gaps[0].isPlaceholder = true;
  setCount(ReadKind::kContained, 50);
  EXPECT_EQ(judge().reason, Reason::kPlaceholder);
}

TEST_F(JudgementTest, ContainedReads) {
  setCount(ReadKind::kExact, 45);
  setCount(ReadKind::kContained, 45);
  EXPECT_EQ(judge().reason, Reason::kContained);
  setCount(ReadKind::kContained, 44);  // with them there are still few
  EXPECT_NE(judge().reason, Reason::kContained);
  setCount(ReadKind::kExact, 46);
  EXPECT_NE(judge().reason, Reason::kContained);
  setCount(ReadKind::kExact, 0);
  EXPECT_EQ(judge().reason, Reason::kFewNear);
  addFlankReads(0, 500);
  EXPECT_EQ(judge().reason, Reason::kContained);
}

// Other gaps' flanks may be as poor; what counts is what contigs have.
TEST_F(JudgementTest, FewReadsInAllFlanks) {
  data_.evidence.emplace(kGaps, std::vector<std::string>{"pairs"});
  for (uint64_t n = 0; n < kGaps; ++n) {
    data_.evidence->setKmers(n, Side::kFront, 300, 0);
    data_.evidence->setKmers(n, Side::kBehind, 300, 0);
    addFlankReads(n, 100);
  }
  setCount(ReadKind::kExact, 9);
  EXPECT_EQ(judge().reason, Reason::kFewNear);
  EXPECT_EQ(judge().figure, "10 % of the usual depth");
}

TEST_F(JudgementTest, FewReadsInTheFlanks) {
  setCount(ReadKind::kExact, 9);
  EXPECT_EQ(judge().reason, Reason::kFewNear);
  addFlankReads(0, 499);
  EXPECT_EQ(judge().reason, Reason::kFewNear);
  EXPECT_EQ(judge().figure, "50 % of the usual depth");
  addFlankReads(0, 1);
  EXPECT_EQ(judge().reason, Reason::kUnknown);
  refuse(Refusal::kUnlike, 9);  // too few to be the reason, but most of what came
  EXPECT_EQ(judge().reason, Reason::kUnlike);
}

TEST_F(JudgementTest, ManyRepeatsWhereNothingElseIsTheReason) {
  addFlankReads(0, 500);
  setCount(ReadKind::kContained, 9);
  data_.evidence->setKmers(0, Side::kFront, 300, 240);
  EXPECT_EQ(judge().reason, Reason::kContained);
  data_.evidence->setKmers(0, Side::kFront, 300, 241);
  EXPECT_EQ(judge().reason, Reason::kRepeats);
  EXPECT_EQ(judge().figure, "40 % of k-mers");
  data_.gaps[0].isPlaceholder = true;
  EXPECT_EQ(judge().reason, Reason::kPlaceholder);
  refuse(Refusal::kUnlike, 100);
  EXPECT_EQ(judge().reason, Reason::kUnlike);
}

TEST_F(JudgementTest, DepthOfTheFlanks) {
  EXPECT_DOUBLE_EQ(Judge(data_).flankDepth(5), 1);
  data_.gaps[5].basesBefore = 0;  // the other flank has 500 bases
  EXPECT_DOUBLE_EQ(Judge(data_).flankDepth(5), 2);
}

TEST_F(JudgementTest, WithoutEvidenceNothingIsSaid) {
  data_.evidence.reset();
  EXPECT_EQ(judge().reason, Reason::kUnknown);
  EXPECT_LT(Judge(data_).flankDepth(0), 0);
}

TEST_F(JudgementTest, LargeInsertsBesideOthersAreNoReasonButCounted) {
  data_.libraries.push_back(data_.libraries[0]);
  data_.libraries[1].name = "mates";
  data_.libraries[1].insert = 3000;
  data_.counts.resize(kGaps * 2 * run::kReadKinds);
  data_.evidence.emplace(kGaps, std::vector<std::string>{"pairs", "mates"});
  data_.evidence->setKmers(0, Side::kFront, 300, 0);
  data_.evidence->setKmers(0, Side::kBehind, 300, 0);
  for (int n = 0; n < 7; ++n) data_.evidence->addRefused(0, 1, Refusal::kSmallGap);
  EXPECT_EQ(judge().reason, Reason::kNothingNear);
  EXPECT_EQ(judge().figure, "7 refused, of large inserts");
}

TEST(ReasonTest, EachHasItsNameAndItsSentence) {
  std::set<std::string> names;
  std::set<std::string> sentences;
  for (std::size_t n = 0; n < report::kReasons; ++n) {
    names.insert(nameOf(static_cast<Reason>(n)));
    sentences.insert(explain(static_cast<Reason>(n)));
  }
  EXPECT_EQ(names.size(), report::kReasons);
  EXPECT_EQ(sentences.size(), report::kReasons);
}

TEST_F(JudgementTest, FiguresOfTheRun) {
  setCount(ReadKind::kExact, 200);
  data_.reach.resize(kGaps);
  data_.reach[0] = {4, 6};
  data_.reach[1] = {9, 0};
  const Judge judge(data_);
  const auto gaps = report::judgeAll(data_, judge);
  const report::Tally tally = report::tallyOf({data_, judge, gaps});
  EXPECT_EQ(tally.withReads, 1U);
  EXPECT_EQ(tally.few, 0U);
  EXPECT_EQ(tally.covered, 1U);
  EXPECT_EQ(tally.exact, 200U);
  EXPECT_EQ(tally.medianReads, 0U);
  EXPECT_EQ(tally.reasons[static_cast<std::size_t>(Reason::kEnough)].few, 1U);
  EXPECT_EQ(tally.reasons[static_cast<std::size_t>(Reason::kNothingNear)].none, 99U);
}

}  // namespace
}  // namespace velk::test
