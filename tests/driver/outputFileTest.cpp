// Checked outputs: they never replace an input, and every byte that is missing is reported.
#include "driver/outputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>

#include "driver/fatal.h"
#include "tests/support/files.h"

namespace {

int statError = 0;  // when not 0, stat() fails with it

}  // namespace

// The linker option --wrap sends the calls of the program to this function, under this name.
extern "C" {
int __real_stat(const char* file, struct stat* status);
int __wrap_stat(const char* file, struct stat* status);

int __wrap_stat(const char* file, struct stat* status) {
  if (statError == 0) return __real_stat(file, status);
  errno = statError;
  return -1;
}
}

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

class OutputFile : public ::testing::Test {
 protected:
  // Expects that an output on `file` is refused because of `other`.
  static void expectRefused(const std::string& file, const std::string& other) {
    const auto openIt = [&] {
      std::ofstream output;
      openOutput(output, file);
    };
    const std::string message =
        "[ERROR]: output file " + file + " is the same file as " + other + "\n";
    EXPECT_EXIT(openIt(), ExitedWithCode(1), Eq(message));
  }

  // Expects that an output on `file` may be opened; nothing is written to it.
  static void expectAllowed(const std::string& file) {
    std::ofstream output;
    ASSERT_TRUE(openOutput(output, file));
    finishOutput(output, file);
  }

  TemporaryFolder folder;
};

TEST_F(OutputFile, FinishedFileHasEveryByte) {
  const std::string file = folder.write("out", "what was there before, longer than what comes");
  const std::string text(100000, 'x');
  std::ofstream output;
  ASSERT_TRUE(openOutput(output, file));
  EXPECT_EQ("", contentOf(file));
  output << text;
  requireWritten(output, file);
  finishOutput(output, file);
  EXPECT_FALSE(output.is_open());
  EXPECT_EQ(text, contentOf(file));
}

TEST_F(OutputFile, CannotOpenInAMissingFolder) {
  std::ofstream output;
  EXPECT_FALSE(openOutput(output, folder.path("missing/out")));
}

TEST_F(OutputFile, CannotOpenADirectory) {
  std::filesystem::create_directory(folder.path("out"));
  std::ofstream output;
  EXPECT_FALSE(openOutput(output, folder.path("out")));
}

TEST_F(OutputFile, CannotOpenAnEmptyName) {
  std::ofstream output;
  EXPECT_FALSE(openOutput(output, ""));
}

TEST_F(OutputFile, ProtectedFileIsRefusedAndUntouched) {
  const std::string input = folder.write("in", "reads");
  protectFile(input);
  expectRefused(input, input);
  EXPECT_EQ("reads", contentOf(input));
}

TEST_F(OutputFile, ProtectedFileIsKnownByAnyPath) {
  const std::string input = folder.write("in", "reads");
  std::filesystem::create_directory(folder.path("sub"));
  protectFile(input);
  expectRefused(folder.path("./in"), input);
  expectRefused(folder.path("sub/../in"), input);
  EXPECT_EQ("reads", contentOf(input));
}

TEST_F(OutputFile, ProtectedFileIsKnownByAHardLink) {
  const std::string input = folder.write("in", "reads");
  const std::string link = folder.path("link");
  std::filesystem::create_hard_link(input, link);
  protectFile(input);
  expectRefused(link, input);
  EXPECT_EQ("reads", contentOf(input));
}

TEST_F(OutputFile, ProtectedFileIsKnownBehindSymbolicLinks) {
  const std::string input = folder.write("in", "reads");
  std::filesystem::create_symlink("in", folder.path("link"));
  std::filesystem::create_symlink("link", folder.path("linkToLink"));
  protectFile(folder.path("link"));
  expectRefused(input, folder.path("link"));
  expectRefused(folder.path("linkToLink"), folder.path("link"));
  EXPECT_EQ("reads", contentOf(input));
}

TEST_F(OutputFile, TheFirstSameFileIsTold) {
  const std::string first = folder.write("first", "reads");
  const std::string second = folder.path("second");
  std::filesystem::create_hard_link(first, second);
  protectFile(folder.path("missing"));
  protectFile(second);
  protectFile(first);
  expectRefused(first, second);
}

TEST_F(OutputFile, FileOfWhichNothingIsKnownIsRefused) {
  const std::string file = folder.path("out");
  protectFile(folder.write("in", "reads"));
  const auto openIt = [&] {
    std::ofstream output;
    statError = EIO;
    openOutput(output, file);
  };
  EXPECT_EXIT(openIt(), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + file + ": Input/output error\n"));
  EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(OutputFile, FileOfTheSameContentIsAnotherFile) {
  protectFile(folder.write("in", "reads"));
  const std::string other = folder.write("other", "reads");
  expectAllowed(other);
  EXPECT_EQ("", contentOf(other));
}

TEST_F(OutputFile, MissingFilesAreNotTheSame) {
  protectFile(folder.path("missing"));
  protectFile("");
  expectAllowed(folder.path("out"));
  EXPECT_FALSE(std::filesystem::exists(folder.path("missing")));
}

TEST_F(OutputFile, MissingInputIsProtectedOnceTheOutputHasMadeIt) {
  const std::string input = folder.path("missing");
  protectFile(input);
  expectRefused(input, input);
}

TEST_F(OutputFile, UnprotectedFileMayBeReplaced) {
  const std::string input = folder.write("in", "reads");
  protectFile(input);
  unprotectFile(input);
  unprotectFile(folder.path("never protected"));
  expectAllowed(input);
  EXPECT_EQ("", contentOf(input));
}

TEST_F(OutputFile, UnprotectingLiftsOneProtection) {
  const std::string input = folder.write("in", "reads");
  protectFile(input);
  protectFile(input);
  unprotectFile(input);
  expectRefused(input, input);
}

TEST_F(OutputFile, OutputsAreProtectedFromEachOther) {
  const std::string file = folder.path("out");
  expectAllowed(file);
  std::filesystem::create_symlink("out", folder.path("link"));
  expectRefused(folder.path("link"), file);
}

TEST_F(OutputFile, EarlyEndKeepsWhatWasWritten) {
  const std::string finished = folder.path("finished");
  const std::string open = folder.path("open");
  const auto writeAndDie = [&] {
    std::ofstream first;
    std::ofstream second;
    if (!openOutput(first, finished) || !openOutput(second, open)) return;
    first << "first\n";
    second << "second\n";
    finishOutput(first, finished);
    fatal(kHeaderError, "early\n");
  };
  EXPECT_EXIT(writeAndDie(), ExitedWithCode(3), Eq("early\n"));
  EXPECT_EQ("first\n", contentOf(finished));
  EXPECT_EQ("second\n", contentOf(open));
}

TEST_F(OutputFile, OutputLeftByAnExceptionKeepsWhatWasWritten) {
  const std::string file = folder.path("out");
  const auto leaveAndDie = [&] {
    try {
      LocalOutput output;
      if (!openOutput(output, file)) return;
      output << "text\n";
      throw std::bad_alloc();
    } catch (const std::bad_alloc&) {
      fatal(kMemoryError, "late\n");
    }
  };
  EXPECT_EXIT(leaveAndDie(), ExitedWithCode(2), Eq("late\n"));
  EXPECT_EQ("text\n", contentOf(file));
}

TEST_F(OutputFile, FullDiskIsToldWhenTheFileIsFinished) {
  const auto writeAndFinish = [] {
    std::ofstream output;
    if (!openOutput(output, "/dev/full")) return;
    output << "one line\n";
    requireWritten(output, "/dev/full");  // still in the stream's buffer
    finishOutput(output, "/dev/full");
  };
  EXPECT_EXIT(writeAndFinish(), ExitedWithCode(1),
              Eq("[ERROR]: can't write /dev/full: No space left on device\n"));
}

TEST_F(OutputFile, FullDiskIsToldAsSoonAsAWriteHasFailed) {
  const auto writeMuch = [] {
    std::ofstream output;
    if (!openOutput(output, "/dev/full")) return;
    output << std::string(100000, 'x');
    requireWritten(output, "/dev/full");
  };
  EXPECT_EXIT(writeMuch(), ExitedWithCode(1),
              Eq("[ERROR]: can't write /dev/full: No space left on device\n"));
}

TEST_F(OutputFile, LostBytesAreToldHoweverLateTheyAreAskedFor) {
  const auto writeMuchAndFinish = [] {
    std::ofstream output;
    if (!openOutput(output, "/dev/full")) return;
    for (int i = 0; i < 100000; ++i) output << "x\n";
    finishOutput(output, "/dev/full");
  };
  EXPECT_EXIT(writeMuchAndFinish(), ExitedWithCode(1),
              Eq("[ERROR]: can't write /dev/full: No space left on device\n"));
}

TEST_F(OutputFile, NothingWrittenToAFullDiskIsNothingLost) {
  const auto finishAtOnce = [] {
    std::ofstream output;
    if (!openOutput(output, "/dev/full")) return;
    finishOutput(output, "/dev/full");
    std::exit(0);
  };
  EXPECT_EXIT(finishAtOnce(), ExitedWithCode(0), Eq(""));
}

}  // namespace
}  // namespace velk::test
