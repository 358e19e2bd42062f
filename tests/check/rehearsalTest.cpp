#include "check/rehearsal.h"

#include <gtest/gtest.h>

#include "tests/support/assembly.h"

namespace velk::check {
namespace {

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

}  // namespace
}  // namespace velk::check
