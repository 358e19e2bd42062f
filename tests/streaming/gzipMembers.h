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

/// Reads the file `content` through a GzipInput, in place or ahead.
Inflated inflateFile(const std::string& content, bool isAhead);

/// What zlib makes of the beginning `member` of a gzip member before it runs out of input.
std::string inflatedPart(const std::string& member);

/// What zlib makes of the blocks at the beginning of a gzip member that are whole; the member may
/// be damaged, or cut behind its header. The rest is no more than one block.
std::string inflatedBlocks(const std::string& member);

/// `text` as a gzip member of `size` bytes, padded in its header.
/// REQUIRES: size is large enough for the member with a one-letter name.
std::string memberOfSize(const std::string& text, std::size_t size);

/// `size` bytes that do not deflate, the same for the same seed.
std::string noise(std::size_t size, unsigned seed);

}  // namespace velk::test
