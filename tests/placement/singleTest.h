// The assembly that the tests of checkSingleRead share.
#pragma once

#include <string>
#include <vector>

#include "tests/placement/placementTest.h"

namespace velk::test {

using Records = std::vector<TestRecord>;

/// Two scaffolds, a 400 b 50 c and d 7 e (contigs and the lengths of gaps 0, 1 and 2).
class CheckSingleRead : public PlacementTest {
 protected:
  CheckSingleRead() { assembleContigs(); }

  void assembleContigs() { assemble({{{a}, {b, 400}, {c, 50}}, {{d}, {e, 7}}}); }

  const std::string a = randomBases(100, 1);
  const std::string b = randomBases(300, 2);
  const std::string c = randomBases(200, 3);
  const std::string d = randomBases(150, 4);
  const std::string e = randomBases(150, 5);
};

}  // namespace velk::test
