// The ways to read a gzip file, of which each test of a fixture is made in every one: by each
// library that inflates, in place and ahead.
#pragma once

#include <string>
#include <vector>

#include "streaming/inflater.h"
#include "tests/streaming/gzipMembers.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {

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
