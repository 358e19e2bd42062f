// A file that is read where it lies in memory, which all processes share.
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
