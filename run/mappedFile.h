// A file that is read where it lies in memory, which all processes share. One object at a time.
//
// While it lives, a part of the file that can't be read when it is wanted, as somebody has cut the
// file or its disk fails, ends the process with status 1 after a message, and without its
// unfinished files (run/signalCleanup.h).
#pragma once

#include <cstdint>
#include <string>

namespace velk::run {

class MappedFile {
 public:
  /// Maps all of a regular file. Throws Failure.
  explicit MappedFile(const std::string& file);
  ~MappedFile();
  MappedFile(const MappedFile&) = delete;
  MappedFile& operator=(const MappedFile&) = delete;

  uint64_t bytes() const { return bytes_; }

  /// To be read only. Null where the file is empty.
  char* memory() const { return memory_; }

 private:
  char* memory_ = nullptr;
  uint64_t bytes_ = 0;
};

}  // namespace velk::run
