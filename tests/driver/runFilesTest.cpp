// The files of a run, what it reads and what it writes, by name and role; the gap report.
#include "driver/runFiles.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "contig/contig.h"
#include "driver/gapReport.h"
#include "driver/outputFile.h"
#include "driver/velk.h"
#include "streaming/readBuffer.h"
#include "tests/support/assembly.h"
#include "tests/support/files.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

class RunFiles : public RunParametersTest {
 protected:
  static std::string joined(const std::vector<RunFile>& files) {
    std::string text;
    for (const RunFile& file : files) text += file.name + ": " + file.role + "\n";
    return text;
  }
};

TEST_F(RunFiles, InputsAreThoseOfTheCommandLineAndOfTheLibraries) {
  const TemporaryFolder folder;
  lib_file = folder.write("l.lib",
                          "[LIB]\navg_ins=300\nq=d.fq\nf=c.fa\np=b.fq\nq1=a1.fq\nq2=a2.fq\n"
                          "[LIB]\navg_ins=300\nf1=e1.fa\n");
  scaffold_file = "s.fa";
  contig_file = "c.fa";
  Lib* libs = nullptr;
  int libSum = 0;
  ::testing::internal::CaptureStderr();
  Loadlib(lib_file, libs, libSum);
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(joined(inputsOfRun(libs, libSum)),
            lib_file +
                ": the library file\ns.fa: the scaffold file\nc.fa: the contig file\n"
                "a1.fq: a read file\na2.fq: a read file\nb.fq: a read file\nc.fa: a read file\n"
                "d.fq: a read file\ne1.fa: a read file\n");
  Libsclear(libs, libSum);
  EXPECT_EQ(inputsOfRun(nullptr, 0).size(), 3U);
}

TEST_F(RunFiles, OutputsOfScaffolds) {
  scaffold_file = "s.fa";
  out_file = "found.fa";
  EXPECT_EQ(joined(outputsOfRun()),
            "found.fa: the file of reads found\ns.fa.contigPos: the contig positions\n"
            "s.fa.contig: the contigs\ns.fa.gapsinfo: the gap report\n");
}

TEST_F(RunFiles, OutputsOfContigs) {
  contig_file = "c.fa";
  EXPECT_EQ(joined(outputsOfRun()), ".gapsinfo: the gap report\n");
}

TEST_F(RunFiles, NoOutputsWithoutAnAssembly) {
  EXPECT_EQ(outputsOfRun().size(), 0U);
}

// The gap report: one header line per scaffold, one line per gap.

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

TEST_F(GapReport, NoMemoryForTheReadSums) {
  EXPECT_EXIT(makeReadSums(UINT64_MAX), ::testing::ExitedWithCode(2),
              ::testing::Eq("Out of memory! Line: 294. Function: main\n"));
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
