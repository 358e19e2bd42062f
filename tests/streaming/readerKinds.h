// The twelve readers as a table, runs of a reader, and what a reader must make of a file. A
// stand-in for the pool's one worker copies every batch.
#pragma once

#include <iosfwd>
#include <string>
#include <thread>
#include <vector>

namespace velk::test {

/// The filled entries of the read buffer at one hand-off.
struct Batch {
  std::vector<std::string> a;
  std::vector<std::string> b;  // empty in single-end mode

  bool operator==(const Batch&) const = default;
};

using Batches = std::vector<Batch>;

/// For failure messages.
std::ostream& operator<<(std::ostream& out, const Batch& batch);

/// Answers the mailbox of worker 0 in place of a real worker: keeps a copy of the batch, finds
/// nothing. No other worker may exist.
class BatchSpy {
 public:
  BatchSpy();
  ~BatchSpy();
  BatchSpy(const BatchSpy&) = delete;
  BatchSpy& operator=(const BatchSpy&) = delete;

  /// The batches so far; to be called between hand-offs.
  const Batches& batches() const { return batches_; }

 private:
  void live();

  Batches batches_;
  std::thread thread_;
};

struct ReaderKind {
  const char* name;
  void (*read)(const std::string& fileA, const std::string& fileB);
  bool isGzip;
  int files;  // 2: mate files
  int lines;  // of one record of one file
  int keepB;  // line of the second mate in an interleaved record, from 1; else 0

  bool isPaired() const { return files == 2 || keepB != 0; }
  /// Whether the last line of a record is a sequence.
  bool endsInSequence() const { return lines == 2 || keepB == lines; }
};

extern const std::vector<ReaderKind> kReaderKinds;

/// The kind named `name`.
const ReaderKind& kindOf(const std::string& name);

/// Names a kind in failure messages and, with PrintToStringParamName, in test names.
std::ostream& operator<<(std::ostream& out, const ReaderKind& kind);

/// A read file as a test makes it.
struct FileText {
  std::vector<std::string> lines;  // without newline
  bool endsWithNewline = true;

  std::string text() const;
};

/// `count` records of the kind for its file `file` (0 or 1), numbered from 0: first mates read
/// "a0", "a1", ..., second mates "b0", "b1", ... All other lines begin with '>', '@', '+' or '~'.
FileText numberedReads(const ReaderKind& kind, int file, int count);

/// What the read buffer holds before a file is read, and by its size the length of a batch.
struct Slots {
  std::vector<std::string> a;
  std::vector<std::string> b;
};

/// `count` slots that hold nothing, as at the start of every file.
Slots emptySlots(std::size_t count);

/// `count` slots that hold "oldA0", ... and "oldB0", ..., to distinguish a kept slot from an
/// emptied one.
Slots oldSlots(std::size_t count);

struct ReaderRun {
  Batches batches;       // as they reached the worker
  std::string messages;  // on standard error
  int bufferNum;         // after the run
};

/// Runs the reader on files of the working folder.
ReaderRun runReader(const ReaderKind& kind, const std::string& fileA, const std::string& fileB,
                    Slots slots);

/// Writes the texts (the second one only for mate files) as the kind's files, runs the reader on
/// them and compares the batches with `expected`, the messages and bufferNum with what belongs to
/// these batches.
void expectBatches(const ReaderKind& kind, const FileText& first, const FileText& second,
                   const Slots& slots, const Batches& expected);

/// The batches that the kind makes of the two texts, by counting lines: what a read finds depends
/// only on whether its line exists, is the first one missing, or lies beyond that.
Batches batchesByCounting(const ReaderKind& kind, const FileText& first, const FileText& second,
                          const Slots& slots);

/// The batches that the kind makes of two files read with the tools that define a line:
/// std::getline on std::ifstream, or gzgets on a 1024-byte buffer.
Batches batchesByStandardTools(const ReaderKind& kind, const std::string& fileA,
                               const std::string& fileB, const Slots& slots);

/// The messages of a reader that hands over `batches`.
std::string messagesOf(const ReaderKind& kind, const Batches& batches);

}  // namespace velk::test
