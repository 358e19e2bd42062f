// The rows of found-read records, the values that the shared state starts with, and the output.
#include "streaming/readBuffer.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "contig/contig.h"
#include "driver/velk.h"
#include "streaming/blockReader.h"
#include "streaming/decodedInput.h"
#include "streaming/gzipDecoder.h"
#include "streaming/gzipInput.h"
#include "tests/streaming/streamingTest.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

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

// The found-read FASTA: the bytes of a record, the order of records, the counters.

class OutputBufferTest : public GapAssemblyTest {
 protected:
  // Leaves a record in the row of worker t.
  static void put(int t, const std::string& read, const FoundRecord& record) {
    auto n = static_cast<uint32_t>(foundReadNum[t]);
    recordFound(t, n, read, record);
    foundReadNum[t] = n;
  }
};

TEST_F(OutputBufferTest, RecordIsTwoLines) {
  allocateRows(1);
  openOutputFile();
  scaffoldInfo[1].scaffoldId = "chr 7/x";
  insertLength = 350;
  put(0, "ACGTNacgt", {1, 12, -34, 1, 567});
  OutputBuffer();
  EXPECT_EQ(writtenOutput(), ">1\t567\t-34\tchr 7/x\t12\t350\nACGTNacgt\n");
}

TEST_F(OutputBufferTest, SignsOfTheFields) {
  allocateRows(1);
  openOutputFile();
  insertLength = -5;
  put(0, "", {0, ~uint64_t{0}, INT64_MIN, 0, ~uint64_t{0}});
  OutputBuffer();
  EXPECT_EQ(writtenOutput(),
            ">0\t18446744073709551615\t-9223372036854775808\ts0\t18446744073709551615\t-5\n\n");
}

TEST_F(OutputBufferTest, WorkerAfterWorkerEachInItsOrder) {
  allocateRows(3);
  openOutputFile();
  put(2, "E", {0, 0, 1, 0, 150});
  put(0, "A", {0, 0, 2, 0, 150});
  put(0, "C", {1, 0, 3, 1, 160});
  put(2, "F", {0, 0, 4, 0, 150});
  OutputBuffer();
  EXPECT_EQ(writtenOutput(),
            ">0\t150\t2\ts0\t0\t0\nA\n>1\t160\t3\ts1\t0\t0\nC\n"
            ">0\t150\t1\ts0\t0\t0\nE\n>0\t150\t4\ts0\t0\t0\nF\n");
}

TEST_F(OutputBufferTest, CountsPerGapAndFile) {
  allocateRows(2);
  openOutputFile();
  put(0, "A", {0, 0, 0, 0, 150});
  put(0, "A", {0, 0, 0, 0, 150});  // the same read twice counts twice
  put(1, "A", {1, 0, 0, 1, 160});
  foundNumInLib = 10;
  OutputBuffer();
  EXPECT_EQ(foundNumInLib, 13u);
  EXPECT_EQ(totalFoundNum, 0u) << "is for FindReadsInGaps to add to";
  EXPECT_EQ(readSumInEachGap[0], 2);
  EXPECT_EQ(readSumInEachGap[1], 1);
  EXPECT_EQ(foundReadNum[0], 2u) << "the counts are for the workers to reset";
}

TEST_F(OutputBufferTest, LooksAtTheWorkersThatSharedTheBatch) {
  allocateRows(2);
  openOutputFile();
  put(0, "A", {0, 0, 0, 0, 150});
  put(1, "C", {0, 0, 0, 0, 150});
  threadNum = 1;
  OutputBuffer();
  EXPECT_EQ(writtenOutput(), ">0\t150\t0\ts0\t0\t0\nA\n");
  EXPECT_EQ(foundNumInLib, 1u);
}

TEST_F(OutputBufferTest, NothingFoundWritesNothing) {
  allocateRows(2);
  openOutputFile();
  OutputBuffer();
  EXPECT_EQ(writtenOutput(), "");
  EXPECT_EQ(foundNumInLib, 0u);
}

TEST_F(OutputBufferTest, FullDiskEndsTheRun) {
  EXPECT_EXIT(
      {
        allocateRows(1);
        out_file = "/dev/full";
        fout.open(out_file);
        put(0, std::string(1000000, 'A'), {0, 0, 0, 0, 150});
        OutputBuffer();
      },
      ExitedWithCode(1), Eq("[ERROR]: can't write /dev/full: No space left on device\n"));
}

// What streaming's contracts require is asserted in builds that assert.

#ifndef NDEBUG

TEST(Contracts, ABatchIsSharedByOneWorkerAtLeast) {
  volatile int none = 0;
  EXPECT_DEATH(threadBufSize(none), "workers >= 1");
}

TEST(Contracts, BytesAreReadIntoSomeRoom) {
  BlockReader file(1024);
  GzipDecoder decoder(file);
  EXPECT_DEATH(decoder.read({}), "room");
}

TEST(Contracts, TheHelperIsStartedBeforeItIsAsked) {
  AheadRing<int> ring([](int& /*block*/) { return true; }, HelperAtEnd::kIsAwaited);
  EXPECT_DEATH(ring.next(), "isRunning");
}

TEST(Contracts, AFileIsInflatedAheadFromItsStartOrNotAtAll) {
  const TemporaryFolder folder;
  GzipInput input;
  ASSERT_TRUE(input.open(folder.writeGzip("a.gz", "bytes")));
  input.next();
  EXPECT_DEATH(input.inflateAhead(), "block_");
}

#endif

}  // namespace

}  // namespace velk::test
