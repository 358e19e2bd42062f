// Who hears of a run: velk's own listener, and another in its place.
#include "driver/listener.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <iostream>
#include <string>

#include "driver/fatal.h"
#include "driver/velk.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

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
