// The rows of found-read records and the values that the shared state starts with.
#include "streaming/readBuffer.h"

#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

class ReadBuffer : public StreamingTest {};

TEST_F(ReadBuffer, StartValues) {
  EXPECT_EQ(bufferSize, 500000);
  EXPECT_EQ(batchLimit, 500000);
  EXPECT_EQ(threadNum, 1);
  EXPECT_EQ(foundNumInLib, 0u);
  EXPECT_EQ(totalFoundNum, 0u);
}

TEST_F(ReadBuffer, LargestShareOfABatch) {
  EXPECT_EQ(threadBufSize(1), 500001);
  EXPECT_EQ(threadBufSize(2), 250001);
  EXPECT_EQ(threadBufSize(3), 166667);
  EXPECT_EQ(threadBufSize(4), 125001);
  EXPECT_EQ(threadBufSize(7), 71429);
  EXPECT_EQ(threadBufSize(500000), 2);
  EXPECT_EQ(threadBufSize(600000), 1);
}

// Runs out of bounds under the address sanitizer when a row is shorter than it says.
TEST_F(ReadBuffer, RowsHoldThreeRecordsPerEntry) {
  EXPECT_EQ(rowCapacity(1), 1500003u);
  EXPECT_EQ(rowCapacity(4), 375003u);
  constexpr int kWorkers = 8;
  allocateRows(kWorkers);
  const auto capacity = 3 * static_cast<uint32_t>(threadBufSize(kWorkers));
  for (const int t : {0, kWorkers - 1}) {
    for (uint32_t slot = 0; slot < capacity;) {
      const uint32_t expected = slot + 1;
      recordFound(t, slot, "ACGT", {slot, 2, -3, 4, 5});
      ASSERT_EQ(slot, expected);
    }
    for (uint32_t slot = 0; slot < capacity; ++slot) {
      ASSERT_EQ(foundReads[t][slot], "ACGT");
      ASSERT_EQ(scaffold[t][slot], slot);
      ASSERT_EQ(gapsSize[t][slot], 5u);
    }
  }
}

TEST_F(ReadBuffer, RecordFoundFillsOneEntryOfTheSixRows) {
  allocateRows(2);
  uint32_t n = 3;
  recordFound(1, n, "ACGTT", {11, 22, -33, 44, 55});
  EXPECT_EQ(n, 4u);
  EXPECT_EQ(foundReads[1][3], "ACGTT");
  EXPECT_EQ(scaffold[1][3], 11u);
  EXPECT_EQ(frontContig[1][3], 22u);
  EXPECT_EQ(positionInGap[1][3], -33);
  EXPECT_EQ(gapNum[1][3], 44u);
  EXPECT_EQ(gapsSize[1][3], 55u);
  EXPECT_EQ(foundReadNum[1], 0u) << "the worker sets its count when its pass ends";
}

TEST_F(ReadBuffer, ReleasedRowsLeaveNoPointers) {
  allocateWorkerArrays(1);
  allocateRow(0, 1000);
  releaseRows(1);
  EXPECT_EQ(threads, nullptr);
  EXPECT_EQ(velk::signal, nullptr);
  EXPECT_EQ(threadId, nullptr);
  EXPECT_EQ(foundReadNum, nullptr);
  EXPECT_EQ(foundReads, nullptr);
  EXPECT_EQ(scaffold, nullptr);
  EXPECT_EQ(frontContig, nullptr);
  EXPECT_EQ(positionInGap, nullptr);
  EXPECT_EQ(gapNum, nullptr);
  EXPECT_EQ(gapsSize, nullptr);
}

}  // namespace
}  // namespace velk::test
