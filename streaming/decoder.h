// The interfaces of what unpacks a file into its bytes, and of where it gets the file's blocks
// from. One thread at a time.
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace velk {

/// The blocks of a file, from start to end.
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

/// The bytes of a file, unpacked.
class Decoder {
 public:
  virtual ~Decoder() = default;
  Decoder() = default;
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  /// Puts the next bytes into `room` and returns their number, 0 when they have ended. Throws
  /// std::bad_alloc when there is no memory. REQUIRES: the room is not empty.
  virtual std::size_t read(std::span<char> room) = 0;

  /// Returns what is wrong with the file, empty as long as nothing was met.
  virtual const std::string& damage() const = 0;
};

}  // namespace velk
