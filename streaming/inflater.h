// The face of the libraries that inflate: one deflate stream after another, piece by piece.
//
// zlib is always there; ISA-L, which is faster, where the build has found it (VELK_ISAL). What
// stands around the streams in a gzip file is read by streaming/gzipDecoder.h for both. On sound
// streams they do the same. Of a damaged one both hand out all that stands before the damaged
// block; behind its beginning they may stop at different places. Format: RFC 1951.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

namespace velk {

class Inflater {
 public:
  enum class State { kGoesOn, kEnded, kDamaged };

  struct Step {
    State state;
    std::size_t made;  // bytes put into the room
    // Bytes at the end of the input that are not of the stream, or not yet read; without a meaning
    // once it is damaged.
    std::size_t unused;
  };

  /// How far `unused` may reach back behind the beginning of an input, when the stream has ended.
  static constexpr std::size_t kReachBack = 8;  // bytes

  /// How far behind the end of an input there must be memory to look at, whatever it holds.
  static constexpr std::size_t kReachOn = 64;  // bytes

  Inflater() = default;
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;
  virtual ~Inflater() = default;

  /// Begins a new stream.
  virtual void start() = 0;

  /// Inflates until the input is used up, the room is full or the stream ends. Throws
  /// std::bad_alloc when there is no memory.
  virtual Step inflate(std::string_view input, std::span<char> room) = 0;

  /// Returns the CRC-32 of all bytes made since start().
  virtual uint32_t checksum() const = 0;
};

enum class InflateLibrary { kZlib, kIsal };

/// The library that inflates: the fastest that is built in; only tests choose another.
extern InflateLibrary inflateLibrary;

/// Returns the libraries that are built in.
std::vector<InflateLibrary> inflateLibraries();

/// Returns an inflater of inflateLibrary; throws std::bad_alloc when there is no memory.
std::unique_ptr<Inflater> makeInflater();

}  // namespace velk
