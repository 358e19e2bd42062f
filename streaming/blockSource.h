// Where decoders get a file's bytes from: its blocks, from start to end. One thread at a time.
#pragma once

#include <string_view>

namespace velk {

class BlockSource {
 public:
  virtual ~BlockSource() = default;
  BlockSource() = default;
  BlockSource(const BlockSource&) = delete;
  BlockSource& operator=(const BlockSource&) = delete;

  /// Returns the next bytes of the file, valid until the next call; none at its end or, with
  /// error() set, when they cannot be read.
  virtual std::string_view next() = 0;

  /// Returns the errno of a failed read, 0 when all went well.
  virtual int error() const = 0;
};

}  // namespace velk
