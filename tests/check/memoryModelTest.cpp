#include "check/memoryModel.h"

#include <gtest/gtest.h>

#include "check/rehearsal.h"
#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "tests/support/assembly.h"

namespace velk::check {
namespace {

class IndexBytesTest : public test::AssemblyTest {};

TEST_F(IndexBytesTest, AreThoseOfTheIndex) {
  for (const int kmer : {17, 21, 31, 32}) {
    Kmer = kmer;
    load({{{test::randomBases(400000, 1)}, {test::randomBases(300000, 2), 100}}});
    Survey survey;
    ASSERT_TRUE(countKmers(survey));
    const auto estimate = static_cast<double>(indexBytes(survey.kmers, contigBases()));
    EXPECT_NEAR(estimate / static_cast<double>(seedIndex->bytes()), 1, 0.05) << "-k " << kmer;
    releaseAssembly();
  }
}

// Two windows in three begin with a new seed where it has two places in a window.
TEST_F(IndexBytesTest, GrowWithTheShareOfSeeds) {
  Kmer = 31;
  const uint64_t few = indexBytes(1000000, 1000000);
  Kmer = 12;
  EXPECT_GT(indexBytes(1000000, 1000000), 2 * few);
}

TEST_F(IndexBytesTest, AnyLengthOfKmersHasThem) {
  for (const int kmer : {0, 1, 63, 2147483647}) {
    Kmer = kmer;
    EXPECT_GT(indexBytes(1000, 2000), 1000U) << "-k " << kmer;
  }
}

}  // namespace
}  // namespace velk::check
