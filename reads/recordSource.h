// Where reads come from: the records of one file, one after the other, whatever it is.
//
// openRecords() looks at the first bytes of the file and makes a source for them: FASTQ or FASTA
// with lines of any width, plain, gzip, bgzip, zstd, xz or bzip2; or BAM, unaligned or grouped by
// name. The file is opened once and read from its start to its end, so it may be a pipe. One thread
// at a time uses a source; it may have a helper thread that inflates ahead.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velk::reads {

/// A record. The texts belong to the one that handed it out, who says how long they stay.
struct RecordView {
  std::string_view name;     // up to the first blank; of pairs, without "/1", "/2", ".1" or ".2"
  std::string_view bases;    // in upper case, without line ends
  std::string_view quality;  // as many characters as bases, Phred+33; empty where there is none
};

/// What the records of one file needed before they could be used: numbers of records.
struct Fixes {
  uint64_t carriageReturns = 0;
  uint64_t lowerCase = 0;
  uint64_t wrapped = 0;  // sequence on several lines

  Fixes& operator+=(const Fixes& other) {
    carriageReturns += other.carriageReturns;
    lowerCase += other.lowerCase;
    wrapped += other.wrapped;
    return *this;
  }
};

/// An input that cannot be read on, or is not what it should be. what() is the whole message,
/// without "[ERROR]: ", and names the file and, where it has one, the record.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
  InputError(const std::string& file, uint64_t record, const std::string& text)
      : std::runtime_error(file + (record == 0 ? "" : ", record " + std::to_string(record)) + ": " +
                           text) {}
};

class StoredFile;

class RecordSource {
 public:
  virtual ~RecordSource() = default;
  RecordSource() = default;
  RecordSource(const RecordSource&) = delete;
  RecordSource& operator=(const RecordSource&) = delete;

  /// Reads the next record (out); its texts stay valid until the next call. Returns false at the
  /// end of the file. Throws InputError where the file cannot be read, is damaged, or holds what is
  /// no record.
  virtual bool next(RecordView& record) = 0;

  /// What was fixed in the records that next() has returned.
  virtual Fixes fixes() const = 0;

  /// Bytes of the file that have been read, as they are stored. May be asked by any thread.
  virtual uint64_t bytesRead() const = 0;

  /// Bytes that the file has; 0 where that is not known, as of a pipe.
  virtual uint64_t bytes() const = 0;

  /// What is added where mates do not follow each other in a file of both: how that is fixed.
  virtual std::string_view mateAdvice() const { return ""; }
};

/// What openRecords() may use besides the calling thread: threads that inflate ahead, of a BGZF
/// file of text up to two.
enum class Helpers { kNone, kInflateAhead, kInflateByTwo };

/// Returns the helpers of each file of a run with so many threads.
Helpers helpersFor(int threads);

/// Opens `file`. Throws InputError when that fails, or when its first bytes are of a known kind
/// that cannot be used; whether they are records shows at the first next(). An empty file is one
/// without records.
std::unique_ptr<RecordSource> openRecords(const std::string& file, Helpers helpers);

/// The same of a file that is open and was not read.
std::unique_ptr<RecordSource> openRecords(std::unique_ptr<StoredFile> file, Helpers helpers);

}  // namespace velk::reads
