// The interface of what unpacks a file into its bytes. One thread at a time.
#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace velk {

class Decoder {
 public:
  virtual ~Decoder() = default;
  Decoder() = default;
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  /// Puts the next bytes into `room` and returns their number, which is smaller than the room only
  /// when the bytes have ended. Throws std::bad_alloc when there is no memory. REQUIRES: the room
  /// is not empty.
  virtual std::size_t read(std::span<char> room) = 0;

  /// Returns what is wrong with the file, empty as long as nothing was met.
  virtual const std::string& damage() const = 0;
};

}  // namespace velk
