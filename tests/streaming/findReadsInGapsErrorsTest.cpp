// Read files that cannot be streamed: skipped gzip files and the ends of a run.
#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/gapAssembly.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

// Counts the flushes of std::cout during its life.
class CountedFlushes : std::streambuf {
 public:
  CountedFlushes() : saved_(std::cout.rdbuf(this)) {}
  ~CountedFlushes() override { std::cout.rdbuf(saved_); }

  int count() const { return count_; }

 private:
  int sync() override {
    ++count_;
    return 0;
  }

  std::streambuf* saved_;
  int count_ = 0;
};

// Looks for reads in the files with the workers that there are.
void find(int insert, std::string fileA, std::string fileB = "") {
  insertLength = insert;
  FindReadsInGaps(fileA, fileB, thread_num);
}

class UnusableReadFiles : public StreamingTest {};

constexpr int kPaired = 500;
constexpr int kSingle = 0;
constexpr const char* kPairedFormat = " reads should be kept in *.fa or *.fq format!\n";
constexpr const char* kSingleFormat = "Input files should be in *.fa or *.fq format!\n";

TEST_F(UnusableReadFiles, MissingGzipFileIsSkipped) {
  thread_num = 3;
  for (const int insert : {kPaired, kSingle}) {
    const CountedFlushes flushes;
    const CapturedErrors errors;
    find(insert, "missing.gz", insert == kPaired ? "mates.gz" : "");
    const std::string opening = insert == kPaired ? "" : "load SE file:missing.gz!\n";
    EXPECT_EQ(errors.text(), opening + "Can't open file: missing.gz\n");
    EXPECT_GE(flushes.count(), 1);
    EXPECT_EQ(foundNumInLib, 0u);
    EXPECT_EQ(totalFoundNum, 0u);
    EXPECT_EQ(threadNum, 3) << "is set before the file is looked at";
  }
}

TEST_F(UnusableReadFiles, MissingPlainFile) {
  EXPECT_EXIT(find(kPaired, "missing"), ExitedWithCode(1),
              Eq("[ERROR]: can't open input file: missing\n"));
  EXPECT_EXIT(find(kSingle, "missing"), ExitedWithCode(1),
              Eq("load SE file:missing!\n[ERROR]: can't open input file\n"));
}

TEST_F(UnusableReadFiles, MissingSecondMateFile) {
  write("one", ">\nAC\n");
  EXPECT_EXIT(find(kPaired, "one", "missing"), ExitedWithCode(1),
              Eq("[ERROR]: can't open pair-end read files\n"));
}

TEST_F(UnusableReadFiles, NeitherFastaNorFastq) {
  write("plain", "ACGT\n>1\nACGT\n");
  writeGzip("packed.gz", "ACGT\n>1\nACGT\n");
  for (const std::string file : {"plain", "packed.gz"}) {
    EXPECT_EXIT(find(kPaired, file), ExitedWithCode(1), Eq(kPairedFormat));
    EXPECT_EXIT(find(kSingle, file), ExitedWithCode(1),
                Eq("load SE file:" + file + "!\n" + kSingleFormat));
  }
}

TEST_F(UnusableReadFiles, FirstLineEmpty) {
  write("plain", "\n>1\nACGT\n");
  writeGzip("packed.gz", "\n>1\nACGT\n");
  write("blank", " >1\nACGT\n");
  for (const std::string file : {"plain", "packed.gz", "blank"}) {
    EXPECT_EXIT(find(kPaired, file), ExitedWithCode(1), Eq(kPairedFormat));
    EXPECT_EXIT(find(kSingle, file), ExitedWithCode(1),
                Eq("load SE file:" + file + "!\n" + kSingleFormat));
  }
}

TEST_F(UnusableReadFiles, EmptyFile) {
  write("plain", "");
  write("nothing.gz", "");
  writeGzip("packed.gz", "");
  for (const std::string file : {"plain", "nothing.gz", "packed.gz"}) {
    EXPECT_EXIT(find(kPaired, file), ExitedWithCode(1), Eq(kPairedFormat));
    EXPECT_EXIT(find(kSingle, file), ExitedWithCode(1),
                Eq("load SE file:" + file + "!\n" + kSingleFormat));
  }
}

TEST_F(UnusableReadFiles, DamageInTheFirstLineIsNamedBeforeTheFormatError) {
  const std::string whole = gzipped("ACGT");
  write("cut.gz", whole.substr(0, whole.size() - 3));
  const std::string damage = "[ERROR]: damaged gzip file: cut.gz: unexpected end of file\n";
  EXPECT_EXIT(find(kPaired, "cut.gz"), ExitedWithCode(1), Eq(damage + kPairedFormat));
  EXPECT_EXIT(find(kSingle, "cut.gz"), ExitedWithCode(1),
              Eq("load SE file:cut.gz!\n" + damage + kSingleFormat));
}

// The format is judged by one piece of a line, in which nothing is wrong.
TEST_F(UnusableReadFiles, DamageFarBehindTheFirstLetterIsNotLookedFor) {
  const std::string whole = gzipped(std::string(300000, 'x'));
  write("cut.gz", whole.substr(0, whole.size() - 3));
  EXPECT_EXIT(find(kPaired, "cut.gz"), ExitedWithCode(1), Eq(kPairedFormat));
}

TEST_F(UnusableReadFiles, GzipFileCutBeforeItsFirstByte) {
  write("cut.gz", gzipped(">1\nACGT\n").substr(0, 5));
  EXPECT_EXIT(find(kPaired, "cut.gz"), ExitedWithCode(1),
              Eq(std::string("[ERROR]: damaged gzip file: cut.gz: unexpected end of file\n") +
                 kPairedFormat));
}

TEST_F(UnusableReadFiles, FolderInsteadOfAFile) {
  std::filesystem::create_directory("folder");
  std::filesystem::create_directory("folder.gz");
  EXPECT_EXIT(find(kPaired, "folder"), ExitedWithCode(1),
              Eq("[ERROR]: can't read folder: Is a directory\n"));
  EXPECT_EXIT(find(kSingle, "folder"), ExitedWithCode(1),
              Eq("load SE file:folder!\n[ERROR]: can't read folder: Is a directory\n"));
  EXPECT_EXIT(
      find(kPaired, "folder.gz"), ExitedWithCode(1),
      Eq(std::string("[ERROR]: damaged gzip file: folder.gz: Is a directory\n") + kPairedFormat));
}

// A pipe gives its first line once only.
TEST_F(UnusableReadFiles, Pipe) {
  for (const std::string file : {"pipe", "pipe.gz"}) {
    std::filesystem::remove(file);
    ASSERT_EQ(mkfifo(file.c_str(), 0600), 0);
    const std::string message = "[ERROR]: can't read " + file + ": Illegal seek\n";
    const auto findInTime = [&](int insert) {
      alarm(60);  // opening a pipe would wait for a writer
      find(insert, file);
    };
    EXPECT_EXIT(findInTime(kPaired), ExitedWithCode(1), Eq(message));
    EXPECT_EXIT(findInTime(kSingle), ExitedWithCode(1),
                Eq("load SE file:" + file + "!\n" + message));
  }
}

TEST_F(UnusableReadFiles, PlainMateFilesWithoutInsert) {
  const std::string refusal = "[ERROR]:the input file should be single end file!\n";
  write("one.fa", ">\nAC\n");
  write("one.fq", "@\nAC\n+\nII\n");
  EXPECT_EXIT(find(kSingle, "one.fa", "two.fa"), ExitedWithCode(1),
              Eq("load SE file:one.fa!\n" + refusal));
  EXPECT_EXIT(find(kSingle, "one.fq", "two.fq"), ExitedWithCode(1),
              Eq("load SE file:one.fq!\n" + refusal));
}

class EndOfARun : public GapAssemblyTest {};

TEST_F(EndOfARun, KeepsTheReadsOfEarlierFilesAndBatches) {
  const std::vector<std::string> reads = {singleRead(0, 1), singleRead(1, 2), singleRead(0, 3)};
  write("reads", fasta(reads));
  write("bad", "ACGT\n");
  EXPECT_EXIT(
      {
        start(2);
        openOutputFile();
        batchLimit = 2;
        find(kSingle, "reads");
        find(kSingle, "bad");
      },
      ExitedWithCode(1),
      Eq(std::string("load SE file:reads!\nbufferNum: 2\nbufferNum: 1\nFind reads finished!\n"
                     "Load single-end reads in *.fa format done!\nload SE read finished!\n"
                     "3 reads were found in gaps.\nload SE file:bad!\n") +
         kSingleFormat));
  EXPECT_EQ(contentOf("found.fa"), singleRecord(0, 1) + singleRecord(1, 2) + singleRecord(0, 3));
}

}  // namespace
}  // namespace velk::test
