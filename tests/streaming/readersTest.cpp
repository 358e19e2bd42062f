// What sets the readers apart from each other, on small files with the outcome spelt out.
#include "streaming/readers.h"

#include "streaming/readBuffer.h"
#include "tests/streaming/readerKinds.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

class Readers : public StreamingTest {
 protected:
  // The batches of a run on `text` as the only file, gzipped for a gzip reader.
  static Batches batchesOf(const std::string& reader, const std::string& text,
                           const Slots& slots = emptySlots(10)) {
    const ReaderKind& kind = kindOf(reader);
    write("reads", kind.isGzip ? gzipped(text) : text);
    return runReader(kind, "reads", "", slots).batches;
  }

  // The same on two mate files.
  static Batches batchesOf(const std::string& reader, const std::string& textA,
                           const std::string& textB) {
    const ReaderKind& kind = kindOf(reader);
    write("one", kind.isGzip ? gzipped(textA) : textA);
    write("two", kind.isGzip ? gzipped(textB) : textB);
    return runReader(kind, "one", "two", emptySlots(10)).batches;
  }
};

TEST_F(Readers, PlainFileEndingWithNewlineRepeatsTheSlot) {
  EXPECT_EQ(batchesOf("LoadSEfa", ">\nAC\n"), (Batches{{{"AC", ""}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfq", "@\nAC\n+\nII\n"), (Batches{{{"AC", ""}, {}}}));
  EXPECT_EQ(batchesOf("LoadPEfaPair", ">\nAC\n>\nGT\n"), (Batches{{{"AC", ""}, {"GT", ""}}}));
  EXPECT_EQ(batchesOf("LoadPEfa", ">\nAC\n", ">\nGT\n"), (Batches{{{"AC", ""}, {"GT", ""}}}));

  // From the second batch on the slot holds a read of the batch before, which is seen once more.
  EXPECT_EQ(batchesOf("LoadSEfa", ">\nA\n>\nC\n>\nG\n", emptySlots(2)),
            (Batches{{{"A", "C"}, {}}, {{"G", "C"}, {}}}));
}

TEST_F(Readers, GzipFileEndingWithNewlineHasNoExtraRecord) {
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\nAC\n"), (Batches{{{"AC"}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\nA\n>\nC\n>\nG\n", emptySlots(2)),
            (Batches{{{"A", "C"}, {}}, {{"G"}, {}}}));
}

TEST_F(Readers, GzipLastLineWithoutNewlineLosesABase) {
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\nACG\n>\nACG"), (Batches{{{"ACG", "AC"}, {}}}));
  EXPECT_EQ(batchesOf("LoadPEfa_gz", ">\nACG", ">\nTTA"), (Batches{{{"AC"}, {"TT"}}}));
  EXPECT_EQ(batchesOf("LoadSEfq_gz", "@\nACG\n+\nIII"), (Batches{{{"ACG"}, {}}}));
}

TEST_F(Readers, PlainLastLineWithoutNewlineIsWholeAndTheLast) {
  EXPECT_EQ(batchesOf("LoadSEfa", ">\nACG\n>\nACG"), (Batches{{{"ACG", "ACG"}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfq", "@\nACG\n+\nIII"), (Batches{{{"ACG"}, {}}}));
}

TEST_F(Readers, GzipRecordThatEndsEarlyKeepsTheLineBuffer) {
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\nACG\n>late\n"), (Batches{{{"ACG", ">late"}, {}}}));
  EXPECT_EQ(batchesOf("LoadPEfqPair_gz", "@\nACG\n+\nIII\n"), (Batches{{{"ACG"}, {"III"}}}));
  // Each mate file has a line buffer of its own.
  EXPECT_EQ(batchesOf("LoadPEfa_gz", ">x\n", ">y\nACG\n"), (Batches{{{">x"}, {"ACG"}}}));
  EXPECT_EQ(batchesOf("LoadPEfa_gz", ">x\nACG\n", ">y\n"), (Batches{{{"ACG"}, {">y"}}}));
}

TEST_F(Readers, LongGzipLineIsSplit) {
  const std::string line(1500, 'A');
  // The second piece of the line passes for a header, and so on.
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\n" + line + "\n>i\nCC\n"),
            (Batches{{{std::string(1022, 'A'), ">i", "CC"}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfa", ">\n" + line + "\n>i\nCC"), (Batches{{{line, "CC"}, {}}}));
}

TEST_F(Readers, GzipLineOf1022BasesIsWhole) {
  const std::string line(1022, 'C');
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\n" + line + "\n>\nA\n"), (Batches{{{line, "A"}, {}}}));
}

TEST_F(Readers, LinesEndAtTheNewlineAlone) {
  EXPECT_EQ(batchesOf("LoadSEfa", ">\r\nAC\r\n>\r\nG\rT\r"), (Batches{{{"AC\r", "G\rT\r"}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ">\r\nAC\r\n>\r\nG\rT\r\n"),
            (Batches{{{"AC\r", "G\rT\r"}, {}}}));
}

TEST_F(Readers, NothingInALineIsExamined) {
  EXPECT_EQ(batchesOf("LoadSEfa", "AC\nGT\nCA\nNNN"), (Batches{{{"GT", "NNN"}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfa_gz", "AC\nGT\nCA\nNNN\n"), (Batches{{{"GT", "NNN"}, {}}}));
  // A sequence over two lines: the second one passes for a header.
  EXPECT_EQ(batchesOf("LoadSEfa", ">1\nAC\nGT\n>2\nCC\nTT"), (Batches{{{"AC", ">2", "TT"}, {}}}));
  // A record without its quality line shifts all behind it.
  EXPECT_EQ(batchesOf("LoadSEfq", "@1\nAC\n+\n@2\nGT\n+\nII"), (Batches{{{"AC", "+"}, {}}}));
}

TEST_F(Readers, EmptyFiles) {
  EXPECT_EQ(batchesOf("LoadSEfa", ""), (Batches{{{""}, {}}}));
  EXPECT_EQ(batchesOf("LoadSEfa_gz", ""), Batches{});
  EXPECT_EQ(batchesOf("LoadPEfq", "", ""), (Batches{{{""}, {""}}}));
  EXPECT_EQ(batchesOf("LoadPEfq_gz", "", ""), Batches{});
}

TEST_F(Readers, BatchOfTheProgramHoldsHalfAMillionReads) {
  ASSERT_EQ(batchLimit, 500000);
  std::string text;
  for (int i = 0; i < 500000; ++i) text.append(">\n").append(std::to_string(i)).append("\n");
  const Batches batches = batchesOf("LoadSEfa", text, emptySlots(500000));
  ASSERT_EQ(batches.size(), 2u);
  ASSERT_EQ(batches[0].a.size(), 500000u);
  EXPECT_EQ(batches[0].a.front(), "0");
  EXPECT_EQ(batches[0].a.back(), "499999");
  EXPECT_EQ(batches[1], (Batch{{"0"}, {}}));  // the extra record, in the slot of read 0
}

TEST_F(Readers, SingleEndOpenFailures) {
  EXPECT_EXIT(LoadSEfa("missing", ""), ExitedWithCode(1),
              Eq("[ERROR]: can't open fasta read file0\n"));
  EXPECT_EXIT(LoadSEfq("missing", ""), ExitedWithCode(1),
              Eq("[ERROR]: can't open fastq read file0\n"));
}

TEST_F(Readers, PairedOpenFailures) {
  const char* const message = "[ERROR]: can't open pair-end read files\n";
  write("there", ">\nAC\n");
  EXPECT_EXIT(LoadPEfaPair("missing"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfqPair("missing"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfa("missing", "there"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfa("there", "missing"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfq("missing", "there"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfq("there", "missing"), ExitedWithCode(1), Eq(message));
}

TEST_F(Readers, SingleEndReadersRefuseAMateFileBeforeOpeningAnything) {
  const char* const message = "[ERROR]:the input file should be single end file!\n";
  EXPECT_EXIT(LoadSEfa("missing", "mate"), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadSEfq("missing", "mate"), ExitedWithCode(1), Eq(message));
}

TEST_F(Readers, PlainFileThatCannotBeReadEndsTheRun) {
  std::filesystem::create_directory("folder");
  const char* const message = "[ERROR]: can't read folder: Is a directory\n";
  EXPECT_EXIT(LoadSEfa("folder", ""), ExitedWithCode(1), Eq(message));
  EXPECT_EXIT(LoadPEfqPair("folder"), ExitedWithCode(1), Eq(message));
  write("there", "@\nAC\n+\nII\n");
  EXPECT_EXIT(LoadPEfq("there", "folder"), ExitedWithCode(1), Eq(message));
}

}  // namespace
}  // namespace velk::test
