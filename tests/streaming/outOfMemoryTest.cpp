// Memory that runs out: a program of its own, because it replaces operator new.
#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"
#include "tests/streaming/gapAssembly.h"
#include "tests/streaming/scarceMemory.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

constexpr std::size_t kReadBuffer = sizeof(std::string) * bufferSize;  // bytes

class OutOfMemory : public GapAssemblyTest {
 protected:
  // Looks for reads while all but `spared` allocations of the read buffer's size fail.
  static void findWithout(int insert, std::string file, int spared) {
    std::string none;
    insertLength = insert;
    failAllocationsFrom(kReadBuffer, spared);
    FindReadsInGaps(file, none, 1);
  }
};

TEST_F(OutOfMemory, BufferOfPairs) {
  write("reads", ">1\nACGT\n");
  const char* const message = "Out of memory! Line: 1736. Function: FindReadsInGaps\n";
  EXPECT_EXIT(findWithout(500, "reads", 0), ExitedWithCode(2), Eq(message));
  EXPECT_EXIT(findWithout(500, "reads", 1), ExitedWithCode(2), Eq(message));
}

TEST_F(OutOfMemory, BufferOfSingleReads) {
  write("reads", ">1\nACGT\n");
  EXPECT_EXIT(findWithout(0, "reads", 0), ExitedWithCode(2),
              Eq("load SE file:reads!\n"
                 "Out of memory! Line: 1625. Function: FindReadsInGaps\n"));
}

TEST_F(OutOfMemory, BufferIsAllocatedBeforeTheFormatIsJudged) {
  write("reads", "ACGT\n");
  EXPECT_EXIT(findWithout(500, "reads", 0), ExitedWithCode(2),
              Eq("Out of memory! Line: 1736. Function: FindReadsInGaps\n"));
}

TEST_F(OutOfMemory, WorkerEndsTheRunOnTheMainThread) {
  std::string read = randomBases(1000000, 1);
  EXPECT_EXIT(
      {
        start(2);
        readsA = &read;
        bufferNum = 1;
        threadNum = 2;
        failAllocationsFrom(read.size(), 0);
        sendSignal(1);
      },
      ExitedWithCode(2), Eq("[ERROR]: out of memory\n"));
}

}  // namespace
}  // namespace velk::test
