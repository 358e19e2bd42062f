// What the scout finds of a read. Wrong hints change no answer, so that only these tests tell
// whether there are right ones.
#include "placement/scout.h"

#include <gtest/gtest.h>

#include <string>

#include "kmer/fetchKmers.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

class ScoutTest : public PlacementTest {
 protected:
  ScoutTest() { assemble({{{x}, {y, 400}}}); }
  ~ScoutTest() override { sideIndex.release(); }

  RunHint runOf(const std::string& read) {
    Scout scout(*kmerHash, Kmer);
    Scout::approach(read);
    scout.look(scouted_, read);
    scout.find(scouted_, read);
    scout.compare(scouted_, read);
    return scouted_.run;
  }

  // The read, or its reverse complement, runs along contig `contig` at this offset.
  void expectRun(const std::string& read, bool isReversed, uint64_t contig, int64_t offset) {
    const RunHint run = runOf(read);
    EXPECT_EQ(run.length, read.size());
    EXPECT_EQ(run.isReversed, isReversed);
    // What the walk compares it with when it comes to the strand that does not run.
    EXPECT_EQ(run.start, startOfOther(isReversed ? read : reverseComplement(read)));
    EXPECT_EQ(run.hit.scaffold, 0U);
    EXPECT_EQ(run.hit.contig, contig);
    EXPECT_EQ(run.hit.offset, offset);
  }

  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);

 private:
  Scouted scouted_{};  // for read after read
};

TEST_F(ScoutTest, AReadAlongAContig) {
  expectRun(readAt(x, 20, 100), false, 0, 20);
  expectRun(readAt(y, 200, 31), false, 1, 200);
  expectRun(readAt(y, 250, 100), false, 1, 250);  // over its end
}

TEST_F(ScoutTest, AReadWhoseReverseComplementRunsAlongAContig) {
  expectRun(reverseComplement(readAt(x, 20, 100)), true, 0, 20);
  expectRun(reverseComplement(readAt(y, -40, 100)), true, 1, -40);
}

TEST_F(ScoutTest, ItsLastKmerWhereTheFirstIsNotThere) {
  expectRun(withMismatches(readAt(x, 20, 100), {5}), false, 0, 20);
  expectRun(readAt(y, -40, 100), false, 1, -40);
  expectRun(reverseComplement(readAt(x, 250, 100)), true, 0, 250);
}

TEST_F(ScoutTest, NothingOfOtherReads) {
  const std::string read = readAt(x, 20, 100);
  std::string odd = read;
  odd[50] = 'R';
  for (const std::string& none : {odd, randomBases(100, 73), read.substr(0, 30), std::string()}) {
    expectRun(read, false, 0, 20);
    EXPECT_EQ(runOf(none).length, 0U) << none;
  }
}

TEST_F(ScoutTest, NothingWithoutASideIndex) {
  const std::string read = readAt(x, 20, 100);
  expectRun(read, false, 0, 20);
  sideIndex.release();
  EXPECT_EQ(runOf(read).length, 0U);
}

}  // namespace
}  // namespace velk::test
