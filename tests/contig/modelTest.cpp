// The scaffold arrays: header counting and both forms of InitialScaffold.
#include <unistd.h>

#include <cstdio>

#include "contig/header.h"
#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;
using ::testing::MatchesRegex;

class Contignum : public ContigTest {};

class InitialScaffold : public ContigTest {
 protected:
  // Runs the scaffold FASTA form on a new file of this text. Returns its messages.
  std::string initialize(const std::string& text) {
    const std::string file = folder_.write("scaffolds.fa", text);
    return messagesOf([&] { velk::InitialScaffold(scaffoldInfo, file, scaffoldSum); });
  }

  // Runs the contig FASTA form. Returns its messages.
  std::string initialize(ScaftigMap& counts) {
    const std::string messages =
        messagesOf([&] { velk::InitialScaffold(scaffoldInfo, counts, gaps_); });
    scaffoldSum = static_cast<uint32_t>(counts.size());
    return messages;
  }
};

constexpr const char* kOutOfMemory = "Out of memory! Line: [0-9]+\tFunction: InitialScaffold\n";

TEST_F(Contignum, CountsLinesThatBeginWithGreaterThan) {
  EXPECT_EQ(contignum(folder_.write("a", ">one\nACGT\n>two\nAC>GT\n >not\n>\n>last")), 4U);
}

TEST_F(Contignum, EmptyLinesDoNotCount) {
  EXPECT_EQ(contignum(folder_.write("a", "\n\n>one\n\n\nACGT\n\n")), 1U);
}

TEST_F(Contignum, EmptyFileHasNone) {
  EXPECT_EQ(contignum(folder_.write("a", "")), 0U);
}

TEST_F(Contignum, UnopenableFileIsToldOnStandardOutput) {
  const std::string file = folder_.path("missing");
  const std::string output = folder_.path("output");
  EXPECT_EXIT(
      {
        if (std::freopen(output.c_str(), "w", stdout) != nullptr) contignum(file);
      },
      ExitedWithCode(255), Eq(""));
  EXPECT_EQ(contentOf(output), "Fail to load file " + file + "\n");
}

TEST_F(Contignum, UnreadableFileEndsTheRun) {
  const std::string folder = folder_.path("");
  EXPECT_EXIT(contignum(folder), ExitedWithCode(1),
              Eq("[ERROR]: can't read " + folder + ": Is a directory\n"));
}

TEST_F(InitialScaffold, MakesAnEmptyScaffoldForEveryHeader) {
  EXPECT_EQ(initialize(">C1\nACGT\n>C2\nACGT\n"), "Scaffold Initialization finished!\n");
  ASSERT_EQ(scaffoldSum, 2U);
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    EXPECT_EQ(scaffoldInfo[i].scaffoldId, "");
    EXPECT_EQ(scaffoldInfo[i].contigsSum, 0U);
    EXPECT_EQ(scaffoldInfo[i].contigsInfo, nullptr);
  }
}

TEST_F(InitialScaffold, FileWithoutHeaderGivesAnEmptyArray) {
  scaffoldSum = 5;
  EXPECT_EQ(initialize("ACGT\nACGT\n"), "Scaffold Initialization finished!\n");
  EXPECT_EQ(scaffoldSum, 0U);
}

TEST_F(InitialScaffold, ScaffoldsAreNumberedInByteOrderOfTheirIds) {
  ScaftigMap counts{{"s9", 1}, {"s10", 2}, {"S2", 1}, {"\xc3\xa9", 1}};
  EXPECT_EQ(initialize(counts), "Scaffold Initialization finished!\n");
  EXPECT_EQ(ids(), (std::vector<std::string>{"S2", "s10", "s9", "\xc3\xa9"}));
}

TEST_F(InitialScaffold, MapTranslatesIdsIntoIndexesAfterwards) {
  ScaftigMap counts{{"s9", 4}, {"s10", 7}};
  initialize(counts);
  EXPECT_EQ(counts, (ScaftigMap{{"s10", 0}, {"s9", 1}}));
  EXPECT_EQ(contigsOf(0), PlainContigs(7));
  EXPECT_EQ(contigsOf(1), PlainContigs(4));
}

TEST_F(InitialScaffold, EveryContigButTheFirstAddsAGap) {
  gaps_ = 10;
  ScaftigMap three{{"a", 3}};
  initialize(three);
  EXPECT_EQ(gaps_, 12U);
  releaseScaffolds();

  ScaftigMap one{{"a", 1}};
  initialize(one);
  EXPECT_EQ(gaps_, 12U);
  releaseScaffolds();

  ScaftigMap several{{"a", 3}, {"b", 1}, {"c", 2}};
  initialize(several);
  EXPECT_EQ(gaps_, 15U);
}

TEST_F(InitialScaffold, NoContigsGiveAnEmptyModel) {
  ScaftigMap none;
  EXPECT_EQ(initialize(none), "Scaffold Initialization finished!\n");
  EXPECT_EQ(gaps_, 0U);
}

TEST_F(InitialScaffold, NoMemoryForTheScaffoldsOfAFile) {
  std::string text;
  for (int i = 0; i < 2000; ++i) text += ">\n";
  const std::string file = folder_.write("scaffolds.fa", text);
  EXPECT_EXIT(
      {
        failArraysAbove(2000 * sizeof(ScaffoldInfo));  // the array has a hidden length, too
        velk::InitialScaffold(scaffoldInfo, file, scaffoldSum);
      },
      ExitedWithCode(1), MatchesRegex(kOutOfMemory));
}

TEST_F(InitialScaffold, NoMemoryForTheScaffoldsOfAMap) {
  ScaftigMap counts;
  for (int i = 0; i < 2000; ++i) counts[std::to_string(i)] = 1;
  EXPECT_EXIT(
      {
        failArraysAbove(2000 * sizeof(ScaffoldInfo));
        velk::InitialScaffold(scaffoldInfo, counts, gaps_);
      },
      ExitedWithCode(1), MatchesRegex(kOutOfMemory));
}

TEST_F(InitialScaffold, NoMemoryForTheContigsOfAMap) {
  ScaftigMap counts{{"a", 1}, {"b", 2000}};
  EXPECT_EXIT(
      {
        failArraysAbove(2000 * sizeof(ContigInfo));
        velk::InitialScaffold(scaffoldInfo, counts, gaps_);
      },
      ExitedWithCode(1), MatchesRegex(kOutOfMemory));
}

TEST_F(InitialScaffold, ReleaseLeavesAnEmptyModel) {
  ScaftigMap counts{{"a", 1}, {"b", 2}};
  initialize(counts);
  releaseScaffolds();
  EXPECT_EQ(scaffoldInfo, nullptr);
  EXPECT_EQ(scaffoldSum, 0U);
}

// What is cut out of a header line, and the bound on a contig's length.

TEST(DeleteTail, CutsAtTheFirstBlankOrTab) {
  EXPECT_EQ(delete_tail("7 length=5000"), "7");
  EXPECT_EQ(delete_tail("7\tlength=5000"), "7");
  EXPECT_EQ(delete_tail("7 a\tb"), "7");
  EXPECT_EQ(delete_tail("7\ta b"), "7");
  EXPECT_EQ(delete_tail(" 7"), "");
}

TEST(DeleteTail, KeepsWhatHasNeither) {
  EXPECT_EQ(delete_tail("7_length"), "7_length");
  EXPECT_EQ(delete_tail(""), "");
  EXPECT_EQ(delete_tail("7\r"), "7\r");
  EXPECT_EQ(delete_tail("7\v8"), "7\v8");
}

TEST(IdAfter, DropsTheLeadingCharacters) {
  const TextInput input("f");
  EXPECT_EQ(idAfter(">scaffold12", 9, input, kHeaderError), "12");
  EXPECT_EQ(idAfter(">scaffold", 9, input, kHeaderError), "");
}

TEST(IdAfter, ShorterHeaderEndsTheRun) {
  const TemporaryFolder folder;
  const std::string file = folder.write("f.fa", ">scaffold1\nA\n>scaffol\n");
  TextInput input(file);
  std::string line;
  while (line != ">scaffol") ASSERT_TRUE(input.readLine(line));
  EXPECT_EXIT(idAfter(line, 9, input, kInputError), ExitedWithCode(255),
              Eq("[ERROR]: " + file + ", line 3: header too short to hold an id\n"));
}

TEST(ScaffoldPart, EndsAtTheFirstUnderscore) {
  EXPECT_EQ(scaffoldPart("12_0\t30"), "12");
  EXPECT_EQ(scaffoldPart("a_b_1"), "a");
  EXPECT_EQ(scaffoldPart("12\t30"), "12\t30");
  EXPECT_EQ(scaffoldPart("_1"), "");
}

TEST(ContigLength, LongestContigThatPlacementCanTell) {
  requireContigLength(2147483647, "f.fa", "7", kHeaderError);
  EXPECT_EXIT(requireContigLength(2147483648, "f.fa", "7", kHeaderError), ExitedWithCode(3),
              Eq("[ERROR]: f.fa: a contig of scaffold 7 is longer than 2147483647 bases\n"));
  EXPECT_EXIT(requireContigLength(2147483648, "f.fa", "7", kInputError), ExitedWithCode(255),
              Eq("[ERROR]: f.fa: a contig of scaffold 7 is longer than 2147483647 bases\n"));
}

}  // namespace

}  // namespace velk::test
