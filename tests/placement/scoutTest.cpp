// What the scout finds of a read. What it does not find changes no answer, so that only these tests
// tell whether it finds anything.
#include "placement/scout.h"

#include <gtest/gtest.h>

#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include "kmer/Sequence.h"
#include "kmer/fetchKmers.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

class ScoutTest : public PlacementTest, public testing::WithParamInterface<int> {
 protected:
  ScoutTest() {
    Kmer = GetParam();
    assemble({{{x}, {y, 400}}});
  }
  ~ScoutTest() override { sideIndex.release(); }

  const Scouted& scouted(const std::string& read) {
    Scout scout(*kmerHash, Kmer);
    Scout::approach(read);
    scout.look(scouted_, read);
    scout.ask(scouted_, read);
    scout.find(scouted_, read);
    scout.findAgain(scouted_, read);
    scout.compare(scouted_, read);
    return scouted_;
  }

  using Stretches = std::vector<std::pair<std::size_t, std::size_t>>;

  // The read, or its reverse complement, runs along contig `contig` at this offset, its bases in
  // these stretches those of the contig, and none beyond them as far as k-mers go.
  void expectRun(const std::string& read, bool isReversed, uint64_t contig, int64_t offset,
                 const Stretches& stretches) {
    const Scouted& known = scouted(read);
    ASSERT_TRUE(known.hasRun);
    EXPECT_EQ(known.run.isReversed, isReversed);
    EXPECT_EQ(known.run.hit.scaffold, 0U);
    EXPECT_EQ(known.run.hit.contig, contig);
    EXPECT_EQ(known.run.hit.offset, offset);
    Stretches found;
    known.run.forEachStretch(read.size(), kmer_, [&](std::size_t from, std::size_t to) {
      found.emplace_back(from, to + kmer_ - 1);
    });
    EXPECT_EQ(found, stretches);
    const Entity first{keyOf(read.substr(0, kmer_)), 0, 0, 0, 0};
    EXPECT_EQ(known.firstSlot, get_hashset(kmerHash, first));
  }

  static uint64_t keyOf(const std::string& bases) {
    uint64_t key = 0;
    Seq2Kmer(key, bases);
    return key;
  }

  const std::size_t kmer_ = static_cast<std::size_t>(GetParam());
  const std::string x = randomBases(300, 71);
  const std::string y = randomBases(300, 72);

 private:
  Scouting scouted_;  // for read after read
};

TEST_P(ScoutTest, AReadAlongAContig) {
  expectRun(readAt(x, 20, 100), false, 0, 20, {{0, 100}});
  expectRun(readAt(y, 200, Kmer), false, 1, 200, {{0, kmer_}});
  expectRun(readAt(y, 250, 100), false, 1, 250, {{0, 50}});  // over its end
}

TEST_P(ScoutTest, AReadWhoseReverseComplementRunsAlongAContig) {
  expectRun(reverseComplement(readAt(x, 20, 100)), true, 0, 20, {{0, 100}});
  expectRun(reverseComplement(readAt(y, -40, 100)), true, 1, -40, {{40, 100}});
}

TEST_P(ScoutTest, AnotherKmerWhereTheFirstIsNotThere) {
  expectRun(withMismatches(readAt(x, 20, 100), {5}), false, 0, 20, {{6, 100}});
  expectRun(readAt(y, -40, 100), false, 1, -40, {{40, 100}});
  expectRun(reverseComplement(readAt(x, 250, 100)), true, 0, 250, {{0, 50}});
  expectRun(withMismatches(readAt(x, 20, 100), {5, 90}), false, 0, 20, {{6, 90}});
  expectRun(reverseComplement(withMismatches(readAt(x, 20, 100), {5, 90})), true, 0, 20, {{6, 90}});
}

TEST_P(ScoutTest, WhereItDiffers) {
  expectRun(withMismatches(readAt(x, 20, 150), {31, 40, 90}), false, 0, 20,
            {{0, 31}, {41, 90}, {91, 150}});
  std::vector<std::size_t> places(Run::kMostDifferences);
  std::iota(places.begin(), places.end(), 40);
  expectRun(withMismatches(readAt(x, 20, 150), places), false, 0, 20, {{0, 40}, {52, 150}});
  places.push_back(60);
  EXPECT_FALSE(scouted(withMismatches(readAt(x, 20, 150), places)).hasRun);
}

TEST_P(ScoutTest, AWindowIsTheContigsOrSpoiled) {
  const std::string inside = readAt(x, 20, 150);
  for (const std::string& read :
       {inside, withMismatches(inside, {31, 40, 90}), withMismatches(inside, {2, 3, 148}),
        withMismatches(readAt(y, 200, 150), {60, 95}),
        withMismatches(readAt(y, -60, 150), {62, 115}), readAt(y, -60, 420),
        withMismatches(inside, {40, 41, 42, 43, 44, 45, 46, 47, 48, 49, 50, 51}),
        reverseComplement(withMismatches(readAt(y, 220, 150), {50}))}) {
    const Scouted& known = scouted(read);
    ASSERT_TRUE(known.hasRun) << read;
    const std::size_t windows = read.size() - kmer_ + 1;
    std::vector<int> isContigs(windows);
    std::vector<int> isSpoiled(windows);
    const auto mark = [](std::vector<int>& marks) {
      return [&](std::size_t from, std::size_t to) {
        ASSERT_LT(from, to);
        for (std::size_t w = from; w < to; ++w) marks.at(w) = 1;
      };
    };
    known.run.forEachStretch(read.size(), kmer_, mark(isContigs));
    known.run.forEachSpoiled(read.size(), kmer_, mark(isSpoiled));
    for (std::size_t w = 0; w < windows; ++w)
      EXPECT_EQ(isContigs[w] + isSpoiled[w], 1) << read << w;
  }
}

TEST_P(ScoutTest, NothingOfOtherReads) {
  const std::string read = readAt(x, 20, 100);
  std::string odd = read;
  odd[50] = 'R';
  for (const std::string& none :
       {odd, randomBases(100, 73), read.substr(0, kmer_ - 1), std::string()}) {
    expectRun(read, false, 0, 20, {{0, 100}});
    EXPECT_FALSE(scouted(none).hasRun) << none;
  }
}

TEST_P(ScoutTest, NothingWithoutASideIndex) {
  const std::string read = readAt(x, 20, 100);
  expectRun(read, false, 0, 20, {{0, 100}});
  sideIndex.release();
  EXPECT_FALSE(scouted(read).hasRun);
  EXPECT_FALSE(scouted(read).hasBasesAlone);
}

TEST_P(ScoutTest, TheReverseComplementIsMadeOnce) {
  Scouted known;
  EXPECT_EQ(turnedBases(known, "ACCn"), "AGGT");
  EXPECT_EQ(turnedBases(known, "TTTT"), "AGGT");
}

INSTANTIATE_TEST_SUITE_P(KmerLengths, ScoutTest, testing::Values(16, 19, 24, 31));

}  // namespace
}  // namespace velk::test
