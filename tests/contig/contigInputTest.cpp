// Reading a contig FASTA: header grammar, order of scaffolds and gaps, scattered blocks.
#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

using Ids = std::vector<std::string>;

constexpr uint64_t signedLength(int64_t length) {
  return static_cast<uint64_t>(length);
}

class ContigInput : public ContigTest {};

TEST_F(ContigInput, CountsContigsByScaffold) {
  const std::string file = folder_.write(
      "a", ">scaffold7_0\t0\nAC\n>scaffold7_1\t5\nGT\n>scaffold12_0\t0\n>scaffold7\n");
  ScaftigMap counts{{"12", 10}};
  EXPECT_EQ(messagesOf([&] { CountscaftigNum(file, counts); }), "Start to count contig number\n");
  EXPECT_EQ(counts, (ScaftigMap{{"7", 3}, {"12", 11}}));
}

TEST_F(ContigInput, LinesThatAreNoHeadersAreNotCounted) {
  ScaftigMap counts;
  const std::string file = folder_.write("a", "scaffold7_0\t0\n >scaffold7_0\t0\n\nAC>\n");
  messagesOf([&] { CountscaftigNum(file, counts); });
  EXPECT_TRUE(counts.empty());
}

TEST_F(ContigInput, FillsTheModel) {
  loadContigFile(">scaffold7_0\t0\nACGT\n>scaffold7_1\t15\nCC\nGG\n>scaffold7_2\t20\nT\n");
  EXPECT_EQ(ids(), (Ids{"7"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", kNoGap, 0}, {"CCGG", 0, 15}, {"T", 1, 20}}));
  EXPECT_EQ(gaps_, 2U);
}

TEST_F(ContigInput, FillingSaysNothing) {
  const std::string file = folder_.write("a", ">scaffold7_0\t0\nACGT\n");
  ScaftigMap counts{{"7", 1}};
  messagesOf([&] { InitialScaffold(scaffoldInfo, counts, gaps_); });
  scaffoldSum = 1;
  EXPECT_EQ(messagesOf([&] { contigtoScafInfo(file, scaffoldInfo, counts); }), "");
}

TEST_F(ContigInput, NoSplittingNoFilterAndNoTrimming) {
  CuttEdge = 1;
  readLen = 0;
  CONTIGLEN = 70;
  loadContigFile(">scaffold7_0\t0\nACNNGTnA\n>scaffold7_1\t3\nA\n>scaffold7_2\t3\nAC\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACNNGTnA", kNoGap, 0}, {"A", 0, 3}, {"AC", 1, 3}}));
}

TEST_F(ContigInput, GapsAreNumberedInFileOrderAndScaffoldsInIdOrder) {
  loadContigFile(
      ">scaffolds9_0\t1\nA\n>scaffolds9_1\t2\nC\n"
      ">scaffolds10_0\t3\nG\n>scaffolds10_1\t4\nT\n>scaffolds10_2\t5\nAA\n");
  EXPECT_EQ(ids(), (Ids{"s10", "s9"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"G", kNoGap, 3}, {"T", 1, 4}, {"AA", 2, 5}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"A", kNoGap, 1}, {"C", 0, 2}}));
  EXPECT_EQ(gaps_, 3U);
}

TEST_F(ContigInput, IdRunsFromTheTenthCharacterToTheUnderscore) {
  for (const auto& [header, id] : std::vector<std::pair<std::string, std::string>>{
           {">scaffold7_0\t5", "7"},
           {">123456787_0\t5", "7"},
           {">sca_fold7_0\t5", "7"},  // an underscore among the first nine is skipped
           {">scaffol_7_0\t5", "7"},  //
           {">scaffold_0\t5", ""},    // empty, but there
           {">scaffold7 x_y_0\t5", "7 x"},
           {">scaffoldC7_0\t5", "C7"},
           {">scaffold7\t5", "7\t5"},    // no underscore: to the end of the line
           {">scaffold7\t5_1", "7\t5"},  // the underscore may stand behind the tab
           {">scaffold\t5_1", "\t5"}}) {
    loadContigFile(header + "\nACGT\n");
    EXPECT_EQ(ids(), (Ids{id})) << header;
    EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", kNoGap, 5}})) << header;
  }
}

TEST_F(ContigInput, TabIsLookedForInTheWholeLine) {
  loadContigFile(">x\t42aaaaid_0\nACGT\n");
  EXPECT_EQ(ids(), (Ids{"id"}));
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", kNoGap, 42}}));
}

TEST_F(ContigInput, FirstTabCounts) {
  loadContigFile(">scaffold7_0\t11\t22\nACGT\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", kNoGap, 11}}));
}

TEST_F(ContigInput, ContigIndexOfTheHeaderIsNotRead) {
  loadContigFile(">scaffold7_5\t0\nA\n>scaffold7_5x\t1\nC\n>scaffold7_\t2\nG\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"A", kNoGap, 0}, {"C", 0, 1}, {"G", 1, 2}}));
}

TEST_F(ContigInput, GapLengthIsReadLeniently) {
  for (const auto& [text, length] : std::vector<std::pair<std::string, int64_t>>{
           {"45", 45},
           {"  45", 45},
           {"\t45", 45},
           {"+45", 45},
           {"45x9", 45},
           {"45 9", 45},
           {"45\r", 45},
           {"", 0},
           {"x45", 0},
           {"- 45", 0},
           {"0x10", 0},
           {"2147483647", 2147483647},
           {"2147483648", -2147483648},      // cut to 32 bits
           {"99999999999", 1215752191},      //
           {"99999999999999999999", -1}}) {  // at the limit of 64 bits, then cut
    loadContigFile(">scaffold7_0\t0\nA\n>scaffold7_1\t" + text + "\nC\n");
    EXPECT_EQ(contigsOf(0)[1].gapSize, signedLength(length)) << text;
  }
}

TEST_F(ContigInput, NegativeGapLengthIsSignExtended) {
  loadContigFile(">scaffold7_0\t-3\nA\n>scaffold7_1\t-5\nC\n");
  EXPECT_EQ(contigsOf(0),
            (PlainContigs{{"A", kNoGap, signedLength(-3)}, {"C", 0, 0xFFFFFFFFFFFFFFFB}}));
}

TEST_F(ContigInput, FirstContigKeepsTheGapLengthAsRead) {
  loadContigFile(">scaffold7_0\t45\nA\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"A", kNoGap, 45}}));
}

TEST_F(ContigInput, ScatteredBlocksOverwriteEarlierOnes) {
  loadContigFile(
      ">scaffolda_0\t1\nAA\n>scaffolda_1\t2\nAC\n>scaffolda_2\t3\nAG\n"
      ">scaffoldb_0\t4\nCC\n"
      ">scaffolda_0\t5\nGG\n>scaffolda_1\t6\nGT\n");
  // five contigs of "a" were counted; the second block starts anew, two slots are left over
  EXPECT_EQ(contigsOf(0),
            (PlainContigs{{"GG", kNoGap, 5}, {"GT", 2, 6}, {"AG", 1, 3}, {"", 0, 0}, {"", 0, 0}}));
  EXPECT_EQ(contigsOf(1), (PlainContigs{{"CC", kNoGap, 4}}));
  EXPECT_EQ(gaps_, 4U);
}

TEST_F(ContigInput, OverwrittenContigLosesItsSequence) {
  loadContigFile(">scaffolda_0\t1\nAA\n>scaffoldb_0\t4\nCC\n>scaffolda_0\t5\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"", kNoGap, 5}, {"", 0, 0}}));
}

TEST_F(ContigInput, EmptyLinesInsideASequenceAreSkipped) {
  loadContigFile("\n\n>scaffold7_0\t0\nAC\n\n\nGT\n\n>scaffold7_1\t2\n\nAA\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"ACGT", kNoGap, 0}, {"AA", 0, 2}}));
}

TEST_F(ContigInput, ContigsWithoutSequenceStayEmpty) {
  loadContigFile(">scaffold7_0\t0\n>scaffold7_1\t2\nAA\n>scaffold7_2\t3");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"", kNoGap, 0}, {"AA", 0, 2}, {"", 1, 3}}));
}

TEST_F(ContigInput, LastLineNeedsNoNewline) {
  loadContigFile(">scaffold7_0\t0\nAA\nCC");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AACC", kNoGap, 0}}));
}

TEST_F(ContigInput, CarriageReturnsStayInTheSequence) {
  loadContigFile(">scaffold7_0\t0\r\nAA\r\n\r\nCC\r\n");
  EXPECT_EQ(contigsOf(0), (PlainContigs{{"AA\r\rCC\r", kNoGap, 0}}));
}

TEST_F(ContigInput, EmptyFileGivesAnEmptyModel) {
  loadContigFile("");
  EXPECT_EQ(scaffoldSum, 0U);
  EXPECT_EQ(gaps_, 0U);
}

// How reading a contig FASTA ends early: every message and status.

// Counts the contigs of `file`, without the message that says so.
ScaftigMap counted(const std::string& file) {
  ScaftigMap counts;
  messagesOf([&] { CountscaftigNum(file, counts); });
  return counts;
}

// Runs all three steps on `file` as the run does, with only the messages of the last one.
void fill(const std::string& file) {
  ScaftigMap counts = counted(file);
  uint64_t gaps = 0;
  messagesOf([&] { InitialScaffold(scaffoldInfo, counts, gaps); });
  contigtoScafInfo(file, scaffoldInfo, counts);
}

TEST_F(ContigInput, MissingFile) {
  const std::string file = folder_.path("missing");
  ScaftigMap counts;
  EXPECT_EXIT(CountscaftigNum(file, counts), ExitedWithCode(255),
              Eq("Start to count contig number\nFail to load file " + file + "\n"));
}

TEST_F(ContigInput, FileMissingAfterItWasCounted) {
  const std::string file = folder_.path("missing");
  EXPECT_EXIT(contigtoScafInfo(file, scaffoldInfo, {}), ExitedWithCode(255),
              Eq("Fail to load file " + file + "\n"));
}

TEST_F(ContigInput, UnreadableFile) {
  const std::string folder = folder_.path("");
  ScaftigMap counts;
  EXPECT_EXIT(
      CountscaftigNum(folder, counts), ExitedWithCode(1),
      Eq("Start to count contig number\n[ERROR]: can't read " + folder + ": Is a directory\n"));
}

TEST_F(ContigInput, HeaderWithoutGapLength) {
  for (const char* text : {">scaffold7_0\nACGT\n", ">scaffold7_0 5\nACGT\n",
                           ">scaffold7_0\t0\nAC\n>scaffold7_1\nGT\n", ">scaffold7"}) {
    const std::string file = folder_.write("a", text);
    EXPECT_EXIT(fill(file), ExitedWithCode(255), Eq("no contig before gap len, please check!\n"))
        << text;
  }
}

TEST_F(ContigInput, HeaderWithoutGapLengthPassesTheCount) {
  EXPECT_EQ(counted(folder_.write("a", ">scaffold7_0\nACGT\n")), (ScaftigMap{{"7", 1}}));
}

TEST_F(ContigInput, HeaderTooShort) {
  for (const char* header : {">", ">scaffol", ">\t5", ">C7_0\t5"}) {
    const std::string file =
        folder_.write("a", std::string(">scaffold7_0\t0\n\nAC\n") + header + "\nACGT\n");
    EXPECT_EXIT(
        {
          ScaftigMap counts;
          CountscaftigNum(file, counts);
        },
        ExitedWithCode(255),
        Eq("Start to count contig number\n[ERROR]: " + file +
           ", line 4: header too short to hold an id\n"))
        << header;
  }
}

TEST_F(ContigInput, SequenceBeforeTheFirstHeader) {
  const std::string file = folder_.write("a", "\n\nACGT\n>scaffold7_0\t0\nACGT\n");
  EXPECT_EXIT(fill(file), ExitedWithCode(255),
              Eq("[ERROR]: " + file + ", line 3: sequence before the first header\n"));
}

TEST_F(ContigInput, SequenceWithoutAnyHeader) {
  const std::string file = folder_.write("a", "ACGT");
  EXPECT_EXIT(fill(file), ExitedWithCode(255),
              Eq("[ERROR]: " + file + ", line 1: sequence before the first header\n"));
}

TEST_F(ContigInput, FileChangedBetweenThePasses) {
  const std::string before = folder_.write("before", ">scaffold7_0\t0\nA\n>scaffold9_0\t0\nA\n");
  ScaftigMap counts = counted(before);
  messagesOf([&] { InitialScaffold(scaffoldInfo, counts, gaps_); });
  scaffoldSum = 2;
  // a contig more than counted, a scaffold that was never counted, a contig less than counted
  for (const char* text : {">scaffold7_0\t0\nA\n>scaffold7_1\t3\nA\n", ">scaffold8_0\t0\nA\n",
                           ">scaffold7_0\t0\nA\n", ""}) {
    const std::string after = folder_.write("after", text);
    EXPECT_EXIT(contigtoScafInfo(after, scaffoldInfo, counts), ExitedWithCode(255),
                Eq("[ERROR]: " + after + " changed while it was read\n"))
        << text;
  }
}

}  // namespace

}  // namespace velk::test
