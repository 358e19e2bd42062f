// A read much longer than any contig. Were all that is left of it gone through for each of its
// k-mers, the test would meet its time limit.
#include <gtest/gtest.h>

#include <string>

#include "placement/Read2Scaf.h"
#include "tests/placement/singleTest.h"

namespace velk::test {
namespace {

// The n has every k-mer looked up, as no filter is asked about such a read.
TEST_F(CheckSingleRead, AVeryLongReadComesToItsEnd) {
  std::string read = randomBases(std::size_t{1} << 23, 6);
  read[read.size() / 2] = 'n';
  int64_t stop = 0;
  uint32_t n = 0;
  checkSingleRead(stop, read, n, 0);
  EXPECT_EQ(stop, static_cast<int64_t>(read.size()) - Kmer + 1);
  EXPECT_EQ(n, 0U);
}

}  // namespace
}  // namespace velk::test
