// The readers of all kinds of files, and what the name of a read file says.
#include "streaming/readers.h"

#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/readerKinds.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

TEST(ReadFileName, GzipIsToldByTheEnding) {
  EXPECT_TRUE(isGzipName("reads.fq.gz"));
  EXPECT_TRUE(isGzipName(".gz"));
  EXPECT_FALSE(isGzipName("reads.fq"));
  EXPECT_FALSE(isGzipName("reads.fq.GZ"));
  EXPECT_FALSE(isGzipName("reads.gz.fq"));
  EXPECT_FALSE(isGzipName("gz"));
  EXPECT_FALSE(isGzipName(""));
}

TEST(ReadFileName, ShortestIsTheEndingAlone) {
  EXPECT_EQ(kShortestReadFileName, std::string_view(".gz").size());
}

// What sets the readers apart from each other, on small files with the outcome spelt out.

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

// Each of the twelve readers by each ending of a file, with one body over all of them.

class AllReaders : public StreamingTest, public ::testing::WithParamInterface<ReaderKind> {
 protected:
  const ReaderKind& kind() const { return GetParam(); }

  FileText records(int file, int count) const { return numberedReads(kind(), file, count); }

  // A batch of the numbered reads of numberedReads().
  Batch batchOf(const std::vector<int>& numbers) const {
    Batch batch;
    for (const int number : numbers) {
      batch.a.push_back(std::string("a").append(std::to_string(number)));
      if (kind().isPaired()) batch.b.push_back(std::string("b").append(std::to_string(number)));
    }
    return batch;
  }

  // Adds an entry to the batch; the second mate counts only in paired kinds.
  void add(Batch& batch, const std::string& a, const std::string& b) const {
    batch.a.push_back(a);
    if (kind().isPaired()) batch.b.push_back(b);
  }

  void expect(const FileText& first, const FileText& second, const Slots& slots,
              const Batches& expected) const {
    EXPECT_EQ(batchesByCounting(kind(), first, second, slots), expected);
    expectBatches(kind(), first, second, slots, expected);
  }

  void expectAsCounted(const FileText& first, const FileText& second, const Slots& slots) const {
    expectBatches(kind(), first, second, slots, batchesByCounting(kind(), first, second, slots));
  }
};

INSTANTIATE_TEST_SUITE_P(Twelve, AllReaders, ::testing::ValuesIn(kReaderKinds),
                         ::testing::PrintToStringParamName());

std::vector<ReaderKind> kindsOfMateFiles() {
  std::vector<ReaderKind> kinds;
  for (const ReaderKind& kind : kReaderKinds) {
    if (kind.files == 2) kinds.push_back(kind);
  }
  return kinds;
}

class MateFileReaders : public AllReaders {};

INSTANTIATE_TEST_SUITE_P(Four, MateFileReaders, ::testing::ValuesIn(kindsOfMateFiles()),
                         ::testing::PrintToStringParamName());

TEST_P(AllReaders, EndingWithNewline) {
  Batch expected = batchOf({0, 1});
  if (!kind().isGzip) add(expected, "", "");
  expect(records(0, 2), records(1, 2), emptySlots(10), {expected});
}

TEST_P(AllReaders, ExtraRecordOfAPlainFileKeepsItsSlot) {
  Batch expected = batchOf({0, 1});
  if (!kind().isGzip) add(expected, "oldA2", "oldB2");
  expect(records(0, 2), records(1, 2), oldSlots(10), {expected});
}

TEST_P(AllReaders, EndingWithoutNewline) {
  FileText first = records(0, 2);
  FileText second = records(1, 2);
  first.endsWithNewline = second.endsWithNewline = false;
  Batch expected = batchOf({0, 1});
  if (kind().isGzip && kind().endsInSequence()) {
    (kind().keepB == 0 ? expected.a : expected.b).back().pop_back();
    if (kind().files == 2) expected.b.back().pop_back();
  }
  expect(first, second, oldSlots(10), {expected});
}

// The third record is cut after each of its lines, in the first file, the second and in both.
TEST_P(AllReaders, RecordCutAfterEveryLine) {
  for (int cut = 1; cut < kind().lines; ++cut) {
    for (const bool endsWithNewline : {true, false}) {
      const auto shorten = [&](FileText whole) {
        whole.lines.resize(static_cast<std::size_t>(2 * kind().lines + cut));
        whole.endsWithNewline = endsWithNewline;
        return whole;
      };
      const FileText first = records(0, 3);
      const FileText second = records(1, 3);
      SCOPED_TRACE(::testing::Message() << "after line " << cut << ", newline " << endsWithNewline);
      for (const Slots& slots : {emptySlots(10), oldSlots(10), oldSlots(2), oldSlots(3)}) {
        expectAsCounted(shorten(first), shorten(second), slots);
        if (kind().files == 1) continue;
        expectAsCounted(shorten(first), second, slots);
        expectAsCounted(first, shorten(second), slots);
      }
    }
  }
}

// The same for one cut, spelt out: the record ends behind the header of its last read.
TEST_P(AllReaders, RecordCutBehindItsLastHeader) {
  const int header = kind().keepB == 0 ? 1 : kind().keepB - 1;
  const auto shorten = [&](FileText whole, bool endsWithNewline) {
    whole.lines.resize(static_cast<std::size_t>(kind().lines + header));
    whole.endsWithNewline = endsWithNewline;
    return whole;
  };
  for (const bool endsWithNewline : {true, false}) {
    const FileText first = shorten(records(0, 2), endsWithNewline);
    const FileText second = shorten(records(1, 2), endsWithNewline);
    const auto lastOf = [&](const FileText& file, const std::string& slot) {
      std::string line = file.lines.back();
      if (!endsWithNewline) line.pop_back();
      if (kind().isGzip) return line;
      return endsWithNewline ? std::string() : slot;
    };
    Batch expected = batchOf({0});
    if (kind().keepB != 0) {
      add(expected, "a1", lastOf(first, "oldB1"));
    } else {
      add(expected, lastOf(first, "oldA1"), lastOf(second, "oldB1"));
    }
    expect(first, second, oldSlots(10), {expected});
  }
}

TEST_P(AllReaders, BlankLastLines) {
  for (int blanks = 1; blanks <= 2 * kind().lines; ++blanks) {
    SCOPED_TRACE(::testing::Message() << blanks << " blank lines");
    FileText first = records(0, 2);
    FileText second = records(1, 2);
    first.lines.resize(first.lines.size() + static_cast<std::size_t>(blanks));
    second.lines.resize(second.lines.size() + static_cast<std::size_t>(blanks));
    for (const Slots& slots : {oldSlots(10), oldSlots(2)}) expectAsCounted(first, second, slots);
  }
}

TEST_P(AllReaders, OneBlankLastLineMakesARecordOfNothing) {
  FileText first = records(0, 2);
  FileText second = records(1, 2);
  first.lines.emplace_back();
  second.lines.emplace_back();
  Batch expected = batchOf({0, 1});
  // Plain: the blank line is the header, the first sequence meets the end and becomes empty; a
  // second mate of the same file comes after the end and keeps its slot.
  const bool isSecondMateBehindTheEnd = !kind().isGzip && kind().keepB != 0;
  add(expected, "", isSecondMateBehindTheEnd ? "oldB2" : "");
  expect(first, second, oldSlots(10), {expected});
}

TEST_P(AllReaders, TwoBatchesAndMore) {
  Batches expected = {batchOf({0, 1}), batchOf({2, 3}), batchOf({4})};
  // The slot of the extra record holds a read of the batch before.
  if (!kind().isGzip) expected.back() = batchOf({4, 3});
  expect(records(0, 5), records(1, 5), emptySlots(2), expected);
}

TEST_P(AllReaders, LastBatchFullBecauseOfTheExtraRecord) {
  const Batch last = kind().isGzip ? batchOf({2}) : batchOf({2, 1});
  expect(records(0, 3), records(1, 3), emptySlots(2), {batchOf({0, 1}), last});
}

TEST_P(AllReaders, BatchFullExactlyAtTheEndOfTheFile) {
  Batches expected = {batchOf({0, 1}), batchOf({2, 3})};
  if (!kind().isGzip) expected.push_back(batchOf({2}));
  expect(records(0, 4), records(1, 4), emptySlots(2), expected);
}

TEST_P(AllReaders, BatchFullExactlyAtTheEndOfAFileWithoutNewline) {
  FileText first = records(0, 4);
  FileText second = records(1, 4);
  first.endsWithNewline = second.endsWithNewline = false;
  Batches expected = {batchOf({0, 1}), batchOf({2, 3})};
  if (kind().isGzip && kind().endsInSequence()) {
    (kind().keepB == 0 ? expected.back().a : expected.back().b).back().pop_back();
    if (kind().files == 2) expected.back().b.back().pop_back();
  }
  expect(first, second, emptySlots(2), expected);
}

TEST_P(AllReaders, OneReadABatch) {
  Batches expected = {batchOf({0}), batchOf({1}), batchOf({2})};
  if (!kind().isGzip) expected.push_back(batchOf({2}));
  expect(records(0, 3), records(1, 3), emptySlots(1), expected);
}

TEST_P(MateFileReaders, FilesOfUnequalLength) {
  for (const auto& [countA, countB] : {std::pair{4, 2}, std::pair{2, 4}}) {
    Batch expected = batchOf({0, 1});
    // The shorter plain file gives one record more, whose entry keeps its slot.
    if (!kind().isGzip && countA > countB) add(expected, "a2", "oldB2");
    if (!kind().isGzip && countA < countB) add(expected, "oldA2", "b2");
    expect(records(0, countA), records(1, countB), oldSlots(10), {expected});
  }
}

TEST_P(MateFileReaders, FilesOfUnequalLengthWithoutNewline) {
  for (const auto& [countA, countB] : {std::pair{4, 2}, std::pair{2, 4}}) {
    FileText first = records(0, countA);
    FileText second = records(1, countB);
    first.endsWithNewline = second.endsWithNewline = false;
    Batch expected = batchOf({0, 1});
    if (kind().isGzip && kind().endsInSequence()) {
      (countA < countB ? expected.a : expected.b).back().pop_back();
    }
    expect(first, second, oldSlots(10), {expected});
  }
}

TEST_P(MateFileReaders, OneFileEmpty) {
  Batches expectedA;
  Batches expectedB;
  if (!kind().isGzip) {
    // The empty file is found out by reading from it.
    expectedA = {{{"oldA0"}, {"b0"}}};
    expectedB = {{{"a0"}, {"oldB0"}}};
  }
  expect(FileText(), records(1, 2), oldSlots(10), expectedA);
  expect(records(0, 2), FileText(), oldSlots(10), expectedB);
}

}  // namespace

}  // namespace velk::test
