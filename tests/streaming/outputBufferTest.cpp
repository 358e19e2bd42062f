// The found-read FASTA: the bytes of a record, the order of records, the counters.
#include <cstdlib>

#include "contig/contig.h"
#include "driver/velk.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/gapAssembly.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

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

}  // namespace
}  // namespace velk::test
