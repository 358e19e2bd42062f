// The records that Loadlib builds: the grammar of the library file and its keys, what it says, and
// the limits of insert sizes. And the splitting of key=value lines.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <climits>
#include <filesystem>
#include <string>
#include <utility>

#include "libinfo/libinfo.h"
#include "tests/support/files.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// The fixture of all tests of velk::Loadlib.
class Loadlib : public RunParametersTest {
 protected:
  ~Loadlib() override { Libsclear(libs, libsNum); }

  // Loads a library file of this text; what was loaded before is released. Returns what Loadlib
  // wrote to standard error.
  std::string load(const std::string& text) {
    Libsclear(libs, libsNum);
    libs = nullptr;
    file = folder.write("a.lib", text);
    ::testing::internal::CaptureStderr();
    velk::Loadlib(file, libs, libsNum);
    return ::testing::internal::GetCapturedStderr();
  }

  TemporaryFolder folder;
  std::string file;     // the library file loaded last
  Lib* libs = nullptr;  // its records
  int libsNum = -1;
};

TEST_F(Loadlib, PairsOfBothFormatsInFileOrder) {
  load("[LIB]\nq1=a_1.fq\nq2=a_2.fq\nf1=b_1.fa\nf2=b_2.fa\n");
  ASSERT_EQ(1, libsNum);
  ASSERT_EQ(2U, libs[0].pfilenum);
  EXPECT_EQ("a_1.fq", libs[0].pairs[0].read1file);
  EXPECT_EQ("a_2.fq", libs[0].pairs[0].read2file);
  EXPECT_EQ("b_1.fa", libs[0].pairs[1].read1file);
  EXPECT_EQ("b_2.fa", libs[0].pairs[1].read2file);
}

TEST_F(Loadlib, EmptySectionHasTheDefaults) {
  load("[LIB]\n");
  ASSERT_EQ(1, libsNum);
  const Lib& lib = libs[0];
  EXPECT_EQ(0, lib.min_ins);
  EXPECT_EQ(0, lib.max_ins);
  EXPECT_EQ(0, lib.avg_ins);
  EXPECT_EQ(0, lib.rd_len_cutoff);
  EXPECT_EQ(0, lib.reverse);
  EXPECT_EQ(3, lib.asm_flag);
  EXPECT_EQ(0U, lib.sfilenum + lib.s2filenum + lib.pfilenum + lib.qfilenum);
  EXPECT_EQ(0U, lib.preadSum);
  EXPECT_EQ(0U, lib.sreadSum);
  EXPECT_EQ(nullptr, lib.pairs);
  EXPECT_EQ(nullptr, lib.single);
  EXPECT_EQ(nullptr, lib.single2);
  EXPECT_EQ(nullptr, lib.singlequal);
}

TEST_F(Loadlib, EveryNumericKeySetsItsField) {
  load(
      "[LIB]\nmin_ins=1\nmax_ins=2\navg_ins=3\nrd_len_cutoff=4\nreverse_seq=5\nasm_flags=6\n"
      "pair_reads_sum=7\nreads_sum=8\n");
  const Lib& lib = libs[0];
  EXPECT_EQ(1, lib.min_ins);
  EXPECT_EQ(2, lib.max_ins);
  EXPECT_EQ(3, lib.avg_ins);
  EXPECT_EQ(4, lib.rd_len_cutoff);
  EXPECT_EQ(5, lib.reverse);
  EXPECT_EQ(6, lib.asm_flag);
  EXPECT_EQ(7U, lib.preadSum);
  EXPECT_EQ(8U, lib.sreadSum);
}

TEST_F(Loadlib, EveryFileKeyAddsAFileOfItsKind) {
  load("[LIB]\nq=q0\nf=f0\np=p0\nf=f1\nq=q1\nq=q2\np=p1\nf=f2\nf=f3\n");
  const Lib& lib = libs[0];
  ASSERT_EQ(4U, lib.sfilenum);
  ASSERT_EQ(2U, lib.s2filenum);
  ASSERT_EQ(3U, lib.qfilenum);
  EXPECT_EQ(0U, lib.pfilenum);
  EXPECT_EQ("f0", lib.single[0].readfile);
  EXPECT_EQ("f1", lib.single[1].readfile);
  EXPECT_EQ("f2", lib.single[2].readfile);
  EXPECT_EQ("f3", lib.single[3].readfile);
  EXPECT_EQ("p0", lib.single2[0].readfile);
  EXPECT_EQ("p1", lib.single2[1].readfile);
  EXPECT_EQ("q0", lib.singlequal[0].readfile);
  EXPECT_EQ("q1", lib.singlequal[1].readfile);
  EXPECT_EQ("q2", lib.singlequal[2].readfile);
}

TEST_F(Loadlib, SectionsHaveTheirOwnFilesAndNumbers) {
  load("[LIB]\navg_ins=200\nf=a\n[LIB]\n[LIB]\nf=b\nf=c\navg_ins=300\n");
  ASSERT_EQ(3, libsNum);
  EXPECT_EQ(200, libs[0].avg_ins);
  EXPECT_EQ(0, libs[1].avg_ins);
  EXPECT_EQ(300, libs[2].avg_ins);
  ASSERT_EQ(1U, libs[0].sfilenum);
  EXPECT_EQ(0U, libs[1].sfilenum);
  ASSERT_EQ(2U, libs[2].sfilenum);
  EXPECT_EQ("a", libs[0].single[0].readfile);
  EXPECT_EQ("b", libs[2].single[0].readfile);
  EXPECT_EQ("c", libs[2].single[1].readfile);
}

TEST_F(Loadlib, EverySectionCountsEachKindFromItsStart) {
  const std::string files = "f=f0\nf=f1\np=p0\np=p1\nq=q0\nq=q1\nq1=a0\nq2=b0\nf1=a1\nf2=b1\n";
  load("[LIB]\n" + files + "[LIB]\n" + files);
  ASSERT_EQ(2, libsNum);
  for (int i = 0; i < 2; ++i) {
    const Lib& lib = libs[i];
    ASSERT_EQ(8U, lib.sfilenum + lib.s2filenum + lib.qfilenum + lib.pfilenum);
    EXPECT_EQ("f0", lib.single[0].readfile);
    EXPECT_EQ("f1", lib.single[1].readfile);
    EXPECT_EQ("p0", lib.single2[0].readfile);
    EXPECT_EQ("p1", lib.single2[1].readfile);
    EXPECT_EQ("q0", lib.singlequal[0].readfile);
    EXPECT_EQ("q1", lib.singlequal[1].readfile);
    EXPECT_EQ("a0", lib.pairs[0].read1file);
    EXPECT_EQ("b0", lib.pairs[0].read2file);
    EXPECT_EQ("a1", lib.pairs[1].read1file);
    EXPECT_EQ("b1", lib.pairs[1].read2file);
  }
}

TEST_F(Loadlib, LinesAboveTheFirstHeaderAreIgnored) {
  load("f=early.fa\navg_ins=700\nq1=early.fq\n[LIB]\nf=a.fa\n");
  ASSERT_EQ(1, libsNum);
  ASSERT_EQ(1U, libs[0].sfilenum);
  EXPECT_EQ("a.fa", libs[0].single[0].readfile);
  EXPECT_EQ(0U, libs[0].pfilenum);
  EXPECT_EQ(0, libs[0].avg_ins);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Loadlib, HeaderMayStandAnywhereInItsLine) {
  load("[LIB] the first of two\nf=a.fa\n## next: [LIB]\r\nf=b.fa\n[lib]\n[LIB\nLIB]\n");
  ASSERT_EQ(2, libsNum);
  EXPECT_EQ("a.fa", libs[0].single[0].readfile);
  EXPECT_EQ("b.fa", libs[1].single[0].readfile);
}

TEST_F(Loadlib, HeaderIsNeverAKeyLine) {
  load("[LIB]\nf=a.fa\nf=[LIB].fa\n[LIB][LIB] avg_ins=500\navg_ins=600[LIB]\n");
  ASSERT_EQ(4, libsNum);
  EXPECT_EQ(1U, libs[0].sfilenum);
  for (int i = 1; i < 4; ++i) {
    EXPECT_EQ(0U, libs[i].sfilenum) << i;
    EXPECT_EQ(0, libs[i].avg_ins) << i;
  }
}

TEST_F(Loadlib, UnknownAndMisspeltKeysAreIgnored) {
  load(
      "[LIB]\navg_ins = 500\n avg_ins=500\nAVG_INS=500\navg_in=500\navg_inss=500\n# avg_ins=500\n"
      "avg_ins\n=500\nF=a.fa\nQ1=a.fq\nf3=a.fa\nf =a.fa\n\nno key line\nasm_flag=1\nreverse=1\n");
  const Lib& lib = libs[0];
  EXPECT_EQ(0, lib.avg_ins);
  EXPECT_EQ(3, lib.asm_flag);
  EXPECT_EQ(0, lib.reverse);
  EXPECT_EQ(0U, lib.sfilenum + lib.pfilenum);
}

TEST_F(Loadlib, NumericKeyTwiceKeepsTheLastValue) {
  load("[LIB]\nmin_ins=1\nasm_flags=1\nmin_ins=2\nasm_flags=0\nreads_sum=5\nreads_sum=4\n");
  EXPECT_EQ(2, libs[0].min_ins);
  EXPECT_EQ(0, libs[0].asm_flag);
  EXPECT_EQ(4U, libs[0].sreadSum);
}

TEST_F(Loadlib, ValuesKeepBlanksAndEqualsSigns) {
  load("[LIB]\nf= a b=c.fa \nq1=\nq2=\n");
  EXPECT_EQ(" a b=c.fa ", libs[0].single[0].readfile);
  ASSERT_EQ(1U, libs[0].pfilenum);
  EXPECT_EQ("", libs[0].pairs[0].read1file);
  EXPECT_EQ("", libs[0].pairs[0].read2file);
}

TEST_F(Loadlib, CarriageReturnLineEnds) {
  load("[LIB]\r\navg_ins=500\r\nasm_flags=1\r\nmin_ins=20\r\nq1=a_1.fq\r\nq2=b\r\nf=ab\r\n");
  const Lib& lib = libs[0];
  EXPECT_EQ(500, lib.avg_ins);
  EXPECT_EQ(1, lib.asm_flag);
  EXPECT_EQ(20, lib.min_ins);
  ASSERT_EQ(1U, lib.pfilenum);
  EXPECT_EQ("a_1.fq", lib.pairs[0].read1file);
  EXPECT_EQ("b\r", lib.pairs[0].read2file);
  EXPECT_EQ("ab", lib.single[0].readfile);
}

TEST_F(Loadlib, LenientNumbers) {
  load(
      "[LIB]\nmin_ins=word\nmax_ins= 12x\navg_ins=-7\nrd_len_cutoff=4294967297\n"
      "reverse_seq=99999999999999999999\nasm_flags=\npair_reads_sum=-1\nreads_sum=4294967295\n");
  const Lib& lib = libs[0];
  EXPECT_EQ(0, lib.min_ins);
  EXPECT_EQ(12, lib.max_ins);
  EXPECT_EQ(-7, lib.avg_ins);
  EXPECT_EQ(1, lib.rd_len_cutoff);
  EXPECT_EQ(-1, lib.reverse);
  EXPECT_EQ(0, lib.asm_flag);
  EXPECT_EQ(4294967295U, lib.preadSum);
  EXPECT_EQ(4294967295U, lib.sreadSum);
}

TEST_F(Loadlib, SecondMateWithoutAFirstIsIgnored) {
  load("[LIB]\nq1=a1\nq2=a2\n[LIB]\nq2=early\nf2=early\nq1=b1\n[LIB]\nf2=alone\n");
  EXPECT_EQ("a2", libs[0].pairs[0].read2file);
  ASSERT_EQ(1U, libs[1].pfilenum);
  EXPECT_EQ("b1", libs[1].pairs[0].read1file);
  EXPECT_EQ("", libs[1].pairs[0].read2file);
  EXPECT_EQ(0U, libs[2].pfilenum);
  EXPECT_EQ(nullptr, libs[2].pairs);
}

TEST_F(Loadlib, SecondMateCompletesThePairOpenedLast) {
  load("[LIB]\nq1=a1\nf1=b1\nq2=b2\nf=x\nf2=b2 again\nq1=c1\n");
  ASSERT_EQ(3U, libs[0].pfilenum);
  EXPECT_EQ("", libs[0].pairs[0].read2file);
  EXPECT_EQ("b1", libs[0].pairs[1].read1file);
  EXPECT_EQ("b2 again", libs[0].pairs[1].read2file);
  EXPECT_EQ("", libs[0].pairs[2].read2file);
}

TEST_F(Loadlib, LastLineNeedsNoNewline) {
  load("[LIB]\nf=a.fa\nf=b.fa");
  ASSERT_EQ(2U, libs[0].sfilenum);
  EXPECT_EQ("b.fa", libs[0].single[1].readfile);
  load("[LIB]");
  EXPECT_EQ(1, libsNum);
}

TEST_F(Loadlib, FileWithoutASectionHasNoLibraries) {
  load("f=a.fa\navg_ins=500\n");
  EXPECT_EQ(0, libsNum);
  EXPECT_NE(nullptr, libs);
  load("");
  EXPECT_EQ(0, libsNum);
}

TEST(Libsclear, TakesANullArray) {
  EXPECT_EXIT((Libsclear(nullptr, 5), std::exit(0)), ::testing::ExitedWithCode(0),
              ::testing::Eq(""));
}

TEST_F(Loadlib, SinglequalNamesOutliveTheRecords) {
  load("[LIB]\nq=a.fq\nq=b.fq\n");
  const SingleQual* const names = libs[0].singlequal;
  Libsclear(libs, libsNum);
  libs = nullptr;
  EXPECT_EQ("a.fq", names[0].readfile);
  EXPECT_EQ("b.fq", names[1].readfile);
}

// What Loadlib writes to standard error, and how it ends the run.

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

// MAXINSERT and BIGGAPLEN, derived from the libraries' average inserts.

TEST_F(Loadlib, ThreeLibrariesGiveTheInsertLimits) {
  load("[LIB]\navg_ins=200\n[LIB]\navg_ins=500\n[LIB]\navg_ins=5000\n");
  EXPECT_EQ(600, BIGGAPLEN);
  EXPECT_EQ(5000, MAXINSERT);
}

TEST_F(Loadlib, InsertOf2000IsNotSmall) {
  load("[LIB]\navg_ins=2000\n");
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(2000, MAXINSERT);
}

TEST_F(Loadlib, InsertOf1999IsSmall) {
  load("[LIB]\navg_ins=1999\n");
  EXPECT_EQ(2099, BIGGAPLEN);
  EXPECT_EQ(1999, MAXINSERT);
}

TEST_F(Loadlib, OverwrittenInsertCounts) {
  load("[LIB]\navg_ins=5000\navg_ins=700\navg_ins=300\n");
  EXPECT_EQ(300, libs[0].avg_ins);
  EXPECT_EQ(800, BIGGAPLEN);
  EXPECT_EQ(5000, MAXINSERT);
}

TEST_F(Loadlib, BigGapLengthHasTheReadLengthOfTheOptions) {
  readLen = 150;
  load("[LIB]\navg_ins=500\n");
  EXPECT_EQ(650, BIGGAPLEN);
}

TEST_F(Loadlib, WithoutSmallInsertsTheBigGapLengthIsTheReadLength) {
  BIGGAPLEN = 12345;
  load("");
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Loadlib, NegativeInsertsDoNotCount) {
  load("[LIB]\navg_ins=-500\n");
  EXPECT_EQ(-500, libs[0].avg_ins);
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Loadlib, BigGapLengthSaturates) {
  readLen = INT_MAX - 500;
  load("[LIB]\navg_ins=500\n");
  EXPECT_EQ(INT_MAX, BIGGAPLEN);
  load("[LIB]\navg_ins=501\n");
  EXPECT_EQ(INT_MAX, BIGGAPLEN);
  load("[LIB]\navg_ins=499\n");
  EXPECT_EQ(INT_MAX - 1, BIGGAPLEN);
}

// The splitting of lines.

using KeyAndValue = std::pair<std::string, std::string>;

// The key and the value of `line`; a test failure when it has none.
KeyAndValue split(const std::string& line) {
  KeyAndValue parts;
  EXPECT_TRUE(splitColumn(line, parts.first, parts.second)) << line;
  return parts;
}

TEST(SplitColumn, SplitsAtTheFirstEqualsSign) {
  EXPECT_EQ(KeyAndValue("avg_ins", "500"), split("avg_ins=500"));
  EXPECT_EQ(KeyAndValue("q1", "a=b=c"), split("q1=a=b=c"));
  EXPECT_EQ(KeyAndValue("", "=="), split("==="));
}

TEST(SplitColumn, KeyAndValueMayBeEmpty) {
  EXPECT_EQ(KeyAndValue("f", ""), split("f="));
  EXPECT_EQ(KeyAndValue("", "a.fa"), split("=a.fa"));
  EXPECT_EQ(KeyAndValue("", ""), split("="));
}

TEST(SplitColumn, NothingIsTrimmed) {
  EXPECT_EQ(KeyAndValue(" avg_ins ", " 500\t"), split(" avg_ins = 500\t"));
}

TEST(SplitColumn, LineWithoutEqualsSignIsNoKeyLine) {
  std::string id = "id";
  std::string value = "value";
  EXPECT_FALSE(splitColumn("avg_ins 500", id, value));
  EXPECT_FALSE(splitColumn("", id, value));
  EXPECT_EQ("id", id);
  EXPECT_EQ("value", value);
}

TEST(SplitColumn, LongValueLosesItsCarriageReturn) {
  EXPECT_EQ(KeyAndValue("f", "31"), split("f=31\r"));
  EXPECT_EQ(KeyAndValue("f", "a.fa"), split("f=a.fa\r"));
}

TEST(SplitColumn, ShortValueKeepsCarriageReturn) {
  EXPECT_EQ(KeyAndValue("f", "3\r"), split("f=3\r"));
  EXPECT_EQ(KeyAndValue("f", "\r"), split("f=\r"));
}

TEST(SplitColumn, OnlyTheLastCarriageReturnIsDropped) {
  EXPECT_EQ(KeyAndValue("f", "a\r"), split("f=a\r\r"));
  EXPECT_EQ(KeyAndValue("f", "a\rb"), split("f=a\rb"));
  EXPECT_EQ(KeyAndValue("\r", "abc"), split("\r=abc"));
}

RC_GTEST_PROP(SplitColumn, GivesBackKeyAndValue, (const std::string& anyId, std::string value)) {
  std::string id = anyId;
  std::erase(id, '=');
  if (value.size() >= 3 && value.back() == '\r') value.back() = 'r';
  std::string idOut;
  std::string valueOut;
  std::string line = id;
  RC_ASSERT(splitColumn(line.append("=").append(value), idOut, valueOut));
  RC_ASSERT(idOut == id);
  RC_ASSERT(valueOut == value);
}

RC_GTEST_PROP(SplitColumn, DropsOneCarriageReturnOfALongValue, (const std::string& value)) {
  std::string idOut;
  std::string valueOut;
  RC_ASSERT(splitColumn("f=" + value + "\r", idOut, valueOut));
  RC_ASSERT(valueOut == (value.size() >= 2 ? value : value + "\r"));
}

}  // namespace
}  // namespace velk::test
