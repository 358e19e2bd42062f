// How a run ends early, messages and statuses of the ways to die, and who hears of it.
#include "driver/fatal.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <memory>
#include <new>
#include <string>

#include "driver/listener.h"
#include "driver/velk.h"

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

// Who hears of a run: velk's own listener, and another in its place.

struct Ended {
  ExitStatus status;
};

// Keeps what it receives.
class KeepingListener final : public Listener {
 public:
  void say(std::string_view text) override { received += text; }
  [[noreturn]] void end(ExitStatus status, std::string_view message) override {
    received += message;
    throw Ended{status};
  }

  std::string received;
};

template <class Action>
int statusOf(Action action) {
  try {
    action();
  } catch (const Ended& end) {
    return end.status;
  }
  return -1;
}

TEST(StandardListener, SaysOnStandardError) {
  ::testing::internal::CaptureStderr();
  say("one\n");
  listener->complain("two\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "one\ntwo\n");
}

TEST(StandardListener, ComplainsEvenWhenAnEarlierMessageCouldNotBeWritten) {
  ::testing::internal::CaptureStderr();
  std::cerr.setstate(std::ios::badbit);
  say("lost\n");
  listener->complain("written\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "written\n");
}

TEST(StandardListener, EndsTheProcess) {
  EXPECT_EXIT(listener->end(kHeaderError, "the end\n"), ExitedWithCode(3), Eq("the end\n"));
}

TEST(StandardListener, EndsTheProcessWithATextOnStandardOutput) {
  const auto endWithoutErrors = [] {
    std::cout.rdbuf(std::cerr.rdbuf());  // where the test looks
    listener->endOnOutput(kInputError, "the text\n");
  };
  EXPECT_EXIT(endWithoutErrors(), ExitedWithCode(255), Eq("the text\n"));
}

TEST(ListenerInUse, HearsWhatVelksOwnWouldPrint) {
  KeepingListener keeping;
  ::testing::internal::CaptureStderr();
  ::testing::internal::CaptureStdout();
  {
    const ListenerInUse inUse(keeping);
    say("one\n");
    listener->complain("two\n");
  }
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(keeping.received, "one\ntwo\n");
}

TEST(ListenerInUse, HearsOfEveryWayToEndARun) {
  KeepingListener keeping;
  const ListenerInUse inUse(keeping);
  EXPECT_EQ(statusOf([] { fatal(kHeaderError, "a\n"); }), 3);
  EXPECT_EQ(statusOf([] { outOfMemory({7, "f", kMemoryError}); }), 2);
  EXPECT_EQ(statusOf([] {
              errno = EIO;
              failReading("r.fa");
            }),
            1);
  EXPECT_EQ(keeping.received,
            "a\nOut of memory! Line: 7. Function: f\n"
            "[ERROR]: can't read r.fa: Input/output error\n");
  keeping.received.clear();
  EXPECT_EQ(statusOf(usage), 1);
  EXPECT_TRUE(keeping.received.starts_with("Usage:"));
}

TEST(ListenerInUse, GivesBackToTheOneBefore) {
  Listener* const before = listener;
  KeepingListener outer;
  KeepingListener inner;
  {
    const ListenerInUse outerInUse(outer);
    try {
      const ListenerInUse innerInUse(inner);
      fatal(kUserError, "inner\n");
    } catch (const Ended&) {
      say("outer\n");
    }
  }
  EXPECT_EQ(inner.received, "inner\n");
  EXPECT_EQ(outer.received, "outer\n");
  EXPECT_EQ(listener, before);
}

}  // namespace

}  // namespace velk::test
