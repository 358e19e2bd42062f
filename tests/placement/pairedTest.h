// What the tests of checkForwardRead and checkReverseRead share.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "placement/Read2Scaf.h"
#include "streaming/readBuffer.h"
#include "tests/placement/placementTest.h"

namespace velk::test {

using Records = std::vector<TestRecord>;

/// Fixture with the contigs and the mate that the tests of both directions use. The scaffold under
/// test stands behind another one with one gap: its index is 1 and its gaps are numbered from 1.
class PairedTest : public PlacementTest {
 protected:
  static constexpr uint64_t kScaffold = 1;
  static constexpr uint64_t kFirstGap = 1;

  /// Makes `scaffold` the scaffold under test.
  void assembleScaffold(const TestScaffold& scaffold) {
    assemble({{{randomBases(80, 21)}, {randomBases(80, 22), 11}}, scaffold});
  }

  /// A record in the gap behind contig `contig` of the scaffold under test.
  static TestRecord inGap(uint64_t contig, int64_t gap, const std::string& read, int64_t position) {
    return {read, kScaffold, contig, position, kFirstGap + contig, static_cast<uint64_t>(gap)};
  }

  const std::string mate = randomBases(100, 23);
};

class CheckForwardRead : public PairedTest {
 protected:
  static Outcome check(const std::string& anchor, const std::string& mateRead, int insert) {
    insertLength = insert;
    return forward(anchor, mateRead);
  }
};

class CheckReverseRead : public PairedTest {
 protected:
  static Outcome check(const std::string& anchor, const std::string& mateRead, int insert) {
    insertLength = insert;
    return reverse(anchor, mateRead);
  }
};

}  // namespace velk::test
