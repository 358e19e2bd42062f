// Each of the twelve readers by each ending of a file, with one body over all of them.
#include "tests/streaming/readerKinds.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

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
