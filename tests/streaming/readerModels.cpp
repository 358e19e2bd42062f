// Two plain tellings of what the readers make of a file. They share the order in which a record's
// lines are read, and nothing with the readers.
#include <zlib.h>

#include <algorithm>
#include <deque>
#include <fstream>

#include "tests/streaming/readerKinds.h"

namespace velk::test {
namespace {

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
