// How reading a scaffold FASTA ends early: every message and status.
#include <filesystem>

#include "driver/outputFile.h"
#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// Loads `file` as the run does, without the message of InitialScaffold.
void load(const std::string& file) {
  uint64_t gaps = 0;
  messagesOf([&] { InitialScaffold(scaffoldInfo, file, scaffoldSum); });
  velk::LoadScaffolds(scaffoldInfo, file, scaffoldSum, gaps);
}

TEST_F(LoadScaffolds, MissingScaffoldFile) {
  const std::string file = folder_.path("missing");
  EXPECT_EXIT(velk::LoadScaffolds(scaffoldInfo, file, 0, gaps_), ExitedWithCode(1),
              Eq("Can't open input file: " + file + "\n"));
  EXPECT_FALSE(std::filesystem::exists(file + ".contigPos"));
}

TEST_F(LoadScaffolds, UnreadableScaffoldFile) {
  std::filesystem::create_directory(folder_.path("a.fa"));
  const std::string file = folder_.path("a.fa");
  EXPECT_EXIT(velk::LoadScaffolds(scaffoldInfo, file, 0, gaps_), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + file + ": Is a directory\n"));
}

TEST_F(LoadScaffolds, ContigPosFileCannotBeCreated) {
  const std::string file = folder_.write("a.fa", ">C1\nACGT\n");
  std::filesystem::create_directory(file + ".contigPos");
  EXPECT_EXIT(load(file), ExitedWithCode(1),
              Eq("Can't open output file: " + file + ".contigPos\n"));
}

TEST_F(LoadScaffolds, ContigFileCannotBeCreated) {
  const std::string file = folder_.write("a.fa", ">C1\nACGT\n");
  std::filesystem::create_directory(file + ".contig");
  EXPECT_EXIT(load(file), ExitedWithCode(1), Eq("Can't open output file: " + file + ".contig\n"));
  EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t0\t4\n");
}

TEST_F(LoadScaffolds, SideFilesMustBeWrittenWhole) {
  if (!std::filesystem::exists("/dev/full")) GTEST_SKIP() << "no /dev/full";
  for (const char* suffix : {".contigPos", ".contig"}) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.fa", ">C1\nACGT\n");
    std::filesystem::create_symlink("/dev/full", file + suffix);
    EXPECT_EXIT(load(file), ExitedWithCode(1),
                Eq("[ERROR]: can't write " + file + suffix + ": No space left on device\n"));
  }
}

TEST_F(LoadScaffolds, SideFilesReplaceNoProtectedFile) {
  for (const char* suffix : {".contigPos", ".contig"}) {
    const TemporaryFolder folder;
    const std::string file = folder.write("a.fa", ">C1\nACGT\n");
    std::filesystem::create_symlink(file, file + suffix);
    EXPECT_EXIT(
        {
          protectFile(file);
          load(file);
        },
        ExitedWithCode(1),
        Eq("[ERROR]: output file " + file + suffix + " is the same file as " + file + "\n"));
    EXPECT_EQ(contentOf(file), ">C1\nACGT\n");
  }
}

TEST_F(LoadScaffolds, ContigFileDoesNotReplaceTheContigPosFile) {
  const std::string file = folder_.write("a.fa", ">C1\nACGT\n");
  std::filesystem::create_symlink(file + ".contigPos", file + ".contig");
  EXPECT_EXIT(
      load(file), ExitedWithCode(1),
      Eq("[ERROR]: output file " + file + ".contig is the same file as " + file + ".contigPos\n"));
  EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t0\t4\n");
}

TEST_F(LoadScaffolds, FirstHeaderWithoutLabel) {
  for (const char* text : {">SAFFOLD7\nACGT\n", "", "\n>C1\nACGT\n", ">safold1\n>C1\nACGT\n"}) {
    const std::string file = folder_.write("a.fa", text);
    EXPECT_EXIT(load(file), ExitedWithCode(3),
                Eq("What is the label for scaffold? It't neither \"scaffold/Scaffold\" nor "
                   "\"C/c\".\n"))
        << text;
  }
}

TEST_F(LoadScaffolds, FirstHeaderTooShort) {
  // eight characters with the word, one with the letter
  for (const char* text : {">caffold\nACGT\n", "C\nACGT\n", "c\n>C1\nACGT\n"}) {
    const std::string file = folder_.write("a.fa", text);
    EXPECT_EXIT(load(file), ExitedWithCode(3),
                Eq("[ERROR]: " + file + ", line 1: header too short to hold an id\n"))
        << text;
  }
}

TEST_F(LoadScaffolds, LaterHeaderTooShort) {
  for (const char* header : {">", ">scaffol", ">c", ">1234567"}) {
    const std::string file =
        folder_.write("a.fa", std::string(">C1\nACGT\n\nAC\n") + header + "\nACGT\n");
    EXPECT_EXIT(load(file), ExitedWithCode(3),
                Eq("[ERROR]: " + file + ", line 5: header too short to hold an id\n"))
        << header;
    EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t0\t6\n");  // what was split before stays
  }
}

TEST_F(LoadScaffolds, MoreScaffoldsThanHeaderLines) {
  for (const char* text :
       {"C1\nACGT\n>C2\nAC\n>C3\nAC\n", "C1\nACGT\n>C2\nAC\n", "scaffold1\nACGT\n", "C1\n"}) {
    const std::string file = folder_.write("a.fa", text);
    EXPECT_EXIT(load(file), ExitedWithCode(3),
                Eq("[ERROR]: " + file +
                   ": more scaffolds than header lines, the first line must begin with >\n"))
        << text;
  }
}

TEST_F(LoadScaffolds, FileChangedSinceItWasCounted) {
  const std::string file = folder_.write("a.fa", ">C1\nACGT\n>C2\nACGT\n");
  messagesOf([&] { InitialScaffold(scaffoldInfo, file, scaffoldSum); });
  // a header less than counted, and one more that is sequence
  const std::string changed = "[ERROR]: " + file + " changed while it was read\n";
  folder_.write("a.fa", ">C1\nACGT\n");
  EXPECT_EXIT(velk::LoadScaffolds(scaffoldInfo, file, scaffoldSum, gaps_), ExitedWithCode(3),
              Eq(changed));
  folder_.write("a.fa", ">C1\n>C3\nACGT\n>C2\nACGT\n");
  EXPECT_EXIT(velk::LoadScaffolds(scaffoldInfo, file, scaffoldSum, gaps_), ExitedWithCode(3),
              Eq(changed));
}

}  // namespace
}  // namespace velk::test
