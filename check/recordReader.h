// Read files record by record, as velk cuts them: two lines of FASTA, four of FASTQ; and the lines
// of any file as they stand, whatever their length, plain or out of a gzip file.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "check/finding.h"
#include "streaming/gzipInput.h"

namespace velk::check {

class LineReader {
 public:
  /// Opens `file`, as gzip when `isGzip`. Reading an unopened file gives no lines.
  LineReader(const std::string& file, bool isGzip);

  /// Reads the next line, without its '\n', into `line` (out). Returns false at the end.
  bool next(std::string& line);

  /// Whether the line read last ended with a '\n'.
  bool hadNewline() const { return hadNewline_; }

  /// Moves a plain file to the first line that begins behind `offset`.
  void seekBehind(uint64_t offset);

  /// What is wrong with a gzip file, as far as it was read; empty when all is well.
  const std::string& damage() const { return gzip_.damage(); }

  /// Bytes (inflated ones) of the lines read so far.
  uint64_t bytes() const { return bytes_; }

 private:
  bool refill();

  bool isGzip_;
  GzipInput gzip_;
  std::ifstream plain_;
  std::vector<char> buffer_;
  std::string_view block_;  // bytes not yet read
  bool hadNewline_ = true;
  uint64_t bytes_ = 0;
};

struct Record {
  std::string header;
  std::string bases;
};

/// A place where the records of a file are not what velk takes them for.
struct Fault {
  Id id;
  uint64_t record;  // from 1; 0 when its number is not known
  std::string text;
};

class RecordReader {
 public:
  /// Opens `file`; the first character of its first line says which format it is. `isGzip` says how
  /// velk reads it.
  RecordReader(const std::string& file, bool isGzip);

  /// The first character of the file, NUL of an empty one.
  char letter() const { return letter_; }

  /// Reads the next record (out). Returns false at the end of the file and at a fault.
  bool next(Record& record);

  /// What is wrong with the records, from where on none are read.
  const std::optional<Fault>& fault() const { return fault_; }

  /// The first line too long for velk, if velk reads the file as gzip.
  const std::optional<Fault>& longLine() const { return longLine_; }

  /// Records read so far.
  uint64_t records() const { return records_; }

  /// Whether the file was read to its end.
  bool ended() const { return ended_; }

  /// Whether it did so without a newline.
  bool lacksNewline() const { return ended_ && !lines_.hadNewline(); }

  const LineReader& lines() const { return lines_; }

  /// Reads the rest of the file, for the sake of its damage.
  void drain();

  /// Moves a plain file to the first record behind `offset`. Returns false when there is none;
  /// where there must be one, that is a fault.
  bool seekBehind(uint64_t offset);

 private:
  bool nextLine(std::string& line);
  bool nextFasta(Record& record);
  bool nextFastq(Record& record);
  bool onlyBlankLinesLeft();
  void fail(Id id, const std::string& text);

  LineReader lines_;
  bool isGzip_;
  char letter_ = '\0';
  std::string pending_;  // the line read ahead
  bool hasPending_ = false;
  uint64_t records_ = 0;
  uint64_t offset_ = 0;  // where it was moved to last, bytes
  bool ended_ = false;
  std::string plus_;
  std::string qualities_;
  std::optional<Fault> fault_;
  std::optional<Fault> longLine_;
};

}  // namespace velk::check
