// A file read from start to end in large blocks, the ground under both line sources.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace velk {

class BlockReader {
 public:
  explicit BlockReader(std::size_t blockSize)
      : blockSize_(blockSize), block_(std::make_unique_for_overwrite<char[]>(blockSize)) {}
  ~BlockReader();
  BlockReader(const BlockReader&) = delete;
  BlockReader& operator=(const BlockReader&) = delete;

  /// Opens `file` for reading. Returns false, with errno set, when that fails.
  bool open(const std::string& file);

  /// Returns the next bytes of the file, valid until the next call; none at its end or, with
  /// error() set, when they cannot be read.
  std::string_view next();

  /// Returns the errno of a failed read, 0 when all went well.
  int error() const { return error_; }

 private:
  int descriptor_ = -1;
  int error_ = 0;
  std::size_t blockSize_;  // bytes
  std::unique_ptr<char[]> block_;
};

}  // namespace velk
