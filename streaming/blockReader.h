// A file read from start to end in large blocks, the ground under both line sources.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "streaming/decoder.h"

namespace velk {

class BlockReader final : public BlockSource {
 public:
  explicit BlockReader(std::size_t blockSize)
      : blockSize_(blockSize), block_(new char[blockSize]) {}
  ~BlockReader() override;

  /// Opens `file` for reading. Returns false, with errno set, when that fails.
  bool open(const std::string& file);

  std::string_view next() override;
  int error() const override { return error_; }

 private:
  int descriptor_ = -1;
  int error_ = 0;
  std::size_t blockSize_;  // bytes
  std::unique_ptr<char[]> block_;
};

}  // namespace velk
