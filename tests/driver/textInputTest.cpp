// Text inputs: lines, their numbers, and reads that fail.
#include "driver/textInput.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <string>
#include <vector>

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

}  // namespace
}  // namespace velk::test
