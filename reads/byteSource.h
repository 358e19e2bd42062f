// The bytes of a file, inflated if it is compressed: plain, gzip, bgzip, zstd, xz or bzip2, found
// from its first bytes. Opened once and read from start to end, so it may be a pipe.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "reads/recordSource.h"

namespace velk::reads {

class ByteSource {
 public:
  virtual ~ByteSource() = default;
  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  /// Returns the next bytes, valid until the next call; none at the end. Throws InputError where
  /// the file cannot be read or is damaged, behind all bytes in front of the damage.
  virtual std::string_view next() = 0;

  /// Bytes of the file that have been read, as they are stored.
  virtual uint64_t bytesRead() const = 0;
};

/// Opens `file`; throws InputError when that fails.
std::unique_ptr<ByteSource> openBytes(const std::string& file, Helpers helpers);

}  // namespace velk::reads
