// An index of the first contigs: which they are, and what it answers.
#include "survey/boundedIndex.h"

#include <gtest/gtest.h>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "survey/insertSize.h"
#include "tests/support/assembly.h"

namespace velk::survey {
namespace {

// 40,000 bases of which 10,000 stand there twice.
class BoundedIndexTest : public test::AssemblyTest {
 protected:
  BoundedIndexTest() {
    load({{{twice_}, {once_, 100}},
          {{test::randomBases(12000, 3)}, {twice_, 50}, {test::randomBases(60, 4), 50}}});
  }

  static Scaffolds all() { return {scaffoldInfo, scaffoldSum}; }

  const std::string twice_ = test::randomBases(10000, 1);
  const std::string once_ = test::randomBases(8000, 2);

  // Every contig of 70 bases or more has 30 k-mers less than bases.
  static constexpr uint64_t kFirst = 10000 - 30;
  static constexpr uint64_t kFirstTwo = kFirst + 8000 - 30;
  static constexpr uint64_t kDistinct = kFirstTwo + 12000 - 30;
};

TEST_F(BoundedIndexTest, CountsOfTheAssembly) {
  EXPECT_EQ(contigBases(all()), 40060U);
  EXPECT_EQ(indexedKmers(all()), kDistinct + kFirst);
  EXPECT_EQ(indexedLengths(all()), (std::vector<uint64_t>{10000, 8000, 12000, 10000}));
}

TEST_F(BoundedIndexTest, AllContigs) {
  const BoundedIndex index(FirstContigs(all(), 1000000), Kmer, 1);
  EXPECT_TRUE(index.contigs().areAll());
  EXPECT_EQ(index.contigs().kmers(), kDistinct + kFirst);
  EXPECT_EQ(index.distinctKmers(), kDistinct);
  EXPECT_GT(index.secondsPerKmer(), 0);
}

TEST_F(BoundedIndexTest, AsManyContigsAsHoldSoManyKmers) {
  EXPECT_EQ(FirstContigs(all(), kFirstTwo).kmers(), kFirstTwo);
  EXPECT_EQ(FirstContigs(all(), kFirstTwo - 1).kmers(), kFirst);
  const FirstContigs three(all(), kDistinct);
  EXPECT_EQ(three.kmers(), kDistinct);
  EXPECT_FALSE(three.areAll());
  ASSERT_EQ(three.chosen().size(), 2U);
  EXPECT_EQ(three.chosen()[0].contigsSum, 2U);
  EXPECT_EQ(three.chosen()[1].contigsSum, 1U);
  EXPECT_EQ(scaffoldInfo[1].contigsSum, 3U);
}

TEST_F(BoundedIndexTest, OneContigAtLeast) {
  const BoundedIndex index(FirstContigs(all(), 100), Kmer, 1);
  EXPECT_EQ(index.distinctKmers(), kFirst);
}

TEST_F(BoundedIndexTest, NoContigsWithoutKmers) {
  releaseAssembly();
  load({{{test::randomBases(60, 5)}, {test::randomBases(60, 6), 10}}});
  EXPECT_EQ(FirstContigs(all(), 100).kmers(), 0U);
  EXPECT_EQ(indexedKmers(all()), 0U);
}

// What stands twice in the assembly stands once in its first contigs.
TEST_F(BoundedIndexTest, PlacesReadsOnTheContigsThatItHas) {
  const std::string read = twice_.substr(300, 100);
  const BoundedIndex part(FirstContigs(all(), kFirstTwo), Kmer, 1);
  Engine engine = part.engine();
  const auto place = placeOfRead(engine, all(), optionsOfRun(), read);
  ASSERT_TRUE(place);
  EXPECT_EQ(place->start, 300);
  const BoundedIndex whole(FirstContigs(all(), 1000000), Kmer, 2);
  Engine engineOfWhole = whole.engine();
  EXPECT_FALSE(placeOfRead(engineOfWhole, all(), optionsOfRun(), read));
  EXPECT_TRUE(placeOfRead(engineOfWhole, all(), optionsOfRun(), once_.substr(300, 100)));
}

#ifndef NDEBUG
TEST_F(BoundedIndexTest, AssertsThatThereAreKmers) {
  EXPECT_DEATH(BoundedIndex(FirstContigs(all().first(0), 10), Kmer, 1), "kmers");
}
#endif

}  // namespace
}  // namespace velk::survey
