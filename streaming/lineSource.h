// The two line sources under the readers: plain files and gzip files.
//
// They offer the same operations. Where their results differ users have always met them so, and
// must go on to. What must not be made equal:
//   - the end of a file. A plain source knows its end only once a read has met it, so a file that
//     ends with a newline starts one record more, whose sequence entry keeps what it held
//     (Readers.PlainFileEndingWithNewlineRepeatsTheSlot). A gzip source tries the first line.
//   - a last line without newline. Plain keeps it whole, gzip loses its last base, as it drops the
//     last character of every kept line unseen (Readers.GzipLastLineWithoutNewlineLosesABase).
//   - long lines. Gzip lines pass through a buffer of 1024 bytes: longer ones come in pieces
//     (Readers.LongGzipLineIsSplit).
//   - opening. A gzip file that cannot be opened here counts as damaged and gives no lines.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <string_view>

#include "streaming/blockReader.h"
#include "streaming/gzipInput.h"

namespace velk {

/// Lines of a plain text file, ended by '\n' alone.
class PlainLineSource {
 public:
  explicit PlainLineSource(const std::string& file);

  /// Opens the file. Returns false when that fails.
  bool open() { return blocks_.open(file_); }

  /// Reads the first line of a record. Returns false, reading nothing, once the end was met.
  bool startRecord();

  /// Reads a line into `entry` (inout): the line; or nothing when the file has just ended; or, when
  /// its end was met before, `entry` as it was.
  void keepLine(std::string& entry);

  /// Reads over a line.
  void skipLine();

  /// Ends the reading of the file.
  void finish() {}

 private:
  std::string_view nextPiece();

  std::string file_;
  BlockReader blocks_;
  std::string_view block_;  // bytes not yet read
  bool pieceEndsLine_ = false;
  bool atEnd_ = false;
};

/// Lines of a gzip file (or of a plain one under a gzip name), at most 1023 bytes at a time. A
/// thread of its own inflates the file ahead; with one worker it is done in place, and one
/// processor is busy.
class GzipLineSource {
 public:
  static constexpr std::size_t kLongestPiece = 1023;  // bytes

  explicit GzipLineSource(const std::string& file);

  /// Opens the file; reports damage when that fails, and any other damage as soon as it ends the
  /// lines. Returns true.
  bool open();

  /// Reads the first line of a record. Returns false when the file has none.
  bool startRecord() { return readLine(); }

  /// Reads a line into `entry` (out), less its last character. At the end of the file that is the
  /// line read before.
  void keepLine(std::string& entry);

  /// Reads over a line.
  void skipLine() { readLine(); }

  /// Reads on to the end of the file, so that damage anywhere in it is met.
  void finish();

  /// The line read last, up to its first NUL byte.
  std::string_view line() const { return line_.substr(0, line_.find('\0')); }

 private:
  bool refill();
  bool readLine();
  bool gatherLine();

  std::string file_;
  std::unique_ptr<GzipInput> input_;
  bool isAtEnd_ = false;
  std::string_view block_;  // inflated bytes not yet read
  std::string_view line_;   // the line read last, in the block or in `gathered_`
  std::array<char, kLongestPiece> gathered_{};
};

}  // namespace velk
