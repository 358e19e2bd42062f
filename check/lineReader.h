// The lines of a file as they stand, whatever their length, plain or out of a gzip file.
#pragma once

#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

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

}  // namespace velk::check
