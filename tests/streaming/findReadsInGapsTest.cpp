// One read file, or one pair of mate files: how it is looked at, which reader takes it, what is
// said about it.
#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/gapAssembly.h"

namespace velk::test {
namespace {

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

}  // namespace
}  // namespace velk::test
