#include "tests/streaming/readerKinds.h"

#include <gtest/gtest.h>
#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <deque>
#include <fstream>
#include <ostream>

#include "streaming/mailbox.h"
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

std::ostream& operator<<(std::ostream& out, const Batch& batch) {
  out << "{";
  for (std::size_t i = 0; i < batch.a.size(); ++i) {
    out << (i == 0 ? "" : ", ") << '"' << batch.a[i] << '"';
    if (!batch.b.empty()) out << "/\"" << batch.b[i] << '"';
  }
  return out << "}";
}

BatchSpy::BatchSpy() {
  constexpr int kManyWorkers = bufferSize;  // makes the row of each short
  threadNum = 1;
  allocateWorkerArrays(1);
  allocateRow(0, kManyWorkers);
  thread_ = std::thread([this] { live(); });
}

BatchSpy::~BatchSpy() {
  setMailbox(0, 2);
  thread_.join();
  releaseRows(1);
}

void BatchSpy::live() {
  for (;;) {
    switch (mailboxValue(0)) {
      case 0:
        usleep(kWorkerPollMicroseconds);
        break;
      case 1: {
        Batch& batch = batches_.emplace_back();
        batch.a.assign(readsA, readsA + bufferNum);
        if (readsB != nullptr) batch.b.assign(readsB, readsB + bufferNum);
        foundReadNum[0] = 0;
        setMailbox(0, 0);
        break;
      }
      default:
        return;
    }
  }
}

namespace {

// Two plain tellings of what the readers make of a file. They share the order in which a record's
// lines are read, and nothing with the readers.

// A file known by its lines: which line a read asks for says all.
class CountedLines {
 public:
  CountedLines(const FileText& file, bool isGzip) : file_(file), isGzip_(isGzip) {}

  // Tests for the end as the kind does it and reads the first line of a record.
  bool startsRecord() {
    const std::size_t count = file_.lines.size();
    const bool endsWithNewline = file_.endsWithNewline || count == 0;
    const bool isOver = isGzip_ || !endsWithNewline ? next_ >= count : next_ > count;
    if (!isOver) ++next_;
    return !isOver;
  }

  void readInto(std::string& target) {
    const std::size_t count = file_.lines.size();
    const std::size_t asked = next_++;
    if (isGzip_) {
      target = file_.lines[std::min(asked, count - 1)];
      if (asked + 1 >= count && !file_.endsWithNewline) target.pop_back();
    } else if (asked < count) {
      target = file_.lines[asked];
    } else if (asked == count && (file_.endsWithNewline || count == 0)) {
      target.clear();
    }
  }

 private:
  const FileText& file_;
  bool isGzip_;
  std::size_t next_ = 0;  // line that the next read asks for
};

class StandardStream {
 public:
  explicit StandardStream(const std::string& file) : stream_(file) {}

  bool startsRecord() {
    if (stream_.eof()) return false;
    std::string header;
    std::getline(stream_, header);
    return true;
  }

  void readInto(std::string& target) { std::getline(stream_, target); }

 private:
  std::ifstream stream_;
};

class ZlibStream {
 public:
  explicit ZlibStream(const std::string& file) : file_(gzopen(file.c_str(), "r")) {}
  ~ZlibStream() { gzclose(file_); }
  ZlibStream(const ZlibStream&) = delete;
  ZlibStream& operator=(const ZlibStream&) = delete;

  bool startsRecord() { return gzgets(file_, line_, sizeof line_) != nullptr; }

  void readInto(std::string& target) {
    gzgets(file_, line_, sizeof line_);
    target = line_;
    if (!target.empty()) target.pop_back();
  }

 private:
  gzFile file_;
  char line_[1024] = {};
};

template <class Stream>
Batches batchesOf(const ReaderKind& kind, std::deque<Stream>& files, Slots slots) {
  constexpr int kKeptLine = 2;
  Batches batches;
  std::size_t n = 0;
  const auto handOver = [&] {
    using Text = std::vector<std::string>;
    const auto end = static_cast<std::ptrdiff_t>(n);
    batches.push_back({Text(slots.a.begin(), slots.a.begin() + end),
                       kind.isPaired() ? Text(slots.b.begin(), slots.b.begin() + end) : Text()});
    n = 0;
  };
  const auto startsRecord = [](Stream& file) { return file.startsRecord(); };
  while (std::all_of(files.begin(), files.end(), startsRecord)) {
    for (std::size_t file = 0; file < files.size(); ++file) {
      for (int line = kKeptLine; line <= kind.lines; ++line) {
        std::string scratch;
        const bool isKept = line == kKeptLine || line == kind.keepB;
        const bool isSecondMate = file == 1 || line == kind.keepB;
        files[file].readInto(!isKept ? scratch : isSecondMate ? slots.b[n] : slots.a[n]);
      }
    }
    ++n;
    if (n == slots.a.size()) handOver();
  }
  if (n >= 1) handOver();
  return batches;
}

}  // namespace

Batches batchesByCounting(const ReaderKind& kind, const FileText& first, const FileText& second,
                          const Slots& slots) {
  std::deque<CountedLines> files;
  files.emplace_back(first, kind.isGzip);
  if (kind.files == 2) files.emplace_back(second, kind.isGzip);
  return batchesOf(kind, files, slots);
}

Batches batchesByStandardTools(const ReaderKind& kind, const std::string& fileA,
                               const std::string& fileB, const Slots& slots) {
  const auto read = [&](auto files) {
    files.emplace_back(fileA);
    if (kind.files == 2) files.emplace_back(fileB);
    return batchesOf(kind, files, slots);
  };
  return kind.isGzip ? read(std::deque<ZlibStream>()) : read(std::deque<StandardStream>());
}

}  // namespace velk::test
