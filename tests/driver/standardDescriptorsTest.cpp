// Standard descriptors that are closed when a program starts.
#include "driver/standardDescriptors.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace velk::test {
namespace {

using ::testing::ExitedWithCode;

constexpr std::array<int, 3> kStandard = {0, 1, 2};

std::string targetOf(int descriptor) {
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  std::error_code error;
  return std::filesystem::read_symlink(link, error).string();
}

bool isClosed(unsigned subset, int descriptor) {
  return (subset >> static_cast<unsigned>(descriptor) & 1U) != 0;
}

// Whether, with a subset closed, those and only those come to be /dev/null, and the next file that
// is opened gets a number of its own.
bool opensExactly(unsigned subset) {
  std::array<std::string, 3> before;
  for (const int descriptor : kStandard) {
    before[static_cast<std::size_t>(descriptor)] = targetOf(descriptor);
    if (isClosed(subset, descriptor)) close(descriptor);
  }
  openStandardDescriptors();
  bool good = true;
  for (const int descriptor : kStandard) {
    const std::string& expected = before[static_cast<std::size_t>(descriptor)];
    good = good && targetOf(descriptor) == (isClosed(subset, descriptor) ? "/dev/null" : expected);
  }
  return good && open("/dev/zero", O_RDONLY) > STDERR_FILENO;
}

// Lets no file be opened until the process ends, when gcc's counters are written.
void forbidFiles() {
  static rlimit before;
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit none{0, before.rlim_max};
  setrlimit(RLIMIT_NOFILE, &none);
  std::atexit([] { setrlimit(RLIMIT_NOFILE, &before); });
}

TEST(StandardDescriptors, EverySubsetThatIsClosedIsOpenedOnTheNullDevice) {
  for (unsigned subset = 0; subset < 8; ++subset) {
    EXPECT_EXIT(std::_Exit(opensExactly(subset) ? 0 : 1), ExitedWithCode(0), "")
        << "subset " << subset;
  }
}

TEST(StandardDescriptors, WhatWasClosedCanNeitherBeReadNorWritten) {
  EXPECT_EXIT(
      {
        for (const int descriptor : kStandard) close(descriptor);
        openStandardDescriptors();
        char byte = 0;
        const bool isUseless =
            read(0, &byte, 1) == -1 && write(1, &byte, 1) == -1 && write(2, &byte, 1) == -1;
        std::_Exit(isUseless ? 0 : 1);
      },
      ExitedWithCode(0), "");
}

TEST(StandardDescriptors, NullDeviceThatCannotBeOpenedEndsTheRun) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "The sanitizer looks into memory by descriptors of its own.";
#endif
  EXPECT_EXIT(
      {
        close(STDIN_FILENO);
        forbidFiles();
        openStandardDescriptors();
      },
      ExitedWithCode(1), "^\\[ERROR\\]: can't open /dev/null: Too many open files\n$");
}

}  // namespace
}  // namespace velk::test
