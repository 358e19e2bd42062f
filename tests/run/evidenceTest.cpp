#include "run/evidence.h"

#include <gtest/gtest.h>

#include "run/failure.h"
#include "run/library.h"

namespace velk::test {
namespace {

using run::Evidence;
using run::Failure;
using run::InsertHistogram;
using run::Side;

const std::string kNames =
    "gap\tflank_reads\texact_before\texact_behind\tkmers_before\tkmers_behind\trepeated_before\t"
    "repeated_behind\ta:small_gap\ta:short_overlap\ta:unlike\tb:small_gap\tb:short_overlap\t"
    "b:unlike\n";

Evidence filled() {
  Evidence evidence(2, {"a", "b"});
  evidence.addFlankRead(1);
  evidence.addReach(0, Side::kFront, 12);
  evidence.addReach(0, Side::kFront, 7);
  evidence.addReach(1, Side::kBehind, 5);
  evidence.setKmers(0, Side::kBehind, 100, 90);
  evidence.addRefused(0, 1, Refusal::kUnlike);
  evidence.addRefused(0, 1, Refusal::kUnlike);
  evidence.addRefused(1, 0, Refusal::kSmallGap);
  evidence.addRefused(1, 0, Refusal::kShortOverlap);
  return evidence;
}

TEST(EvidenceTest, ALineAGap) {
  EXPECT_EQ(filled().text(), kNames +
                                 "0\t0\t12\t0\t0\t100\t0\t90\t0\t0\t0\t0\t0\t2\n"
                                 "1\t1\t0\t5\t0\t0\t0\t0\t1\t1\t0\t0\t0\t0\n");
}

TEST(EvidenceTest, WhatIsReadIsWhatWasWritten) {
  const std::string text = filled().text();
  const Evidence again = Evidence::parse(text, "evidence.tsv");
  EXPECT_EQ(again.text(), text);
  EXPECT_EQ(again.libraries(), (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(again.refused(0, 1, Refusal::kUnlike), 2U);
  EXPECT_EQ(again.reach(0, Side::kFront), 12U);
  EXPECT_EQ(again.kmers(0, Side::kBehind), 100U);
  EXPECT_EQ(again.repeatedKmers(0, Side::kBehind), 90U);
  EXPECT_EQ(again.flankReads(1), 1U);
}

// Counts are added; what each share knows of the whole is not.
TEST(EvidenceTest, SharesAddUp) {
  Evidence sum = filled();
  Evidence more(2, {"a", "b"});
  more.addReach(0, Side::kFront, 20);
  more.setKmers(0, Side::kBehind, 100, 90);
  more.addRefused(0, 1, Refusal::kUnlike);
  more.addFlankRead(0);
  sum += more;
  EXPECT_EQ(sum.text(), kNames +
                            "0\t1\t20\t0\t0\t100\t0\t90\t0\t0\t0\t0\t0\t3\n"
                            "1\t1\t0\t5\t0\t0\t0\t0\t1\t1\t0\t0\t0\t0\n");
}

TEST(EvidenceTest, DamagedTextIsRefused) {
  const std::string good = filled().text();
  for (const std::string& text :
       {std::string(), std::string("gap\n0\n"), good.substr(0, good.size() - 1), good + "2\t0\n",
        good.substr(0, kNames.size()) + good.substr(kNames.size() + 4), good + "\n",
        kNames + "1\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\n",
        kNames + "0\tx\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\t0\n"}) {
    EXPECT_THROW(Evidence::parse(text, "evidence.tsv"), Failure) << text;
  }
}

TEST(InsertHistogramTest, BinsFollowEachOther) {
  for (std::size_t bin = 0; bin < 1500; ++bin) {
    EXPECT_EQ(InsertHistogram::binOf(InsertHistogram::startOf(bin)), bin);
    EXPECT_EQ(InsertHistogram::binOf(InsertHistogram::startOf(bin + 1) - 1), bin);
  }
  EXPECT_EQ(InsertHistogram::startOf(127), 127U);
  EXPECT_EQ(InsertHistogram::binOf(200), InsertHistogram::binOf(201));
  EXPECT_NE(InsertHistogram::binOf(201), InsertHistogram::binOf(202));
}

TEST(InsertHistogramTest, HistogramsAddUp) {
  InsertHistogram one;
  one.add(3);
  InsertHistogram other;
  other.add(3, 4);
  other.add(5);
  one += other;
  EXPECT_EQ(one.bins(), (std::vector<uint64_t>{0, 0, 0, 5, 0, 1}));
}

}  // namespace
}  // namespace velk::test
