// Gzip files built and taken apart byte by byte, and the ways to read one, of which each test of a
// fixture is made in every one: by each library that inflates, in place and ahead.
#pragma once

#include <string>
#include <vector>

#include "streaming/inflater.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {

/// The bytes that GzipInput hands out of a file, and what it says is wrong with the file.
struct Inflated {
  std::string bytes;
  std::string damage;

  bool operator==(const Inflated&) const = default;
};

/// Reads the file `content` through a GzipInput, ahead with so many threads, or with none in place.
Inflated inflateFile(const std::string& content, int threads);

/// `text` as a BGZF member. REQUIRES: it is no longer than 65,536 bytes when packed.
std::string bgzfMember(const std::string& text);

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

struct GzipWay {
  InflateLibrary library;
  bool isAhead;
};

/// All ways of this build.
std::vector<GzipWay> gzipWays();

/// Prints a name like "IsalAhead".
void PrintTo(const GzipWay& way, std::ostream* out);

/// Fixture in which gzip files are read in the way of its parameter, by the line sources too.
class GzipWayTest : public StreamingTest, public ::testing::WithParamInterface<GzipWay> {
 protected:
  GzipWayTest();
  ~GzipWayTest() override;

  /// Reads the file `content` through a GzipInput.
  static Inflated inflateFile(const std::string& content);

  static bool isZlib() { return GetParam().library == InflateLibrary::kZlib; }

 private:
  InflateLibrary usualLibrary_ = inflateLibrary;
};

/// INSTANTIATE_GZIP_WAYS(FIXTURE): makes the tests of a GzipWayTest in all ways.
#define INSTANTIATE_GZIP_WAYS(fixture)                                                  \
  INSTANTIATE_TEST_SUITE_P(All, fixture, ::testing::ValuesIn(::velk::test::gzipWays()), \
                           ::testing::PrintToStringParamName())

}  // namespace velk::test
