// The files of a run: what it reads and what it writes, by name and role.
#include "driver/runFiles.h"

#include <gtest/gtest.h>

#include "driver/velk.h"
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

}  // namespace
}  // namespace velk::test
