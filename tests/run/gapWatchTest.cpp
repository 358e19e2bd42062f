#include "run/flanks.h"

#include <gtest/gtest.h>

#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "tests/run/world.h"

namespace velk::test {
namespace {

using run::Evidence;
using run::GapWatch;
using run::Side;

// Two gaps: contig 0 has 3,000 bases, gap 0 has 100, contig 1 1,200, gap 1 50, contig 2 400.
class GapWatchTest : public RunWorld {
 protected:
  GapWatchTest() : bases_(randomBases(4600, 7)) {
    makeAssembly({{"chr",
                   {{bases_.substr(0, 3000)},
                    {bases_.substr(3000, 1200), 100},
                    {bases_.substr(4200, 400), 50}}}});
    evidence_.emplace(2, std::vector<std::string>{"l"});
    watch_.emplace(assembly(), 0, *evidence_);
  }

  static Refused refusedAt(uint64_t contig, int64_t offset, Refusal why, uint64_t gap,
                           int64_t matePosition) {
    return {{0, 0, false}, {0, contig, offset}, why, gap, matePosition};
  }

  uint32_t count(uint64_t gap, Refusal why) const { return evidence_->refused(gap, 0, why); }

  std::string bases_;
  std::optional<Evidence> evidence_;
  std::optional<GapWatch> watch_;
};

TEST_F(GapWatchTest, AnAnchorCountsAtTheGapInWhichItsMateWouldLie) {
  watch_->refused(refusedAt(0, 2800, Refusal::kUnlike, 1, 60), 50, 50);
  watch_->endEntry(false);
  EXPECT_EQ(count(0, Refusal::kUnlike), 1U);
  EXPECT_EQ(count(1, Refusal::kUnlike), 0U);
}

TEST_F(GapWatchTest, AMateThatMissesTheGapCountsNowhere) {
  for (const int64_t position : {-50, 100, 400}) {
    watch_->refused(refusedAt(0, 500, Refusal::kSmallGap, 1, position), 50, 50);
    watch_->endEntry(false);
  }
  EXPECT_EQ(count(0, Refusal::kSmallGap), 0U);
  EXPECT_EQ(watch_->placedEntries(), 3U);  // they lie on the contig all the same
}

TEST_F(GapWatchTest, AReadOverAnEdgeCountsAtTheGapThatItReaches) {
  watch_->refused(refusedAt(1, -20, Refusal::kShortOverlap, 1, 0), 50, 0);
  watch_->endEntry(false);
  watch_->refused(refusedAt(1, 1180, Refusal::kUnlike, 2, 0), 50, 0);
  watch_->endEntry(false);
  EXPECT_EQ(count(0, Refusal::kShortOverlap), 1U);
  EXPECT_EQ(count(1, Refusal::kUnlike), 1U);
  EXPECT_EQ(watch_->placedEntries(), 0U);
}

TEST_F(GapWatchTest, EachReasonCountsOnceAnEntry) {
  watch_->refused(refusedAt(0, 2800, Refusal::kUnlike, 1, 60), 50, 50);
  watch_->refused(refusedAt(0, 2801, Refusal::kUnlike, 1, 61), 50, 50);
  watch_->refused(refusedAt(0, 2970, Refusal::kShortOverlap, 1, 70), 50, 50);
  watch_->endEntry(false);
  EXPECT_EQ(count(0, Refusal::kUnlike), 1U);
  EXPECT_EQ(count(0, Refusal::kShortOverlap), 1U);
}

TEST_F(GapWatchTest, WhatIsFoundOrLiesOnAContigIsNoLoss) {
  watch_->refused(refusedAt(0, 2800, Refusal::kUnlike, 1, 60), 50, 50);
  watch_->endEntry(true);
  watch_->refused(refusedAt(0, 2800, Refusal::kUnlike, 1, 60), 50, 50);
  watch_->anchored({0, 2, 100}, 50);
  watch_->endEntry(false);
  watch_->refused(refusedAt(0, 2800, Refusal::kUnlike, 1, 0), 50, 0);
  watch_->refused(refusedAt(0, 100, Refusal::kInsideContig, 1, 0), 50, 0);
  watch_->endEntry(false);
  EXPECT_EQ(count(0, Refusal::kUnlike), 0U);
  EXPECT_EQ(watch_->placedEntries(), 3U);
}

TEST_F(GapWatchTest, ReadsInTheFlanks) {
  watch_->anchored({0, 0, 2449}, 50);  // 501 bases lie between it and the gap
  watch_->endEntry(false);
  EXPECT_EQ(evidence_->flankReads(0), 0U);
  watch_->anchored({0, 0, 2451}, 50);
  watch_->anchored({0, 0, 2451}, 50);  // the same pair
  watch_->endEntry(false);
  EXPECT_EQ(evidence_->flankReads(0), 1U);
  watch_->refused(refusedAt(1, 690, Refusal::kInsideContig, 2, 0), 50, 0);  // near the next gap
  watch_->endEntry(false);
  EXPECT_EQ(evidence_->flankReads(0), 1U);
  EXPECT_EQ(evidence_->flankReads(1), 1U);
  watch_->refused(refusedAt(2, 200, Refusal::kInsideContig, 2, 0), 50, 0);  // of a last contig
  watch_->endEntry(false);
  EXPECT_EQ(evidence_->flankReads(1), 2U);
}

TEST_F(GapWatchTest, RefusalsAtNoGapSayNothing) {
  for (const Refusal why : {Refusal::kNoGap, Refusal::kAtFirstBase}) {
    watch_->refused(refusedAt(0, 0, why, 0, 0), 50, 50);
    watch_->endEntry(false);
  }
  EXPECT_EQ(watch_->placedEntries(), 0U);
  EXPECT_EQ(evidence_->text(), Evidence(2, {"l"}).text());
}

run::OutRecord exactRecord(int64_t position, std::vector<uint32_t> cigar) {
  run::OutRecord record{};
  record.isFound = true;
  record.certainty = run::Certainty::kExact;
  record.gap = 0;
  record.position = position;
  record.cigar = std::move(cigar);
  return record;
}

constexpr uint32_t kAligned = 0;
constexpr uint32_t kClipped = 4;

TEST_F(GapWatchTest, ExactReadsReachIntoTheGapFromEitherSide) {
  run::noteReaches(assembly(), {exactRecord(2980, {50 << 4 | kAligned})}, *evidence_);
  EXPECT_EQ(evidence_->reach(0, Side::kFront), 30U);
  EXPECT_EQ(evidence_->reach(0, Side::kBehind), 0U);
  run::noteReaches(assembly(), {exactRecord(3080, {5 << 4 | kClipped, 45 << 4 | kAligned})},
                   *evidence_);
  EXPECT_EQ(evidence_->reach(0, Side::kBehind), 20U);
  run::noteReaches(assembly(), {exactRecord(2990, {150 << 4 | kAligned})}, *evidence_);
  EXPECT_EQ(evidence_->reach(0, Side::kFront), 100U);
  EXPECT_EQ(evidence_->reach(0, Side::kBehind), 100U);
}

TEST_F(GapWatchTest, OnlyExactReadsThatWereFoundReach) {
  run::OutRecord anchor = exactRecord(2980, {50 << 4 | kAligned});
  anchor.isFound = false;
  run::OutRecord estimate = exactRecord(2980, {50 << 4 | kAligned});
  estimate.certainty = run::Certainty::kEstimate;
  run::noteReaches(assembly(), {anchor, estimate, exactRecord(-1, {})}, *evidence_);
  EXPECT_EQ(evidence_->text(), Evidence(2, {"l"}).text());
}

// The first 300 bases of contig 1 are also the last ones of contig 2.
TEST_F(GapWatchTest, RepeatedKmersOfTheFlanks) {
  Kmer = 21;
  makeAssembly({{"chr",
                 {{bases_.substr(0, 3000)},
                  {bases_.substr(3000, 1200), 100},
                  {bases_.substr(4200, 400) + bases_.substr(3000, 300), 50}}}});
  SeedIndex index;
  ASSERT_TRUE(index.build(assembly().model(), 1, 21, 1));
  run::noteRepeats(index.text(), assembly(), {60, 500, 200}, *evidence_);
  EXPECT_EQ(evidence_->kmers(0, Side::kFront), 500U);
  EXPECT_EQ(evidence_->repeatedKmers(0, Side::kFront), 0U);
  EXPECT_EQ(evidence_->kmers(0, Side::kBehind), 500U);
  EXPECT_EQ(evidence_->repeatedKmers(0, Side::kBehind), 280U);
  // Gap 1 is a small one. Contig 2 begins with 400 bases of its own.
  EXPECT_EQ(evidence_->kmers(1, Side::kBehind), 200U);
  EXPECT_EQ(evidence_->repeatedKmers(1, Side::kBehind), 0U);
  run::noteRepeats(index.text(), assembly(), {0, 500, 200}, *evidence_);
  EXPECT_EQ(evidence_->kmers(1, Side::kBehind), 500U);
  EXPECT_EQ(evidence_->repeatedKmers(1, Side::kBehind), 100U);
}

}  // namespace
}  // namespace velk::test
