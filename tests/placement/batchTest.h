// What the tests of FindReads share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "streaming/readBuffer.h"
#include "tests/placement/placementTest.h"

namespace velk::test {

using Records = std::vector<TestRecord>;

/// Fixture over one scaffold x 400 y, contigs of 300 bases. At an insert of 500:
/// an anchor on x at offset 50 puts a mate downstream at 150, and one on y at offset 150 puts a
/// mate upstream at 150. No forward try anchors on y and no reverse try on x.
class FindReadsTest : public PlacementTest {
 protected:
  FindReadsTest() {
    assemble({{{x}, {y, 400}}});
    insertLength = 500;
  }

  /// A record in the gap.
  static TestRecord inGap(const std::string& read, int64_t position) {
    return {read, 0, 0, position, 0, 400};
  }

  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);
  const std::string onX = readAt(x, 50, 100);  // as an anchor on the contigs' strand
  const std::string onY = readAt(y, 150, 100);
  const std::string stray = randomBases(100, 73);  // a read from elsewhere
};

}  // namespace velk::test
