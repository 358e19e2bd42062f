// How a run ends early: messages and statuses of the ways to die.
#include "driver/fatal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <new>

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

TEST(Fatal, Statuses) {
  EXPECT_EQ(0, kSuccess);
  EXPECT_EQ(1, kUserError);
  EXPECT_EQ(2, kMemoryError);
  EXPECT_EQ(3, kHeaderError);
  EXPECT_EQ(255, kInputError);
}

TEST(Fatal, WritesTheMessageAsItStands) {
  EXPECT_EXIT(fatal(kHeaderError, "two\nlines"), ExitedWithCode(3), Eq("two\nlines"));
  EXPECT_EXIT(fatal(kInputError, "Please check input!\n"), ExitedWithCode(255),
              Eq("Please check input!\n"));
}

TEST(Fatal, MessageIsWrittenEvenWhenAnEarlierOneCouldNotBe) {
  const auto failAfterLoss = [] {
    std::cerr.setstate(std::ios::badbit);
    fatal(kUserError, "the end\n");
  };
  EXPECT_EXIT(failAfterLoss(), ExitedWithCode(1), Eq("the end\n"));
  const auto runOutAfterLoss = [] {
    std::cerr.setstate(std::ios::badbit);
    outOfMemory({294, "main", kMemoryError});
  };
  EXPECT_EXIT(runOutAfterLoss(), ExitedWithCode(2),
              Eq("Out of memory! Line: 294. Function: main\n"));
}

TEST(Fatal, FailedReadTellsTheReason) {
  const auto fail = [] {
    errno = EIO;
    failReading("reads.fa");
  };
  EXPECT_EXIT(fail(), ExitedWithCode(1), Eq("[ERROR]: can't read reads.fa: Input/output error\n"));
}

TEST(Fatal, OutOfMemoryMessages) {
  EXPECT_EXIT(outOfMemory({294, "main", kMemoryError}), ExitedWithCode(2),
              Eq("Out of memory! Line: 294. Function: main\n"));
  EXPECT_EXIT(outOfMemory({7, "f", kUserError, "\tFunction: ", ".\n"}), ExitedWithCode(1),
              Eq("Out of memory! Line: 7\tFunction: f.\n"));
}

TEST(Fatal, AllocatedArrayIsZero) {
  const std::unique_ptr<int[]> numbers(allocateArray<int>(1000, {1, "test", kMemoryError}));
  for (std::size_t i = 0; i < 1000; ++i) ASSERT_EQ(0, numbers[i]);
}

struct NoRoom {
  NoRoom() { throw std::bad_alloc(); }
};

TEST(Fatal, ArrayWithoutMemoryEndsTheRun) {
  EXPECT_EXIT(allocateArray<NoRoom>(1, {1736, "FindReadsInGaps", kMemoryError}), ExitedWithCode(2),
              Eq("Out of memory! Line: 1736. Function: FindReadsInGaps\n"));
}

}  // namespace
}  // namespace velk::test
