// What shows that a file is the one that a plan was made with, wherever it lies: its size and a
// checksum. Names, folders and times are no part of it.
#pragma once

#include <cstdint>
#include <string>

namespace velk::run {

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
