// Memory that runs out: a program of its own, because it replaces operator new.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"
#include "tests/streaming/streamingTest.h"

namespace {

std::atomic<std::size_t> smallestToFail = SIZE_MAX;  // bytes
std::atomic<int> toSpare = 0;                        // allocations of at least that size

}  // namespace

void* operator new(std::size_t size) {
  if (size >= smallestToFail && toSpare-- <= 0) throw std::bad_alloc();
  void* const memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size) {
  return operator new(size);
}

// Where only these are inlined, gcc takes what they free for memory of the usual operator new.
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory) noexcept {
  std::free(memory);
}

[[gnu::noinline]] void operator delete[](void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// From now on `new` fails on every thread when it asks for `bytes` or more, but for the first
// `spared` times. For use in a statement that is expected to exit.
void failAllocationsFrom(std::size_t bytes, int spared) {
  toSpare = spared;
  smallestToFail = bytes;
}

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

TEST_F(OutOfMemory, UsageIsNotCutShort) {
  failAllocationsFrom(1000, 0);
  EXPECT_THROW(usage(), std::bad_alloc);
  failAllocationsFrom(SIZE_MAX, 0);
}

}  // namespace
}  // namespace velk::test
