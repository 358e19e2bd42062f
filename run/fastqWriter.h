// pairs.fq.gz and singles.fq.gz: the reads of the gaps as they were sequenced, and where in them
// each gap's begin; and the compressed text that they are. Any thread encodes; one thread then
// writes what was encoded, ordered by gap. The bytes do not depend on the number of threads.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "run/found.h"
#include "run/nameClashes.h"

namespace velk::run {

/// A text file, compressed block by block (bgzip), with an index of its blocks beside it, so that
/// it can be read from any byte. One thread calls.
class BgzipWriter {
 public:
  /// Makes the file. `blocksFile`: its index, made by close(). Throws Failure. `helpers`: threads
  /// that compress.
  BgzipWriter(const std::string& file, const std::string& blocksFile, int helpers);
  ~BgzipWriter();
  BgzipWriter(const BgzipWriter&) = delete;
  BgzipWriter& operator=(const BgzipWriter&) = delete;

  /// Throws Failure.
  void write(std::string_view text);

  /// Bytes of text so far.
  uint64_t bytes() const { return bytes_; }

  /// Ends the file and writes its index. Throws Failure.
  void close();

 private:
  struct Handle;

  [[noreturn]] void fail(const std::string& file) const;

  std::string file_;
  std::string blocksFile_;
  uint64_t bytes_ = 0;
  std::unique_ptr<Handle> handle_;
};

/// Which reads of an entry are written for a gap: both, or one of them.
enum class Written : uint8_t { kFirst, kSecond, kBoth };

/// The quality of every base of reads that have none: Phred 33, as samtools gives it.
constexpr char kUnknownQuality = 'B';

/// What FastqWriter::write() takes.
std::string encodeFastq(const FoundEntry& entry, Written written);

/// Where the text of a gap begins in both files, bytes of text.
struct TextPlace {
  uint64_t pairs;
  uint64_t singles;
};

class FastqWriter {
 public:
  /// Throws Failure. `gaps`: how many there are.
  FastqWriter(BgzipWriter& pairs, BgzipWriter& singles, const NameClashes& clashes, uint64_t gaps)
      : pairs_(pairs), singles_(singles), clashes_(clashes), gaps_(gaps) {}

  /// Writes the reads of an entry for a gap. REQUIRES: gaps in ascending order. Throws Failure.
  void write(uint64_t gap, std::string_view encoded);

  /// To be called after the last: where each gap begins, and at last the ends.
  std::vector<TextPlace> finish();

 private:
  void beginGapsTo(uint64_t gap);

  BgzipWriter& pairs_;
  BgzipWriter& singles_;
  const NameClashes& clashes_;
  uint64_t gaps_;
  std::vector<TextPlace> places_;
};

}  // namespace velk::run
