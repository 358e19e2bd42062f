// The memory that a run takes: of the index, against one that is made; of the rest, by hand.
#include "survey/memoryModel.h"

#include <gtest/gtest.h>

#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "tests/support/assembly.h"

namespace velk::survey {
namespace {

class MemoryModelTest : public test::AssemblyTest {
 protected:
  static Scaffolds all() { return {scaffoldInfo, scaffoldSum}; }
};

#ifndef VELK_PLAIN_ENGINE
TEST_F(MemoryModelTest, IndexIsThatWhichIsMade) {
  for (const int kmer : {17, 21, 31, 32}) {
    Kmer = kmer;
    load({{{test::randomBases(400000, 1)}, {test::randomBases(300000, 2), 100}}});
    const auto estimate =
        static_cast<double>(indexBytes(kmer, indexedKmers(all()), contigBases(all())));
    EXPECT_NEAR(estimate / static_cast<double>(seedIndex->bytes()), 1, 0.05) << "-k " << kmer;
    releaseAssembly();
  }
}
#endif

// Two windows in three begin with a new seed where it has two places in a window.
TEST_F(MemoryModelTest, IndexGrowsWithTheShareOfSeeds) {
  EXPECT_GT(indexBytes(12, 1000000, 1000000), 2 * indexBytes(31, 1000000, 1000000));
}

TEST_F(MemoryModelTest, AnyLengthOfKmersHasAnIndex) {
  for (const int kmer : {0, 1, 63, 2147483647}) {
    EXPECT_GT(indexBytes(kmer, 1000, 2000), 1000U) << "-k " << kmer;
  }
}

TEST_F(MemoryModelTest, AssemblyIsItsBasesAndLittleMore) {
  load({{{test::randomBases(400000, 1)}, {test::randomBases(300000, 2), 100}}});
  EXPECT_GE(assemblyBytes(all()), 700000U);
  EXPECT_LE(assemblyBytes(all()), 700500U);
}

TEST(BatchBytes, HoldBothReadsOfPairs) {
  BatchShape singles;
  singles.entries = singles.room;
  singles.readLength = 150;
  BatchShape pairs = singles;
  pairs.arePairs = true;
  const uint64_t rows = batchBytes(BatchShape{.room = 0});
  EXPECT_EQ(batchBytes(pairs) - rows, 2 * (batchBytes(singles) - rows));
  // A string of 151 characters takes 160 bytes on the heap.
  EXPECT_EQ(batchBytes(singles) - rows, bufferSize * (sizeof(std::string) + 160));
}

TEST(BatchBytes, AreThoseOfFewEntries) {
  BatchShape shape;
  shape.readLength = 150;
  shape.room = 1000;
  shape.entries = 400;
  const uint64_t few = batchBytes(shape);
  shape.entries = 401;
  EXPECT_EQ(batchBytes(shape) - few, 160U);
  shape.entries = 5000;
  EXPECT_EQ(batchBytes(shape) - few, 600 * 160U);
}

TEST(BatchBytes, GrowWithWhatIsFound) {
  BatchShape shape;
  shape.readLength = 150;
  shape.entries = shape.room;
  const uint64_t none = batchBytes(shape);
  shape.foundPerRead = 0.5;
  EXPECT_GT(batchBytes(shape) - none, bufferSize / 2 * (160 + sizeof(FoundRecord)));
}

TEST(PeakMemory, IsTheSumAndWhatEachThreadTakes) {
  const MemoryEstimate one = peakMemory(1000, 200, 30, 1);
  const MemoryEstimate four = peakMemory(1000, 200, 30, 4);
  EXPECT_EQ(one.index, 1000U);
  EXPECT_EQ(one.assembly, 200U);
  EXPECT_EQ(one.batch, 30U);
  EXPECT_GT(one.peak, 1230U);
  EXPECT_GT(four.peak, one.peak);
  EXPECT_EQ(peakMemory(1000, 200, 30, -1).peak, one.peak);
}

}  // namespace
}  // namespace velk::survey
