// How reading a contig FASTA ends early: every message and status.
#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

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
