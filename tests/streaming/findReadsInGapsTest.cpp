// One read file, or one pair of mate files: how it is looked at, which reader takes it, what is
// said about it.
#include "driver/velk.h"

#include <sys/stat.h>
#include <unistd.h>

#include <iostream>

#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

class FindReadsInGapsTest : public GapAssemblyTest {
 protected:
  static constexpr int kWorkers = 2;

  // Streams the files through two workers. Returns the messages.
  std::string stream(int insert, std::string fileA, std::string fileB = "") {
    start(kWorkers);
    openOutputFile();
    insertLength = insert;
    const CapturedErrors errors;
    FindReadsInGaps(fileA, fileB, kWorkers);
    return errors.text();
  }

  // Two pairs as the text of an interleaved file.
  std::vector<std::string> twoPairs() const {
    return {firstMate(0, 5), secondMate(5), firstMate(1, 6), secondMate(6)};
  }
  std::vector<std::string> firstMates() const { return {firstMate(0, 5), firstMate(1, 6)}; }
  std::vector<std::string> secondMates() const { return {secondMate(5), secondMate(6)}; }
  std::string pairRecords() const { return mateRecord(0, 5) + mateRecord(1, 6); }

  std::vector<std::string> twoReads() const { return {singleRead(0, 5), singleRead(1, 6)}; }
  std::string readRecords() const { return singleRecord(0, 5) + singleRecord(1, 6); }

  void expectPairs(const std::string& fileA, const std::string& fileB, const std::string& done) {
    EXPECT_EQ(stream(kInsert, fileA, fileB),
              "bufferNum: 2\n" + done + "\n2 reads were found in gaps.\n");
    EXPECT_EQ(writtenOutput(), pairRecords());
  }

  void expectSingles(const std::string& file, const std::string& done) {
    EXPECT_EQ(stream(0, file), "load SE file:" + file + "!\nbufferNum: 2\nFind reads finished!\n" +
                                   done +
                                   "\nload SE read finished!\n2 reads were found in gaps.\n");
    EXPECT_EQ(writtenOutput(), readRecords());
  }
};

// The names of the files say nothing but "gzip": FASTA stands in *.fq and so on.

TEST_F(FindReadsInGapsTest, MateFilesInFasta) {
  write("one.fq", fasta(firstMates()));
  write("two.fq", fasta(secondMates()));
  expectPairs("one.fq", "two.fq", "Load pair-end reads in *.fa format done!");
}

TEST_F(FindReadsInGapsTest, MateFilesInGzipFasta) {
  writeGzip("one.fq.gz", fasta(firstMates()) + "\n");
  writeGzip("two.fq.gz", fasta(secondMates()) + "\n");
  expectPairs("one.fq.gz", "two.fq.gz", "Load pair-end reads in *.fa format done!");
}

TEST_F(FindReadsInGapsTest, MateFilesInFastq) {
  write("one.fa", fastq(firstMates()));
  write("two.fa", fastq(secondMates()));
  expectPairs("one.fa", "two.fa", "Load pair-end reads in *.fq format done!");
}

TEST_F(FindReadsInGapsTest, MateFilesInGzipFastq) {
  writeGzip("one.fa.gz", fastq(firstMates()));
  writeGzip("two.fa.gz", fastq(secondMates()));
  expectPairs("one.fa.gz", "two.fa.gz", "Load pair-end reads in *.fq format done!");
}

TEST_F(FindReadsInGapsTest, InterleavedFasta) {
  write("reads.fq", fasta(twoPairs()));
  expectPairs("reads.fq", "", "Load pair-end reads in *.pair format done!");
}

TEST_F(FindReadsInGapsTest, InterleavedGzipFasta) {
  writeGzip("reads.fq.gz", fasta(twoPairs()) + "\n");
  expectPairs("reads.fq.gz", "", "Load pair-end reads in *.pair format done!");
}

TEST_F(FindReadsInGapsTest, InterleavedFastq) {
  write("reads.pair", fastq(twoPairs()));
  expectPairs("reads.pair", "", "Load pari-end reads in *.pair format done!");
}

TEST_F(FindReadsInGapsTest, InterleavedGzipFastq) {
  writeGzip("reads.pair.gz", fastq(twoPairs()));
  expectPairs("reads.pair.gz", "", "Load pari-end reads in *.pair format done!");
}

TEST_F(FindReadsInGapsTest, SingleReadsInFasta) {
  write("reads.fq", fasta(twoReads()));
  expectSingles("reads.fq", "Load single-end reads in *.fa format done!");
}

TEST_F(FindReadsInGapsTest, SingleReadsInGzipFasta) {
  writeGzip("reads.fq.gz", fasta(twoReads()) + "\n");
  expectSingles("reads.fq.gz", "Load single-end reads in *.fa format done!");
}

TEST_F(FindReadsInGapsTest, FirstLetterInAGzipMemberOfItsOwn) {
  write("reads.gz", gzipped(">") + gzipped(fasta(twoReads()).substr(1) + "\n"));
  expectSingles("reads.gz", "Load single-end reads in *.fa format done!");
}

TEST_F(FindReadsInGapsTest, SingleReadsInFastq) {
  write("reads.fa", fastq(twoReads()));
  expectSingles("reads.fa", "Load single-end reads in *.fq format done!");
}

TEST_F(FindReadsInGapsTest, SingleReadsInGzipFastq) {
  writeGzip("reads.fa.gz", fastq(twoReads()));
  expectSingles("reads.fa.gz", "Load single-end reads in *.fq format done!");
}

TEST_F(FindReadsInGapsTest, AnyInsertButZeroMeansPairs) {
  write("reads", fasta(twoPairs()));
  EXPECT_EQ(stream(-1, "reads"),
            "bufferNum: 2\nLoad pair-end reads in *.pair format done!\n"
            "0 reads were found in gaps.\n");
}

TEST_F(FindReadsInGapsTest, GzipIsTheNamesLastThreeCharacters) {
  // A plain text that ends with a newline has an extra record, unless it is read through zlib.
  const std::string text = fasta(twoReads()) + "\n";
  for (const char* const name : {"reads.gz", ".gz"}) {
    write(name, text);
    EXPECT_NE(stream(0, name).find("bufferNum: 2\n"), std::string::npos) << name;
    stop();
    fout.close();
  }
  for (const char* const name : {"reads.gz.fa", "readsgz", "reads.GZ", "reads.gzip", "a.g"}) {
    write(name, text);
    EXPECT_NE(stream(0, name).find("bufferNum: 3\n"), std::string::npos) << name;
    stop();
    fout.close();
  }
}

TEST_F(FindReadsInGapsTest, FirstOfTwoMateFilesDecidesForBoth) {
  const std::string one = fasta(firstMates()) + "\n";
  const std::string two = fasta(secondMates()) + "\n";
  const std::string done =
      "Load pair-end reads in *.fa format done!\n2 reads were found in gaps.\n";
  writeGzip("one.gz", one);
  write("two", two);
  EXPECT_EQ(stream(kInsert, "one.gz", "two"), "bufferNum: 2\n" + done);
  stop();
  fout.close();

  write("one", one);
  write("two.gz", two);
  EXPECT_EQ(stream(kInsert, "one", "two.gz"), "bufferNum: 3\n" + done);
}

TEST_F(FindReadsInGapsTest, SecondMateFileInGzipBehindAPlainFirstOneIsReadAsText) {
  // Without a newline in the packed bytes they are one header, and the mate read stays empty.
  std::string packed = gzipped(fasta(secondMates()) + "\n");
  ASSERT_EQ(packed.find('\n'), std::string::npos) << "choose other reads";
  write("one", fasta(firstMates()));
  write("two.gz", packed);
  EXPECT_EQ(stream(kInsert, "one", "two.gz"),
            "bufferNum: 1\nLoad pair-end reads in *.fa format done!\n"
            "0 reads were found in gaps.\n");
}

TEST_F(FindReadsInGapsTest, CompressedFileWithoutInsertIsReadWithoutItsMates) {
  writeGzip("one.gz", fasta(twoReads()) + "\n");
  EXPECT_EQ(stream(0, "one.gz", "missing.gz"),
            "load SE file:one.gz!\nbufferNum: 2\nFind reads finished!\n"
            "Load single-end reads in *.fa format done!\nload SE read finished!\n"
            "2 reads were found in gaps.\n");
  EXPECT_EQ(writtenOutput(), readRecords());
}

TEST_F(FindReadsInGapsTest, CountersOfTheFileAndTheRun) {
  write("reads", fasta(twoReads()));
  stream(0, "reads");
  EXPECT_EQ(foundNumInLib, 0u);
  EXPECT_EQ(totalFoundNum, 2u);
  std::string again = "reads";
  std::string none;
  const CapturedErrors errors;
  FindReadsInGaps(again, none, kWorkers);
  EXPECT_TRUE(errors.text().ends_with("\n2 reads were found in gaps.\n")) << errors.text();
  EXPECT_EQ(foundNumInLib, 0u);
  EXPECT_EQ(totalFoundNum, 4u);
  EXPECT_EQ(readSumInEachGap[0], 2);
  EXPECT_EQ(readSumInEachGap[1], 2);
  EXPECT_EQ(writtenOutput(), readRecords() + readRecords());
}

TEST_F(FindReadsInGapsTest, RecordsInBatchOrderAndWorkerByWorker) {
  batchLimit = 3;
  std::vector<std::string> reads;
  for (unsigned i = 0; i < 5; ++i) reads.push_back(singleRead(0, i));
  write("reads", fasta(reads));
  stream(0, "reads");
  EXPECT_EQ(writtenOutput(), singleRecord(0, 0) + singleRecord(0, 2) + singleRecord(0, 1) +
                                 singleRecord(0, 3) + singleRecord(0, 4));
}

// A read recorded twice for its gap by the repeated last record counts twice.
TEST_F(FindReadsInGapsTest, RepeatedReadIsFoundAgain) {
  batchLimit = 1;
  write("reads", fasta(twoReads()) + "\n");
  EXPECT_TRUE(stream(0, "reads").ends_with("\n3 reads were found in gaps.\n"));
  EXPECT_EQ(readSumInEachGap[0], 1);
  EXPECT_EQ(readSumInEachGap[1], 2);
  EXPECT_EQ(writtenOutput(), readRecords() + singleRecord(1, 6));
}

TEST_F(FindReadsInGapsTest, AnchorAndMateOfOnePairAreTwoRecords) {
  // At insert 130 the anchor runs into gap 0 and so does its mate.
  const std::string anchor = singleRead(0, 7);
  write("reads", fasta({anchor, secondMate(7)}));
  EXPECT_TRUE(stream(130, "reads").ends_with("\n2 reads were found in gaps.\n"));
  EXPECT_EQ(readSumInEachGap[0], 2);
  EXPECT_EQ(writtenOutput(), ">0\t150\t-30\ts0\t0\t130\n" + storedMate(7) +
                                 "\n>0\t150\t-60\ts0\t0\t130\n" + anchor + "\n");
}

TEST_F(FindReadsInGapsTest, BufferTakesHalfAMillionReads) {
  std::string text;
  for (int i = 0; i < bufferSize; ++i) text += ">\nA\n";
  write("reads", text);
  EXPECT_EQ(stream(0, "reads"),
            "load SE file:reads!\nbufferNum: 500000\nbufferNum: 1\nFind reads finished!\n"
            "Load single-end reads in *.fa format done!\nload SE read finished!\n"
            "0 reads were found in gaps.\n");
}

// Read files that cannot be streamed: skipped gzip files and the ends of a run.

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
