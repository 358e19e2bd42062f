// FindReads: the worker's share, the reads that are skipped, strands and large inserts.
#include <limits>

#include "placement/Read2Scaf.h"
#include "tests/placement/batchTest.h"

namespace velk::test {
namespace {

class FindReads : public FindReadsTest {
 protected:
  // Reads over the right end of x, distinguished by how many bases they overlap: 40, 41, ...
  std::vector<std::string> overRightEnd(int64_t count) const {
    std::vector<std::string> reads;
    for (int64_t j = 0; j < count; ++j) reads.push_back(readAt(x, 260 - j, 100));
    return reads;
  }

  // The record of entry j of these.
  TestRecord ofEntry(std::size_t j) const {
    return inGap(firstReads()[j], -40 - static_cast<int64_t>(j));
  }
};

// ---- the share ----------------------------------------------------------------------------------

TEST_F(FindReads, SevenReadsAreSharedByThreeWorkersInTurns) {
  setWorkers(3);
  setBatch(overRightEnd(7));
  EXPECT_EQ((Records{ofEntry(0), ofEntry(3), ofEntry(6)}), scan(0));
  EXPECT_EQ((Records{ofEntry(1), ofEntry(4)}), scan(1));
  EXPECT_EQ((Records{ofEntry(2), ofEntry(5)}), scan(2));
}

TEST_F(FindReads, SevenPairsAreSharedByThreeWorkersInTurns) {
  setWorkers(3);
  std::vector<std::string> mates;
  for (unsigned j = 0; j < 7; ++j) mates.push_back(randomBases(100, 80 + j));
  setBatch(std::vector<std::string>(7, onX), mates);
  const auto mateOf = [&](std::size_t j) { return inGap(reverseComplement(mates[j]), 150); };
  EXPECT_EQ((Records{mateOf(0), mateOf(3), mateOf(6)}), scan(0));
  EXPECT_EQ((Records{mateOf(1), mateOf(4)}), scan(1));
  EXPECT_EQ((Records{mateOf(2), mateOf(5)}), scan(2));
}

TEST_F(FindReads, WorkersBeyondTheBatchStoreZero) {
  setWorkers(5);
  setBatch(overRightEnd(2));
  for (int t = 0; t < 5; ++t) foundReadNum[t] = 99;
  EXPECT_EQ(Records{ofEntry(0)}, scan(0));
  EXPECT_EQ(Records{ofEntry(1)}, scan(1));
  for (int t = 2; t < 5; ++t) {
    velk::FindReads(t);
    EXPECT_EQ(0U, foundReadNum[t]) << t;
  }
}

TEST_F(FindReads, EntriesBehindTheBatchAreStale) {
  setBatch(overRightEnd(4));
  bufferNum = 2;
  EXPECT_EQ((Records{ofEntry(0), ofEntry(1)}), scan(0));
  bufferNum = 0;
  EXPECT_EQ(Records{}, scan(0));
}

TEST_F(FindReads, EveryBatchStartsAtTheRowsFirstSlot) {
  setBatch(overRightEnd(3));
  EXPECT_EQ(3U, scan(0).size());
  setBatch({stray, readAt(y, -50, 100)});
  EXPECT_EQ((Records{inGap(readAt(y, -50, 100), 350)}), scan(0));
  setBatch({stray});
  EXPECT_EQ(Records{}, scan(0));
}

// ---- single reads -------------------------------------------------------------------------------

TEST_F(FindReads, ReadsWithUpperCaseNAreSkipped) {
  for (const std::size_t at : {0U, 30U, 99U}) {
    std::string read = readAt(x, 250, 100);
    setBatch({read});
    EXPECT_EQ((Records{inGap(read, -50)}), scan(0));
    read[at] = 'N';
    setBatch({read});
    EXPECT_EQ(Records{}, scan(0)) << at;
  }
}

// One n in the overhang, one among the 50 bases that are compared.
TEST_F(FindReads, ReadsWithLowerCaseNAreNotSkipped) {
  std::string read = readAt(x, 250, 100);
  read[49] = read[99] = 'n';
  setBatch({read});
  EXPECT_EQ((Records{inGap(read, -50)}), scan(0));
}

TEST_F(FindReads, ReadsShorterThanAKmerAreSkipped) {
  for (int64_t length = 0; length < 31; ++length) {
    setBatch({readAt(x, 300 - length, length)});
    EXPECT_EQ(Records{}, scan(0)) << length;
  }
  const std::string read = readAt(x, 269, 31);
  setBatch({read});
  EXPECT_EQ((Records{inGap(read, -31)}), scan(0));
}

TEST_F(FindReads, TheOtherStrandIsStoredAsItMatched) {
  const std::string right = readAt(x, 250, 100);
  const std::string left = readAt(y, -50, 90);
  setBatch({reverseComplement(right), reverseComplement(left)});
  EXPECT_EQ((Records{inGap(right, -50), inGap(left, 350)}), scan(0));
  EXPECT_EQ(reverseComplement(right), firstReads()[0]);  // the buffer keeps the read
}

// The read lies over the end of x, its reverse complement over that of y.
TEST_F(FindReads, TheOtherStrandIsTriedOnlyAfterTheFirst) {
  assemble({{{x}, {y, 400}, {stray, 30}}});
  const std::string read = x.substr(250) + reverseComplement(y.substr(250));
  const std::string reversed = reverseComplement(read);
  setBatch({read, reversed});
  EXPECT_EQ((Records{inGap(read, -50), {reversed, 0, 1, -50, 1, 30}}), scan(0));
}

TEST_F(FindReads, SingleReadsKeepTheirStrandAtLargeInserts) {
  insertLength = 2000;
  const std::string read = readAt(x, 250, 100);
  setBatch({read});
  EXPECT_EQ((Records{inGap(read, -50)}), scan(0));
  EXPECT_EQ(read, firstReads()[0]);
}

// ---- pairs --------------------------------------------------------------------------------------

TEST_F(FindReads, PairsWithUpperCaseNAreSkipped) {
  std::string withN = onX;
  withN[99] = 'N';
  std::string strayWithN = stray;
  strayWithN[0] = 'N';
  setBatch({withN, onX}, {stray, strayWithN});
  EXPECT_EQ(Records{}, scan(0));
  strayWithN[0] = 'n';  // reads as A on the other strand
  setBatch({onX}, {strayWithN});
  EXPECT_EQ((Records{inGap(reverseComplement(stray.substr(1)) + "A", 150)}), scan(0));
}

TEST_F(FindReads, PairsWithAReadShorterThanAKmerAreSkipped) {
  setBatch({onX, stray.substr(0, 30), onX}, {stray.substr(0, 30), onX, ""});
  EXPECT_EQ(Records{}, scan(0));
  const std::string kmer = stray.substr(0, 31);
  setBatch({onX}, {kmer});
  EXPECT_EQ((Records{inGap(reverseComplement(kmer), 219)}), scan(0));
  setBatch({kmer}, {onX});
  EXPECT_EQ((Records{inGap(reverseComplement(kmer), 219)}), scan(0));
}

// Anchored at offset 50 of x the mate of 100 bases lies at the insert less 350.
TEST_F(FindReads, PairsAreUsedAsTheyStandUpToAnInsertOf1000) {
  BIGGAPLEN = 5000;
  assemble({{{x}, {y, 1000}}});
  insertLength = 1000;
  setBatch({onX}, {stray});
  EXPECT_EQ((Records{{reverseComplement(stray), 0, 0, 650, 0, 1000}}), scan(0));
  EXPECT_EQ(std::vector<std::string>{onX}, firstReads());
  EXPECT_EQ(std::vector<std::string>{stray}, secondReads());
}

TEST_F(FindReads, PairsAreRewrittenInTheBufferFromAnInsertOf1001) {
  BIGGAPLEN = 5000;
  assemble({{{x}, {y, 1000}}});
  insertLength = 1001;
  // The second read becomes the first and is reversed to lie on x.
  const std::string shorter = stray.substr(0, 80);
  setBatch({shorter}, {reverseComplement(onX)});
  EXPECT_EQ((Records{{shorter, 0, 0, 671, 0, 1000}}), scan(0));
  EXPECT_EQ(std::vector<std::string>{onX}, firstReads());
  EXPECT_EQ(std::vector<std::string>{reverseComplement(shorter)}, secondReads());
}

TEST_F(FindReads, RewritingComesBehindTheLookForNAndBeforeTheLookAtLengths) {
  insertLength = 1001;
  setBatch({"AACN", "AAC", stray}, {stray, "GGT", stray + "NN"});
  EXPECT_EQ(Records{}, scan(0));
  EXPECT_EQ((std::vector<std::string>{"AACN", "ACC", stray}), firstReads());
  EXPECT_EQ((std::vector<std::string>{stray, "GTT", stray + "NN"}), secondReads());
}

TEST_F(FindReads, AWorkerRewritesItsOwnShareOnly) {
  setWorkers(2);
  insertLength = 1001;
  setBatch({"AAC", "AAC", "AAC"}, {"GGT", "GGT", "GGT"});
  EXPECT_EQ(Records{}, scan(1));
  EXPECT_EQ((std::vector<std::string>{"AAC", "ACC", "AAC"}), firstReads());
  EXPECT_EQ((std::vector<std::string>{"GGT", "GTT", "GGT"}), secondReads());
}

// Every pair of the share yields a mate in two gaps and its anchor.
TEST_F(FindReads, ThreeRecordsFromEveryPair) {
  assemble({{{x}, {randomBases(120, 74), 400}, {y, 500}}});
  insertLength = 580;
  const std::string anchor = readAt(x, 250, 100);
  const std::string mate = reverseComplement(stray);
  setBatch(std::vector<std::string>(20, anchor), std::vector<std::string>(20, stray));
  Records expected;
  for (int j = 0; j < 20; ++j) {
    expected.insert(
        expected.end(),
        {{mate, 0, 0, 400, 0, 400}, {mate, 0, 1, -90, 1, 500}, {anchor, 0, 0, -50, 0, 400}});
  }
  EXPECT_EQ(expected, scan(0));
}

// ---- odd parameters -----------------------------------------------------------------------------

TEST_F(FindReads, KmersOfNoBasesFindNothing) {
  Kmer = 0;
  assemble({{{x}, {y, 400}}});
  setBatch({"", "A", readAt(x, 250, 100)});
  EXPECT_EQ(Records{}, scan(0));
  setBatch({"", onX, onX}, {"", "", stray});
  EXPECT_EQ(Records{}, scan(0));
}

TEST_F(FindReads, OddOverRatiosAndMapCuts) {
  const double noNumber = std::numeric_limits<double>::quiet_NaN();
  for (const double odd : {noNumber, -1e300, 0.0}) {
    OverRatio = odd;
    setBatch({readAt(x, 250, 100)});
    EXPECT_EQ(1U, scan(0).size()) << odd;
    setBatch({onX}, {stray});
    EXPECT_EQ(1U, scan(0).size()) << odd;
  }
  OverRatio = 1e300;
  setBatch({readAt(x, 250, 100)});
  EXPECT_EQ(0U, scan(0).size());
  setBatch({onX}, {stray});
  EXPECT_EQ(0U, scan(0).size());

  OverRatio = 0.3;
  for (const double never : {noNumber, 1e300}) {
    mapCut = never;
    setBatch({readAt(x, 250, 100)});
    EXPECT_EQ(0U, scan(0).size()) << never;
    setBatch({onX}, {stray});
    EXPECT_EQ(0U, scan(0).size()) << never;
  }
}

}  // namespace
}  // namespace velk::test
