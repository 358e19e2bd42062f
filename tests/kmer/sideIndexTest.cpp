// The side index never denies what the index holds, and denies most of what it does not hold.
#include "kmer/sideIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <new>
#include <string>
#include <vector>

#include "kmer/Sequence.h"
#include "kmer/fetchKmers.h"
#include "tests/kmer/failingAllocations.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

class SideIndexTest : public AssemblyTest {
 protected:
  ~SideIndexTest() override { sideIndex.release(); }

  static uint64_t packed(const std::string& bases) {
    uint64_t key = 0;
    Seq2Kmer(key, bases);
    return key;
  }

  static bool isIndexed(uint64_t key) { return exists_hashset(kmerHash, Entity{key, 0, 0, 0, 0}); }

  template <class Visit>
  static void forEachKmer(Visit visit) {
    const auto length = static_cast<std::size_t>(Kmer);
    for (uint32_t i = 0; i < scaffoldSum; ++i) {
      for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
        const std::string& bases = scaffoldInfo[i].contigsInfo[j].contigSeq;
        for (std::size_t at = 0; at + length <= bases.size(); ++at) {
          visit(i, j, at, bases.substr(at, length));
        }
      }
    }
  }

  // Compares every answer about the contigs of the run with the index itself. Returns how often a
  // reverse complement was held possible and was not there.
  static int checkReverseAnswers() {
    int needless = 0;
    forEachKmer([&](uint32_t i, uint32_t j, std::size_t at, const std::string& kmer) {
      const bool isThere = isIndexed(packed(reverseComplement(kmer)));
      const bool mayBe = sideIndex.mayHoldReverse(i, j, at, at + 1);
      EXPECT_TRUE(mayBe || !isThere) << i << ' ' << j << ' ' << at;
      needless += mayBe && !isThere ? 1 : 0;
    });
    return needless;
  }
};

// Contigs with repeats within and between them, inverted ones, palindromes and other letters.
std::vector<TestScaffold> tangledAssembly(unsigned seed) {
  const std::string one = randomBases(400, seed);
  const std::string two = randomBases(300, seed + 100);
  std::string odd = randomBases(200, seed + 200);
  odd[50] = 'N';
  odd[90] = 'r';
  const std::string half = randomBases(40, seed + 300);
  return {{{one + two}, {reverseComplement(one).substr(100, 200) + odd, 50}},
          {{two.substr(50, 150) + half + reverseComplement(half)}, {one.substr(0, 90), 20}},
          {{reverseComplement(odd)}, {odd.substr(20, 150) + two, 5}}};
}

TEST_F(SideIndexTest, ReverseComplementsOfATangledAssembly) {
  for (const int kmer : {16, 17, 19, 22, 24, 27, 30, 31, 32}) {
    for (unsigned seed = 0; seed < 5; ++seed) {
      Kmer = kmer;
      load(tangledAssembly(seed));
      ASSERT_TRUE(sideIndex.isMade());
      checkReverseAnswers();
      releaseAssembly();
    }
  }
}

TEST_F(SideIndexTest, ReverseComplementsThatAreNotThereAreDenied) {
  load({{{randomBases(3000, 1)}, {randomBases(3000, 2), 100}}});
  EXPECT_EQ(checkReverseAnswers(), 0);
}

TEST_F(SideIndexTest, RangesAnswerForAnyOfTheirKmers) {
  const std::string bases = randomBases(600, 3);
  load({{{bases + reverseComplement(bases.substr(200, 31))}}});
  EXPECT_TRUE(sideIndex.mayHoldReverse(0, 0, 200, 201));
  for (uint64_t from = 0; from <= 200; from += 7) {
    EXPECT_TRUE(sideIndex.mayHoldReverse(0, 0, from, 201)) << from;
    EXPECT_FALSE(sideIndex.mayHoldReverse(0, 0, from, 200)) << from;
  }
  EXPECT_FALSE(sideIndex.mayHoldReverse(0, 0, 201, 500));
}

TEST_F(SideIndexTest, RepeatsOfATangledAssembly) {
  for (const int kmer : {16, 17, 19, 22, 24, 27, 30, 31, 32}) {
    for (unsigned seed = 0; seed < 5; ++seed) {
      Kmer = kmer;
      load(tangledAssembly(seed));
      std::map<uint64_t, int> times;
      forEachKmer(
          [&](uint32_t, uint32_t, std::size_t, const std::string& kmer) { ++times[packed(kmer)]; });
      forEachKmer([&](uint32_t i, uint32_t j, std::size_t at, const std::string& kmer) {
        EXPECT_EQ(sideIndex.isRepeated(i, j, at), times[packed(kmer)] > 1) << i << j << at;
      });
      releaseAssembly();
    }
  }
}

// The marks of all k-mers, by whichever thread they have been made.
TEST_F(SideIndexTest, AThreadOfItsOwnMakesTheSameMarks) {
  for (unsigned seed = 0; seed < 20; ++seed) {
    Kmer = 32 - static_cast<int>(seed % 17);
    std::array<std::vector<bool>, 2> marks;
    for (const int threads : {1, 2}) {
      thread_num = threads;
      load(tangledAssembly(seed));
      ASSERT_TRUE(sideIndex.isMade());
      std::vector<bool>& made = marks[threads == 1 ? 0 : 1];
      forEachKmer([&](uint32_t i, uint32_t j, std::size_t at, const std::string&) {
        made.push_back(sideIndex.isRepeated(i, j, at));
        made.push_back(sideIndex.mayHoldReverse(i, j, at, at + 1));
      });
      releaseAssembly();
    }
    EXPECT_NE(marks[0], std::vector<bool>(marks[0].size()));
    EXPECT_EQ(marks[0], marks[1]) << seed;
  }
}

// With an N in front, the key of a k-mer is that of no bases: it is nothing's reverse complement,
// though but for the bit above its bases it looks like one with an A there.
TEST_F(SideIndexTest, AKmerBehindAnotherLetterIsNoReverseComplement) {
  const std::string most = randomBases(30, 12);
  const std::string along = randomBases(50, 13) + reverseComplement(most) + "T";
  const std::string odd = randomBases(40, 14) + "N" + most;
  load({{{along + randomBases(50, 15)}, {odd + randomBases(40, 16), 100}}});
  EXPECT_FALSE(sideIndex.mayHoldReverse(0, 0, 50, 51));
}

// However the reverse complement of a repeat comes in: before all its places, between, or after.
TEST_F(SideIndexTest, EveryPlaceOfARepeatKnowsOfItsReverseComplement) {
  const std::string repeat = randomBases(60, 11);
  const auto between = [](unsigned seed) { return randomBases(100, seed); };
  const std::string reversed = reverseComplement(repeat);
  for (const int kmer : {16, 19, 24, 31}) {
    Kmer = kmer;
    for (int place = 0; place < 4; ++place) {
      std::string bases;
      for (int at = 0; at < 4; ++at)
        bases += between(static_cast<unsigned>(at)) + (at == place ? reversed : repeat);
      load({{{bases}}});
      EXPECT_EQ(checkReverseAnswers(), 0) << kmer << ' ' << place;
      releaseAssembly();
    }
  }
}

TEST_F(SideIndexTest, TheFilterKnowsTheGramsOfEveryKmer) {
  for (const int kmer : {16, 19, 21, 24, 31, 32}) {
    Kmer = kmer;
    for (unsigned seed = 0; seed < 5; ++seed) {
      load(tangledAssembly(seed));
      const bool isLarge = seed == 4;
      if (isLarge) indexAsOneOf((uint64_t{1} << 27) + 1);
      const GramFilter& filter = sideIndex.filter();
      const int length = filter.gramLength();
      EXPECT_EQ(length, isLarge ? std::min(kmer, 17) : 16);
      const uint64_t gramBits = (uint64_t{1} << (2 * length)) - 1;
      for (uint64_t slot = 0; slot < kmerHash->size; ++slot) {
        if (is_entity_null(kmerHash->nul_flag, slot)) continue;
        const uint64_t key = kmerHash->array[slot].bitSeq;
        for (std::size_t g = 0; g < filter.gramsOfKmer(); ++g) {
          EXPECT_TRUE(filter.mayHold(Gram(key >> (2 * g) & gramBits, length)));
        }
      }
      releaseAssembly();
    }
  }
}

// Indexes the run's contigs with all but the n-th allocation that FetchKmers1 makes. Returns
// whether the hash set holds every k-mer, and a side index stands beside it only where it has its
// memory.
bool isIndexedWithoutAllocation(int n, const std::vector<TestScaffold>& scaffolds) {
  free_hash(kmerHash);
  kmerHash = init_hashset(1000000, LoadFactor);  // does not grow
  failAllocationAfter(n);
  FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
  failNoAllocation();
  if (sideIndex.isMade() != (deniedBytes() == 0)) return false;
  uint64_t kmers = 0;
  for (const TestScaffold& contigs : scaffolds) {
    for (const TestContig& contig : contigs) kmers += contig.bases.size() - 30;
  }
  return kmerHash->count == kmers;
}

TEST_F(SideIndexTest, IndexingGoesOnWithoutMemoryForIt) {
  const std::vector<TestScaffold> scaffolds{{{randomBases(300, 1)}, {randomBases(200, 2), 40}},
                                            {{randomBases(100, 3)}}};
  load(scaffolds);
  for (int n = 0; n < 4; ++n) {
    EXPECT_TRUE(isIndexedWithoutAllocation(n, scaffolds)) << n;
  }
}

// With one thread the contigs are added to the side index when all k-mers are in the hash set: the
// last memory that is asked for is what it needs then, and for its settling.
TEST_F(SideIndexTest, MemoryThatRunsOutAsItIsFilled) {
  load({{{randomBases(300, 1)}}});
  thread_num = 1;
  bool isMade = false;
  int withoutIt = 0;  // runs without a side index since one ended earlier
  for (int n = 0; !isMade; ++n) {
    free_hash(kmerHash);
    kmerHash = init_hashset(1000, LoadFactor);
    failNewAfter(n);
    try {
      FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
    } catch (const std::bad_alloc&) {
      failNoAllocation();
      withoutIt = 0;
      continue;
    }
    failNoAllocation();
    isMade = sideIndex.isMade();
    EXPECT_EQ(isMade, deniedBytes() == 0) << n;
    EXPECT_EQ(kmerHash->count, 270U) << n;
    withoutIt += isMade ? 0 : 1;
  }
  EXPECT_GT(withoutIt, 0);
}

// Several threads: whichever of them it is that has no memory once, the set holds every k-mer, or
// the run ends.
TEST_F(SideIndexTest, MemoryThatRunsOutInAnyThread) {
  load({{{randomBases(30000, 1)}}});
  thread_num = 3;
  int wholeWithIt = 0;
  int wholeWithoutIt = 0;
  bool isDenied = true;
  for (int n = 0; isDenied; ++n) {
    free_hash(kmerHash);
    kmerHash = init_hashset(30000, 0.999F);  // full: some k-mers run over the end of a share
    failNewAfter(n);
    try {
      FetchKmers1(kmerHash, scaffoldInfo, scaffoldSum);
      ++(sideIndex.isMade() ? wholeWithIt : wholeWithoutIt);
      EXPECT_EQ(kmerHash->count, 29970U) << n;
    } catch (const std::bad_alloc&) {
      // that is the other outcome
    }
    failNoAllocation();
    isDenied = deniedBytes() != 0;
  }
  EXPECT_GT(wholeWithIt, 1);
  EXPECT_GT(wholeWithoutIt, 0);
}

TEST_F(SideIndexTest, BytesForTellsAboutWhatItTakes) {
  constexpr uint64_t kBases = 1000000;
  load({{{randomBases(kBases, 4)}}});
  const uint64_t kmers = kBases - 30;
  double taken = 0;
  for (int n = 0; n < 3; ++n) {
    failAllocationAfter(n);
    EXPECT_THROW(sideIndex.make(scaffoldInfo, scaffoldSum, 31, kmers), std::bad_alloc) << n;
    failNoAllocation();
    sideIndex.release();
    taken += static_cast<double>(deniedBytes());
  }
  const auto told = static_cast<double>(SideIndex::bytesFor(kmers, kBases));
  EXPECT_NEAR(taken, told, 0.001 * told);
}

TEST_F(SideIndexTest, NotMadeForOtherKmerLengths) {
  for (const int kmer : {0, 5, 15, 33, 63}) {
    Kmer = kmer;
    load({{{randomBases(500, 6)}}});
    EXPECT_FALSE(sideIndex.isMade()) << kmer;
    releaseAssembly();
  }
}

}  // namespace
}  // namespace velk::test
