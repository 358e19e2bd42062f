// Gzip files built and taken apart byte by byte.
#pragma once

#include <string>

namespace velk::test {

/// The bytes that GzipInput hands out of a file, and what it says is wrong with the file.
struct Inflated {
  std::string bytes;
  std::string damage;

  bool operator==(const Inflated&) const = default;
};

/// Reads the file `content` through a GzipInput.
Inflated inflateFile(const std::string& content);

/// What zlib makes of the beginning `member` of a gzip member before it runs out of input.
std::string inflatedPart(const std::string& member);

/// `text` as a gzip member of `size` bytes, padded in its header.
/// REQUIRES: size is large enough for the member with a one-letter name.
std::string memberOfSize(const std::string& text, std::size_t size);

/// `size` bytes that do not deflate, the same for the same seed.
std::string noise(std::size_t size, unsigned seed);

}  // namespace velk::test
