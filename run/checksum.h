// MD5 sums, part by part; and what shows that a file is the one that a plan was made with, wherever
// it lies: its size and a checksum. Names, folders and times are no part of it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct hts_md5_context;

namespace velk::run {

class Md5 {
 public:
  /// Throws std::bad_alloc.
  Md5();
  ~Md5();
  Md5(const Md5&) = delete;
  Md5& operator=(const Md5&) = delete;

  void add(std::string_view bytes);

  /// The sum of all that was added, in hexadecimal digits. Once, at the end.
  std::string sum();

 private:
  hts_md5_context* context_;
};

/// The sum of a text.
std::string md5OfText(std::string_view text);

/// What of a file is summed.
enum class Summed : uint8_t {
  kAll,   // of files that are read whole by each task
  kEnds,  // the first and the last 2^20 bytes
};

struct FileIdentity {
  uint64_t bytes = 0;
  std::string md5;

  bool operator==(const FileIdentity&) const = default;
};

/// Throws Failure where the file can't be read, or is no regular file.
FileIdentity identityOf(const std::string& file, Summed summed);

/// Throws Failure saying what differs, unless the file is the one of the plan.
void requireIdentity(const std::string& file, Summed summed, const FileIdentity& planned);

}  // namespace velk::run
