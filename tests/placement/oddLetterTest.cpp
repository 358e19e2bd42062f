// Letters of reads that are no bases, and what the reads' reverse complements make of them.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

using OddLetter = PlacementTest;

// The read's R reads as A, and leaves the C in front of it as it is. Its reverse complement runs
// along the first contig with an A there, which says nothing of the read's own k-mers.
TEST_F(OddLetter, AnotherLetterOfTheReadIsNoBaseOfItsReverseComplement) {
  std::string bases = randomBases(61, 77);
  bases[29] = 'C';
  const auto with = [&](char letter) {
    std::string read = bases;
    read[30] = letter;
    return read;
  };
  const std::string along =
      randomBases(100, 5) + reverseComplement(with('T')) + randomBases(100, 6);
  assemble({{{along}}, {{randomBases(200, 7)}, {with('A').substr(10) + randomBases(200, 8), 300}}});
  const std::vector<TestRecord> expected = {{with('R'), 1, 0, 290, 0, 300}};
  const Outcome outcome = single(with('R'));
  EXPECT_EQ(outcome.stop, 10);
  EXPECT_EQ(outcome.records, expected);
  setBatch({with('R')});
  EXPECT_EQ(scan(0), expected);
}

}  // namespace
}  // namespace velk::test
