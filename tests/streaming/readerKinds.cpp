#include "tests/streaming/readerKinds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <ostream>

#include "streaming/readBuffer.h"
#include "streaming/readers.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

template <void (*kReader)(const std::string&)>
void readOneFile(const std::string& fileA, const std::string&) {
  kReader(fileA);
}

std::string numbered(const std::string& word, std::size_t number) {
  std::string text = word;
  return text.append(std::to_string(number));
}

}  // namespace

const std::vector<ReaderKind> kReaderKinds = {
    {"LoadSEfa", LoadSEfa, false, 1, 2, 0},
    {"LoadSEfa_gz", readOneFile<LoadSEfa_gz>, true, 1, 2, 0},
    {"LoadSEfq", LoadSEfq, false, 1, 4, 0},
    {"LoadSEfq_gz", readOneFile<LoadSEfq_gz>, true, 1, 4, 0},
    {"LoadPEfaPair", readOneFile<LoadPEfaPair>, false, 1, 4, 4},
    {"LoadPEfaPair_gz", readOneFile<LoadPEfaPair_gz>, true, 1, 4, 4},
    {"LoadPEfa", LoadPEfa, false, 2, 2, 0},
    {"LoadPEfa_gz", LoadPEfa_gz, true, 2, 2, 0},
    {"LoadPEfqPair", readOneFile<LoadPEfqPair>, false, 1, 8, 6},
    {"LoadPEfqPair_gz", readOneFile<LoadPEfqPair_gz>, true, 1, 8, 6},
    {"LoadPEfq", LoadPEfq, false, 2, 4, 0},
    {"LoadPEfq_gz", LoadPEfq_gz, true, 2, 4, 0},
};

const ReaderKind& kindOf(const std::string& name) {
  const auto found = std::find_if(kReaderKinds.begin(), kReaderKinds.end(),
                                  [&](const ReaderKind& kind) { return kind.name == name; });
  EXPECT_NE(found, kReaderKinds.end()) << name;
  return *found;
}

std::ostream& operator<<(std::ostream& out, const ReaderKind& kind) {
  return out << kind.name;
}

std::string FileText::text() const {
  std::string all;
  for (const std::string& line : lines) all += line + "\n";
  if (!endsWithNewline && !all.empty()) all.pop_back();
  return all;
}

FileText numberedReads(const ReaderKind& kind, int file, int count) {
  const bool isFastq = kind.lines == 8 || (kind.lines == 4 && kind.keepB == 0);
  const int mates = kind.keepB == 0 ? 1 : 2;
  FileText result;
  for (int record = 0; record < count; ++record) {
    for (int mate = file; mate < file + mates; ++mate) {
      const std::string name = numbered(mate == 0 ? "a" : "b", static_cast<std::size_t>(record));
      result.lines.push_back((isFastq ? "@" : ">") + name);
      result.lines.push_back(name);
      if (!isFastq) continue;
      result.lines.push_back("+" + name);
      result.lines.push_back("~" + name);
    }
  }
  return result;
}

Slots emptySlots(std::size_t count) {
  return {std::vector<std::string>(count), std::vector<std::string>(count)};
}

Slots oldSlots(std::size_t count) {
  Slots slots;
  for (std::size_t i = 0; i < count; ++i) {
    slots.a.push_back(numbered("oldA", i));
    slots.b.push_back(numbered("oldB", i));
  }
  return slots;
}

ReaderRun runReader(const ReaderKind& kind, const std::string& fileA, const std::string& fileB,
                    Slots slots) {
  constexpr int kLeftByAnotherFile = 77;
  batchLimit = static_cast<int>(slots.a.size());
  readsA = slots.a.data();
  readsB = kind.isPaired() ? slots.b.data() : nullptr;
  bufferNum = kLeftByAnotherFile;
  const BatchSpy spy;
  const CapturedErrors errors;
  kind.read(fileA, fileB);
  return {spy.batches(), errors.text(), bufferNum};
}

void expectBatches(const ReaderKind& kind, const FileText& first, const FileText& second,
                   const Slots& slots, const Batches& expected) {
  const std::string fileA = kind.isGzip ? "one.gz" : "one";
  const std::string fileB = kind.files == 1 ? "" : kind.isGzip ? "two.gz" : "two";
  const auto write = [&](const std::string& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << (kind.isGzip ? gzipped(text) : text);
  };
  write(fileA, first.text());
  if (kind.files == 2) write(fileB, second.text());

  const ReaderRun run = runReader(kind, fileA, fileB, slots);
  EXPECT_EQ(run.batches, expected);
  EXPECT_EQ(run.messages, messagesOf(kind, expected));
  const bool endsInsideBatch = !expected.empty() && expected.back().a.size() < slots.a.size();
  EXPECT_EQ(run.bufferNum, endsInsideBatch ? static_cast<int>(expected.back().a.size()) : 0);
}

std::string messagesOf(const ReaderKind& kind, const Batches& batches) {
  std::string messages;
  for (const Batch& batch : batches) {
    messages += "bufferNum: " + std::to_string(batch.a.size()) + "\n";
  }
  if (!kind.isPaired()) messages += "Find reads finished!\n";
  return messages;
}

}  // namespace velk::test
