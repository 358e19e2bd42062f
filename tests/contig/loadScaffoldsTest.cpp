// Reading a scaffold FASTA: headers and their ids, sequence lines, both side files.
#include <filesystem>

#include "driver/outputFile.h"
#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

using Ids = std::vector<std::string>;

class LoadScaffolds : public ContigTest {};

TEST_F(LoadScaffolds, FillsTheModelAndBothSideFiles) {
  CONTIGLEN = 4;
  const std::string file = loadScaffoldFile(
      ">scaffold7 length=20\nNACGTNN\nCCCCCN\nGG\nNTTTT\n>scaffold8\nACGTACGTN\nAAAA\n");
  EXPECT_EQ(ids(), (Ids{"7", "8"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", 0, 0}, {"CCCCC", 0, 2}, {"TTTT", 1, 4}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"ACGTACGT", 0, 0}, {"AAAA", 2, 1}}));
  EXPECT_EQ(gaps_, 3U);
  EXPECT_EQ(contentOf(file + ".contigPos"),
            "7\t0\t1\t5\n7\t1\t7\t12\n7\t2\t16\t20\n8\t0\t0\t8\n8\t1\t9\t13\n");
  EXPECT_EQ(contentOf(file + ".contig"),
            ">scaffold7_0\t0\nACGT\n>scaffold7_1\t2\nCCCCC\n>scaffold7_2\t4\nTTTT\n"
            ">scaffold8_0\t0\nACGTACGT\n>scaffold8_1\t1\nAAAA\n");
}

TEST_F(LoadScaffolds, SaysWhenItHasFinished) {
  const std::string file = folder_.write("scaffolds.fa", ">C1\nACGT\n");
  messagesOf([&] { InitialScaffold(scaffoldInfo, file, scaffoldSum); });
  EXPECT_EQ(messagesOf([&] { velk::LoadScaffolds(scaffoldInfo, file, scaffoldSum, gaps_); }),
            "Print contigs finished!\nLoad scaffolds finished!\n");
}

TEST_F(LoadScaffolds, SideFilesAreTruncated) {
  folder_.write("scaffolds.fa.contigPos", std::string(1000, 'x'));
  folder_.write("scaffolds.fa.contig", std::string(1000, 'x'));
  const std::string file = loadScaffoldFile(">C1\nACGT\n");
  EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t0\t4\n");
  EXPECT_EQ(contentOf(file + ".contig"), ">scaffold1_0\t0\nACGT\n");
}

TEST_F(LoadScaffolds, ContigFileAlwaysSaysScaffold) {
  const std::string file = loadScaffoldFile(">Chr\nACGT\n");
  EXPECT_EQ(contentOf(file + ".contig"), ">scaffoldhr_0\t0\nACGT\n");
}

TEST_F(LoadScaffolds, ContigFileHoldsTrimmedSequenceAndTheGapWithItsCut) {
  CuttEdge = 1;
  readLen = 1;
  CONTIGLEN = 4;
  const std::string file = loadScaffoldFile(">C1\nACGTNNAACCGGTT\n");
  EXPECT_EQ(contentOf(file + ".contig"), ">scaffold1_0\t1\nCG\n>scaffold1_1\t3\nACCGGT\n");
  EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t1\t3\n1\t1\t7\t13\n");
}

TEST_F(LoadScaffolds, SingleFinalBaseIsAbsentFromTheContigFile) {
  const std::string file = loadScaffoldFile(">C1\nACGTNNA\n>C2\nACNNN\nGT\n");
  EXPECT_EQ(contentOf(file + ".contigPos"), "1\t0\t0\t4\n1\t1\t6\t7\n2\t0\t0\t2\n2\t1\t5\t7\n");
  EXPECT_EQ(contentOf(file + ".contig"),
            ">scaffold1_0\t0\nACGT\n>scaffold2_0\t0\nAC\n>scaffold2_1\t3\nGT\n");
  EXPECT_EQ(contigsOf(1)[1].gapNum, 1U);  // gap 0 went to the base without a slot
}

TEST_F(LoadScaffolds, FirstHeaderWithTheWordGivesWhatFollowsNineCharacters) {
  for (const auto& [header, id] :
       std::vector<std::pair<std::string, std::string>>{{">scaffold7 length=5000", "7"},
                                                        {">Scaffold7", "7"},
                                                        {">scaffold7\tlength=5000", "7"},
                                                        {">scaffold7_a", "7_a"},
                                                        {">scaffoldC7", "C7"},
                                                        {">scaffold", ""},
                                                        {">my scaffold 1", "old"},
                                                        {">xy7abcdefgh scaffold", "fgh"},
                                                        {">SCcaffold7", "d7"}}) {
    loadScaffoldFile(header + "\nACGT\n");
    EXPECT_EQ(ids()[0], id) << header;
  }
}

TEST_F(LoadScaffolds, FirstHeaderWithTheLetterGivesWhatFollowsTwoCharacters) {
  for (const auto& [header, id] :
       std::vector<std::pair<std::string, std::string>>{{">C7", "7"},
                                                        {">c7", "7"},
                                                        {">C7 length=5000\tx", "7 length=5000\tx"},
                                                        {">xyz_c", "yz_c"},
                                                        {">C", ""},
                                                        {">SCAFFOLD7", "CAFFOLD7"}}) {
    loadScaffoldFile(header + "\nACGT\n");
    EXPECT_EQ(ids()[0], id) << header;
  }
}

TEST_F(LoadScaffolds, FirstLineIsAHeaderWhateverItBeginsWith) {
  loadScaffoldFile("any scaffold\n>C2\nACGT\n");
  EXPECT_EQ(ids(), (Ids{"old"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{">C2ACGT", 0, 0}}));
  loadScaffoldFile("Chr1\n>C2\nACGT\n");
  EXPECT_EQ(ids(), (Ids{"r1"}));
}

TEST_F(LoadScaffolds, LaterHeaderLooksForUpperCaseCOnly) {
  loadScaffoldFile(
      ">C1\nA\n"
      ">scaffold8 Cov=3\nA\n"     // the letter wins, the word is not looked for
      ">scaffold9 length=3\nA\n"  // no upper-case C: the tenth character on
      ">scaffold10\tx\nA\n"       //
      ">c_lower_case\nA\n"        // lower-case c is not looked for
      ">no label at all\nA\n"     // nor is any label asked for
      ">scaffold\nA\n"            // just long enough
      ">C\nA\n"                   // just long enough
      ">C12 a\tb\nA\n");          // nothing cut at the end
  EXPECT_EQ(ids(), (Ids{"1", "caffold8 Cov=3", "9", "10", "case", "", "", "", "12 a\tb"}));
}

TEST_F(LoadScaffolds, HeaderAfterHeaderIsSequence) {
  CONTIGLEN = 1;
  const std::string file = loadScaffoldFile(">C1\n>C2\nACGTA\n>C3\nAC\n>C4\n>C5\n");
  ASSERT_EQ(scaffoldSum, 5U);
  EXPECT_EQ(ids(), (Ids{"1", "3", "4", "", ""}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{">C2ACGTA", 0, 0}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"AC", 0, 0}}));
  EXPECT_EQ(contigsOf(2), (PlainContigs{{">C5", 0, 0}}));
  EXPECT_EQ(contentOf(file + ".contig"),
            ">scaffold1_0\t0\n>C2ACGTA\n>scaffold3_0\t0\nAC\n>scaffold4_0\t0\n>C5\n");
}

TEST_F(LoadScaffolds, ScaffoldsThatWereNeverSplitStayEmpty) {
  loadScaffoldFile(">C1\n>C2\nACGT\n");
  ASSERT_EQ(scaffoldSum, 2U);
  EXPECT_EQ(scaffoldInfo[1].contigsSum, 0U);
  EXPECT_EQ(scaffoldInfo[1].contigsInfo, nullptr);
}

TEST_F(LoadScaffolds, EmptyLinesAreNoSequence) {
  // so the header behind them still follows a header
  loadScaffoldFile(">C1\n\n\n>C2\n\nAC\n\nGT\n\n>C3\nA");
  EXPECT_EQ(ids(), (Ids{"1", "3", ""}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{">C2ACGT", 0, 0}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"A", 0, 0}}));
}

TEST_F(LoadScaffolds, LastScaffoldIsSplitAlsoWithoutSequence) {
  const std::string file = loadScaffoldFile(">C1\nAC\n>C2\n");
  EXPECT_EQ(ids(), (Ids{"1", "2"}));
  EXPECT_EQ(contigsOf(1), PlainContigs{});
  EXPECT_NE(scaffoldInfo[1].contigsInfo, nullptr);
  EXPECT_EQ(contentOf(file + ".contig"), ">scaffold1_0\t0\nAC\n");
}

TEST_F(LoadScaffolds, ScaffoldOfNothingButGapHasNoContigs) {
  const std::string file = loadScaffoldFile(">C1\nNNN\nnn\n>C2\nAC\n");
  EXPECT_EQ(contigsOf(0), PlainContigs{});
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"AC", 0, 0}}));
  EXPECT_EQ(contentOf(file + ".contigPos"), "2\t0\t0\t2\n");
}

TEST_F(LoadScaffolds, CarriageReturnsStay) {
  const std::string file = loadScaffoldFile(">scaffold7\r\nAC\r\nGT\r\n>C8\r\nA\r\n");
  EXPECT_EQ(ids(), (Ids{"7\r", "8\r"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AC\rGT\r", 0, 0}}));
  EXPECT_EQ(contentOf(file + ".contigPos"), "7\r\t0\t0\t6\n8\r\t0\t0\t2\n");
  EXPECT_EQ(contentOf(file + ".contig"), ">scaffold7\r_0\t0\nAC\rGT\r\n>scaffold8\r_0\t0\nA\r\n");
}

TEST_F(LoadScaffolds, LastLineNeedsNoNewline) {
  loadScaffoldFile(">C1\nAC\n>C2\nGT\nAC");
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"GTAC", 0, 0}}));
}

TEST_F(LoadScaffolds, PrintContigsWritesTheFirstScaffoldsOnly) {
  loadScaffoldFile(">C1\nAC\n>C2\nGT\n");
  printContigs(scaffoldInfo, 1, folder_.path("one"));
  EXPECT_EQ(contentOf(folder_.path("one.contig")), ">scaffold1_0\t0\nAC\n");
  printContigs(scaffoldInfo, 0, folder_.path("none"));
  EXPECT_EQ(contentOf(folder_.path("none.contig")), "");
}

// How reading a scaffold FASTA ends early: every message and status.

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
