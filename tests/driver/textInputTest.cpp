// Text inputs: lines, their numbers, and reads that fail; standard descriptors that are closed when
// a program starts.
#include "driver/textInput.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "driver/outputFile.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

using Lines = std::vector<std::string>;

class TextInputs : public ::testing::Test {
 protected:
  Lines linesOf(const std::string& text) const {
    TextInput input(folder.write("input", text));
    EXPECT_TRUE(input.isOpen());
    Lines lines;
    for (std::string line; input.readLine(line);) lines.push_back(line);
    return lines;
  }

  TemporaryFolder folder;
};

TEST_F(TextInputs, LinesEndAtNewlinesAlone) {
  EXPECT_EQ((Lines{"one", "", "two\r", std::string("\0three", 6)}),
            linesOf(std::string("one\n\ntwo\r\n\0three\n", 17)));
}

TEST_F(TextInputs, LastLineNeedsNoNewline) {
  EXPECT_EQ((Lines{"one", "two"}), linesOf("one\ntwo"));
  EXPECT_EQ((Lines{"one", ""}), linesOf("one\n\n"));
}

TEST_F(TextInputs, EmptyFileHasNoLines) {
  EXPECT_EQ(Lines{}, linesOf(""));
}

TEST_F(TextInputs, LongLinesAreRead) {
  const std::string line(3000000, 'A');
  EXPECT_EQ((Lines{line, "B"}), linesOf(line + "\nB"));
}

TEST_F(TextInputs, EndOfFileEmptiesTheLine) {
  TextInput input(folder.write("input", "one\n"));
  std::string line = "before";
  EXPECT_TRUE(input.readLine(line));
  EXPECT_EQ("one", line);
  for (int i = 0; i < 2; ++i) {
    line = "before";
    EXPECT_FALSE(input.readLine(line));
    EXPECT_EQ("", line);
  }
}

TEST_F(TextInputs, TellThePlaceOfTheLineReadLast) {
  const std::string file = folder.write("input", "one\ntwo\n");
  TextInput input(file);
  std::string line;
  EXPECT_EQ(file, input.file());
  EXPECT_EQ(0U, input.lineNumber());
  input.readLine(line);
  EXPECT_EQ(1U, input.lineNumber());
  EXPECT_EQ(file + ", line 1", input.place());
  input.readLine(line);
  input.readLine(line);
  EXPECT_EQ(2U, input.lineNumber());
  EXPECT_EQ(file + ", line 2", input.place());
}

TEST_F(TextInputs, MissingFileIsNotOpen) {
  EXPECT_FALSE(TextInput(folder.path("missing")).isOpen());
  EXPECT_FALSE(TextInput("").isOpen());
}

TEST_F(TextInputs, FailedReadIsNotTheEndOfTheFile) {
  const std::string directory = folder.path("input");
  std::filesystem::create_directory(directory);
  TextInput input(directory);
  ASSERT_TRUE(input.isOpen());
  std::string line;
  EXPECT_EXIT(input.readLine(line), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + directory + ": Is a directory\n"));
}

TEST_F(TextInputs, PipesAreRefusedWhereTheyWouldBeOpenedTwice) {
  const std::string pipe = folder.path("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  EXPECT_EXIT(refusePipe(pipe), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + pipe + ": Illegal seek\n"));
  std::filesystem::create_symlink("pipe", folder.path("link"));
  EXPECT_EXIT(refusePipe(folder.path("link")), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + folder.path("link") + ": Illegal seek\n"));
}

TEST_F(TextInputs, WhatIsNoPipeIsNotRefused) {
  const std::string file = folder.write("file", "");
  const auto askForAll = [&] {
    refusePipe(file);
    refusePipe(folder.path("missing"));
    refusePipe("/dev/null");
    refusePipe("/");
    std::exit(0);
  };
  EXPECT_EXIT(askForAll(), ExitedWithCode(0), Eq(""));
}

// Standard descriptors that are closed when a program starts.

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
