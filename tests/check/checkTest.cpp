// The parts of velk-check that stand alone: mates by name, a count of distinct k-mers, the
// rehearsal of a batch, advice.
#include "check/readPass.h"

#include <gtest/gtest.h>

#include <cmath>

#include "check/advice.h"
#include "check/hyperLogLog.h"
#include "check/rehearsal.h"
#include "kmer/hashSet.h"
#include "tests/support/assembly.h"

namespace velk::check {
namespace {

TEST(AreMates, EqualNames) {
  EXPECT_TRUE(areMates("@a:1:2", "@a:1:2"));
  EXPECT_TRUE(areMates("@a:1:2 1:N:0", "@a:1:2 2:N:0"));
  EXPECT_TRUE(areMates(">a\tx", ">a\ty"));
}

TEST(AreMates, NamesThatTellTheMateInTheirLastCharacter) {
  EXPECT_TRUE(areMates("@a/1", "@a/2"));
  EXPECT_TRUE(areMates("@a.f", "@a.r"));
  EXPECT_TRUE(areMates("@a_F x", "@a_R y"));
}

TEST(AreMates, NamesThatVelkRunTakes) {
  EXPECT_TRUE(areMates("@a/1", "@a"));
  EXPECT_TRUE(areMates("@a x", "@a/2 x"));
  EXPECT_TRUE(areMates("@a/1", "@a.2"));
}

TEST(AreMates, OtherNames) {
  EXPECT_FALSE(areMates("@a/2", "@a/1"));
  EXPECT_FALSE(areMates("@a/1", "@b/2"));
  EXPECT_FALSE(areMates("@a/1", "@a/12"));
  EXPECT_FALSE(areMates("@read8", "@read9"));
  EXPECT_FALSE(areMates("@", "@a"));
}

// The hashes of n different keys, each `times` times.
double estimateOf(uint64_t n, uint64_t first, int times = 1) {
  HyperLogLog sketch;
  for (int time = 0; time < times; ++time) {
    for (uint64_t i = 0; i < n; ++i) sketch.add(hash_code(Entity{first + i, 0, 0, 0, 0}));
  }
  return sketch.estimate();
}

TEST(HyperLogLog, EmptyIsZero) {
  EXPECT_EQ(HyperLogLog().estimate(), 0);
}

TEST(HyperLogLog, FewAreCountedNearlyExactly) {
  for (uint64_t n = 1; n <= 1000; n *= 10) {
    EXPECT_NEAR(estimateOf(n, 77), static_cast<double>(n), 0.5 + 0.005 * static_cast<double>(n));
  }
}

TEST(HyperLogLog, StaysWithinFourStandardErrors) {
  for (const uint64_t n :
       {uint64_t{20000}, uint64_t{200000}, uint64_t{1000000}, uint64_t{5000000}}) {
    for (const uint64_t first : {uint64_t{0}, uint64_t{1} << 40, uint64_t{123456789}}) {
      const double error = estimateOf(n, first) / static_cast<double>(n) - 1;
      EXPECT_LT(std::abs(error), 4 * HyperLogLog::kError) << n << " from " << first;
    }
  }
}

// The mean square of many errors is what kError says, so the bound above is no accident.
TEST(HyperLogLog, ErrorIsOfTheSizeThatIsTold) {
  double squares = 0;
  constexpr int kRounds = 40;
  constexpr uint64_t kKeys = 600000;
  for (uint64_t round = 0; round < kRounds; ++round) {
    const double error = estimateOf(kKeys, round << 32) / kKeys - 1;
    squares += error * error;
  }
  const double typical = std::sqrt(squares / kRounds);
  EXPECT_GT(typical, 0.3 * HyperLogLog::kError);
  EXPECT_LT(typical, 1.5 * HyperLogLog::kError);
}

TEST(HyperLogLog, RepeatsDoNotCount) {
  EXPECT_EQ(estimateOf(50000, 5), estimateOf(50000, 5, 3));
}

// 40,000 bases of which 10,000 stand there twice.
class RehearsalTest : public test::AssemblyTest {
 protected:
  RehearsalTest() {
    const std::string twice = test::randomBases(10000, 1);
    load({{{twice}, {test::randomBases(8000, 2), 100}},
          {{test::randomBases(12000, 3)}, {twice, 50}, {test::randomBases(60, 4), 50}}});
  }

  // Every contig of 70 bases or more has 30 k-mers less than bases.
  static constexpr uint64_t kDistinct = 10000 + 8000 + 12000 - 3 * 30;
};

TEST_F(RehearsalTest, CountsAWholeAssembly) {
  Survey survey;
  ASSERT_TRUE(countKmers(survey));
  EXPECT_EQ(survey.kmers, kDistinct + 10000 - 30);
  EXPECT_EQ(buildIndex(survey), 1.0);
  EXPECT_TRUE(survey.isExact);
  EXPECT_EQ(survey.distinctKmers, kDistinct);
}

TEST_F(RehearsalTest, EstimatesWhatIsMoreThanItIndexes) {
  Survey survey;
  ASSERT_TRUE(countKmers(survey));
  const double share = buildIndex(survey, 20000);
  EXPECT_NEAR(share, (18000.0 - 60) / static_cast<double>(survey.kmers), 1e-9);
  EXPECT_EQ(survey.index->distinctKmers(), 18000U - 60);
  EXPECT_FALSE(survey.isExact);
  EXPECT_GE(survey.distinctKmers, kDistinct);
  EXPECT_LE(survey.distinctKmers, kDistinct + kDistinct / 50);
}

TEST_F(RehearsalTest, IndexesOneContigAtLeast) {
  Survey survey;
  ASSERT_TRUE(countKmers(survey));
  buildIndex(survey, 100);
  EXPECT_EQ(survey.index->distinctKmers(), 10000U - 30);
}

TEST_F(RehearsalTest, NoKmersInShortContigs) {
  releaseAssembly();
  load({{{test::randomBases(60, 5)}, {test::randomBases(60, 6), 10}}});
  Survey survey;
  EXPECT_FALSE(countKmers(survey));
}

TEST(DiskSpace, ShortOnlyWhenAllOutputsOfADiskTakeMoreThanIsFree) {
  Findings enough;
  checkDiskSpace(enough, {{"out.fa", 1000}, {"s.fa", 1000}});
  EXPECT_FALSE(enough.has("disk-short"));
  Findings tooMuch;
  checkDiskSpace(tooMuch, {{"out.fa", uint64_t{1} << 61}, {"s.fa", uint64_t{1} << 61}});
  EXPECT_TRUE(tooMuch.has("disk-short"));
  EXPECT_EQ(tooMuch.all().size(), 1U);
}

}  // namespace

}  // namespace velk::check
