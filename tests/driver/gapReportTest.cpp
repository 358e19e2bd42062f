// The gap report: one header line per scaffold, one line per gap.
#include "driver/gapReport.h"

#include <filesystem>
#include <string>

#include "contig/contig.h"
#include "driver/outputFile.h"
#include "streaming/readBuffer.h"
#include "tests/support/assembly.h"
#include "tests/support/files.h"

namespace velk::test {
namespace {

class GapReport : public AssemblyTest {
 protected:
  GapReport() { scaffold_file = folder.path("s.fa"); }

  // Loads `scaffolds` and returns the report of them.
  std::string reportOf(const std::vector<TestScaffold>& scaffolds) {
    load(scaffolds);
    return report();
  }

  std::string report() const {
    writeGapReport();
    return contentOf(folder.path("s.fa.gapsinfo"));
  }

  // Expects that the report ends the run with status 1 after `message`.
  static void expectFailure(const std::string& message) {
    EXPECT_EXIT(writeGapReport(), ::testing::ExitedWithCode(1), ::testing::Eq(message));
  }

  TemporaryFolder folder;
};

TEST_F(GapReport, ThreeContigsHaveTwoGaps) {
  load({{{"ACGTA"}, {"ACG", 12}, {"ACGTACGTAC", 0}}});
  readSumInEachGap[0] = 4;
  readSumInEachGap[1] = 7;
  EXPECT_EQ(
      ">s0\t3\t2\n"
      "0\t12\t4\t5\t3\n"
      "1\t0\t7\t3\t10\n",
      report());
}

TEST_F(GapReport, SingleContigHasAHeaderLineOnly) {
  EXPECT_EQ(">s0\t1\t0\n", reportOf({{{"ACGT"}}}));
}

TEST_F(GapReport, ScaffoldWithoutContigs) {
  EXPECT_EQ(">s0\t0\t4294967295\n", reportOf({{}}));
}

TEST_F(GapReport, NoScaffolds) {
  EXPECT_EQ("", reportOf({}));
}

TEST_F(GapReport, GapsAreCountedByTheirNumber) {
  load({{{"A"}, {"AC", 1}}, {{"ACG"}}, {{"ACGT"}, {"ACGTA", 2}}});
  // as in contig input, whose scaffolds stand in another order than their gaps
  scaffoldInfo[0].contigsInfo[1].frontGapNum = 1;
  scaffoldInfo[2].contigsInfo[1].frontGapNum = 0;
  readSumInEachGap[0] = 100;
  readSumInEachGap[1] = 200;
  EXPECT_EQ(
      ">s0\t2\t1\n"
      "1\t1\t200\t1\t2\n"
      ">s1\t1\t0\n"
      ">s2\t2\t1\n"
      "0\t2\t100\t4\t5\n",
      report());
}

TEST_F(GapReport, NegativeGapLengthIsPrintedUnsigned) {
  EXPECT_EQ(
      ">s0\t2\t1\n"
      "0\t18446744073709551611\t0\t4\t2\n",
      reportOf({{{"ACGT"}, {"AC", -5}}}));
}

TEST_F(GapReport, ReplacesAnOlderReport) {
  folder.write("s.fa.gapsinfo", "an older report, longer than the one that replaces it\n");
  EXPECT_EQ(">s0\t1\t0\n", reportOf({{{"ACGT"}}}));
}

TEST_F(GapReport, UnopenableReportEndsTheRun) {
  load({{{"ACGT"}}});
  scaffold_file = folder.path("missing/s.fa");
  expectFailure("Can't open output file: " + scaffold_file + ".gapsinfo\n");
}

TEST_F(GapReport, UnwrittenReportEndsTheRun) {
  load({{{"ACGT"}}});
  const std::string name = folder.path("s.fa.gapsinfo");
  std::filesystem::create_symlink("/dev/full", name);
  expectFailure("[ERROR]: can't write " + name + ": No space left on device\n");
}

TEST_F(GapReport, NeverReplacesAnInput) {
  load({{{"ACGT"}}});
  const std::string reads = folder.write("reads.fa", ">r\nACGT\n");
  const std::string name = folder.path("s.fa.gapsinfo");
  std::filesystem::create_symlink("reads.fa", name);
  protectFile(reads);
  expectFailure("[ERROR]: output file " + name + " is the same file as " + reads + "\n");
  EXPECT_EQ(">r\nACGT\n", contentOf(reads));
}

}  // namespace
}  // namespace velk::test
