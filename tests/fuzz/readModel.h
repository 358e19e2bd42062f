// What a reader should make of the bytes of its files, in plain code: the bytes that a gzip file
// stands for, the lines of both kinds of file, the records.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace velk::fuzz {

/// The filled entries of the read buffer at one hand-off.
struct ReadBatch {
  std::vector<std::string> a;
  std::vector<std::string> b;  // empty in single-end mode

  bool operator==(const ReadBatch&) const = default;
};

using ReadBatches = std::vector<ReadBatch>;

/// How a kind of file is read.
struct ReadShape {
  bool isGzip;
  int files;       // 2: mate files
  int lines;       // of a record
  int secondMate;  // its line in an interleaved record, from 1; else 0

  bool isPaired() const { return files == 2 || secondMate != 0; }
};

/// The bytes of a gzip file as far as they can be had, and whether it is damaged.
struct Inflated {
  std::string bytes;
  bool isDamaged;
};

/// What the file of these bytes stands for; a file without gzip's mark stands for itself.
Inflated inflated(std::string_view file);

/// The batches of `limit` records that a reader makes of `first` and, for mate files, `second`:
/// the bytes that the files stand for.
ReadBatches batchesOf(const ReadShape& shape, std::string_view first, std::string_view second,
                      std::size_t limit);

/// `text` as gzip members of at most `memberSize` bytes (above 0 and below 65536), not compressed.
std::string storedAsGzip(std::string_view text, std::size_t memberSize);

}  // namespace velk::fuzz
