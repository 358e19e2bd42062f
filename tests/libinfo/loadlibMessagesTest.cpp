// What Loadlib writes to standard error, and how it ends the run.
#include <filesystem>
#include <string>

#include "tests/libinfo/libFile.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

TEST_F(Loadlib, PrintsTheFileCounts) {
  const std::string messages = load(
      "[LIB]\navg_ins=500\nq=1\nq=2\np=1\nf1=1\nq1=2\nq1=3\nf=1\nf=2\nf=3\nf=4\n"
      "[LIB]\navg_ins=5000\nq=1\n");
  EXPECT_EQ("Starting load lib file " + file +
                "\n"
                "Find lib number: 2\n"
                "single fa file number of lib 0 is 4\n"
                "pair file number of lib 0 is 3\n"
                "PE in single file number of lib 0 is 1\n"
                "single fq file number of lib 0is2\n"
                "single fq file number of lib 1is1\n"
                "Lib file load finished!\n"
                "Max small insert is 500\tbig gap length: 600\t Max insert: 5000\n",
            messages);
}

TEST_F(Loadlib, SectionWithoutFilesPrintsNoCounts) {
  const std::string messages = load("[LIB]\navg_ins=500\nq2=a.fq\nf2=a.fa\n[LIB]\np=a.fa\n");
  EXPECT_EQ("Starting load lib file " + file +
                "\n"
                "Find lib number: 2\n"
                "PE in single file number of lib 1 is 1\n"
                "Lib file load finished!\n"
                "Max small insert is 500\tbig gap length: 600\t Max insert: 500\n",
            messages);
}

TEST_F(Loadlib, FileWithoutASectionPrintsNoCounts) {
  const std::string messages = load("q1=a.fq\n");
  EXPECT_EQ("Starting load lib file " + file +
                "\n"
                "Find lib number: 0\n"
                "Lib file load finished!\n"
                "Max small insert is 0\tbig gap length: 100\t Max insert: 0\n",
            messages);
}

TEST_F(Loadlib, PrintsWhatOneLargeLibraryGives) {
  const std::string messages = load("[LIB]\navg_ins=2000\n");
  EXPECT_EQ("Starting load lib file " + file +
                "\n"
                "Find lib number: 1\n"
                "Lib file load finished!\n"
                "Max small insert is 0\tbig gap length: 100\t Max insert: 2000\n",
            messages);
}

TEST_F(Loadlib, UnopenableFileEndsTheRun) {
  file = folder.path("missing.lib");
  EXPECT_EXIT(velk::Loadlib(file, libs, libsNum), ExitedWithCode(255),
              Eq("Fail to open " + file + "\n"));
}

TEST_F(Loadlib, DirectoryEndsTheRun) {
  file = folder.path("a.lib");
  std::filesystem::create_directory(file);
  EXPECT_EXIT(velk::Loadlib(file, libs, libsNum), ExitedWithCode(1),
              Eq("Starting load lib file " + file + "\n[ERROR]: can't read " + file +
                 ": Is a directory\n"));
}

}  // namespace
}  // namespace velk::test
