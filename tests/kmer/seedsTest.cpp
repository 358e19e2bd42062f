// The runs of windows that share a seed, against a search of every window.
#include "kmer/seeds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

#include "tests/kmer/kmerModel.h"

namespace velk::test {
namespace {

struct NaiveSeed {
  uint64_t at;         // the first m-mer of the least rank
  uint64_t canonical;  // form of it
  bool isTied;         // whether the window holds another m-mer with this canonical form
};

uint64_t canonicalAt(const PackedBases& bases, uint64_t at, int m) {
  const uint64_t mer = bases.at(at, m);
  return std::min(mer, modelOfReversing(mer, m));
}

NaiveSeed seedOf(const PackedBases& bases, uint64_t window, int k, int m) {
  NaiveSeed seed{window, canonicalAt(bases, window, m), false};
  for (uint64_t at = window + 1; at <= window + static_cast<uint64_t>(k - m); ++at) {
    const uint64_t canonical = canonicalAt(bases, at, m);
    if (canonical == seed.canonical) seed.isTied = true;
    if (rankOf(canonical) < rankOf(seed.canonical)) seed = {at, canonical, false};
  }
  return seed;
}

// Whether the runs of the windows [from, to) are those of the naive seeds.
void expectRuns(const std::string& letters, const Seeds& seeds, uint64_t from, uint64_t to) {
  PackedBases bases;
  ASSERT_TRUE(bases.fill(letters));
  uint64_t next = from;  // the first window of the next run
  uint64_t before = ~uint64_t{0};
  seeds.forEachRun(bases, from, to, [&](const SeedRun& run) {
    ASSERT_EQ(run.first, next);
    ASSERT_GE(run.last, run.first);
    ASSERT_LT(run.last, to);
    ASSERT_NE(run.at, before);  // a run is the longest stretch
    for (uint64_t window = run.first; window <= run.last; ++window) {
      const NaiveSeed seed = seedOf(bases, window, seeds.windowLength(), seeds.length());
      ASSERT_EQ(run.windowMask() >> (window - run.first) & 1U, 1U);
      ASSERT_EQ(run.at, seed.at) << "window " << window;
      ASSERT_EQ(run.hash, mixed(seed.canonical)) << "window " << window;
      ASSERT_TRUE(run.isTied || !seed.isTied) << "window " << window;
      ASSERT_EQ(seeds.seedOf(bases.at(window, seeds.windowLength())).offset, seed.at - window);
    }
    ASSERT_EQ(run.windowMask() >> (run.last - run.first), 1U);
    next = run.last + 1;
    before = run.at;
  });
  ASSERT_EQ(next, to);
}

TEST(Seeds, RunsOfEveryWindowLength) {
  RandomAssemblies random(1);
  for (int k = 1; k <= DATA_LEN; ++k) {
    for (int n = 0; n < 12; ++n) {
      SCOPED_TRACE(testing::Message() << "k " << k << ", text " << n);
      const std::size_t length = static_cast<std::size_t>(k) + 1 + random.below(600);
      const std::string letters = n % 3 == 0 ? random.tandem(length) : random.bases(length);
      const Seeds seeds(k, n % 2 == 0 ? length : uint64_t{1} << random.below(45));
      const uint64_t windows = length - static_cast<uint64_t>(k) + 1;
      expectRuns(letters, seeds, 0, windows);
      const uint64_t from = random.below(windows);
      expectRuns(letters, seeds, from, from + 1 + random.below(windows - from));
    }
  }
}

TEST(Seeds, RunsOfOneLetter) {
  for (const int k : {1, 2, 9, 10, 31, 32}) {
    expectRuns(std::string(400, 'A'), Seeds(k, 400), 0, 401 - static_cast<uint64_t>(k));
    expectRuns(std::string(400, 'T'), Seeds(k, 400), 0, 401 - static_cast<uint64_t>(k));
  }
}

TEST(Seeds, LengthIsOddAndFits) {
  for (int k = 1; k <= DATA_LEN; ++k) {
    for (unsigned bits = 0; bits < 50; ++bits) {
      const Seeds seeds(k, uint64_t{1} << bits);
      ASSERT_EQ(seeds.length() % 2, 1);
      ASSERT_LE(seeds.length(), std::min(k, kLongestMer));
      ASSERT_GE(seeds.length(), std::min(k % 2 == 0 ? k - 1 : k, 9));
      ASSERT_EQ(seeds.offsets(), k - seeds.length() + 1);
    }
  }
}

TEST(Seeds, ReverseComplementHasASeedOfTheSameCanonicalMer) {
  RandomAssemblies random(2);
  for (int turn = 0; turn < 2000; ++turn) {
    const int k = 1 + static_cast<int>(random.below(DATA_LEN));
    const Seeds seeds(k, 1000);  // of 9 bases: only those with the same canonical form tie
    PackedBases bases;
    ASSERT_TRUE(bases.fill(turn % 4 == 0 ? random.tandem(32) : random.bases(32)));
    const uint64_t key = bases.at(0, k);
    const uint64_t reversed = modelOfReversing(key, k);
    const Seeds::KeySeed seed = seeds.seedOf(key);
    const uint64_t mer = bases.at(static_cast<std::size_t>(seed.offset), seeds.length());
    ASSERT_EQ(seed.hash, seeds.hashOf(mer));
    ASSERT_EQ(seed.hash, seeds.seedOf(reversed).hash);
  }
}

// The ranks of m-mers, and the least of some, against their definitions.

constexpr std::size_t kWords = 12;
constexpr std::size_t kWordBases = 32;

uint64_t merAt(const std::vector<uint64_t>& words, std::size_t at, int m) {
  uint64_t mer = 0;
  for (std::size_t i = at; i < at + static_cast<std::size_t>(m); ++i) {
    mer = mer << 2 | (words[i / kWordBases] >> (62 - 2 * (i % kWordBases)) & 3U);
  }
  return mer;
}

TEST(MerRanks, AreThoseOfTheKinds) {
  std::mt19937_64 random(1);
  std::vector<uint64_t> words(kWords);
  for (uint64_t& word : words) word = random();
  words[3] = words[4] = 0;  // a stretch of one m-mer
  for (int m = 1; m <= kLongestMer; ++m) {
    for (std::size_t n = 0; n + 1 < kWords; ++n) {
      std::array<uint32_t, kWordBases> ranks{};
      rankMers(words[n], words[n + 1], m, ranks.data());
      for (uint64_t i = 0; i < kWordBases; ++i) {
        const uint64_t mer = merAt(words, n * kWordBases + i, m);
        ASSERT_EQ(ranks[i], rankOf(std::min(mer, modelOfReversing(mer, m)))) << m << ' ' << i;
      }
    }
  }
}

// Whether the first of the least ranks is chosen, and whether there are others is known.
void expectLeast(const std::vector<uint32_t>& ranks, unsigned count) {
  const auto end = ranks.begin() + count;
  const auto least = std::min_element(ranks.begin(), end);
  const LeastRank chosen = leastRank(ranks.data(), count);
  ASSERT_EQ(chosen.rank, *least);
  ASSERT_EQ(chosen.offset, least - ranks.begin());
  ASSERT_EQ(chosen.isTied, std::count(ranks.begin(), end, *least) > 1);
}

TEST(LeastRank, FirstOfThoseThatTie) {
  std::mt19937_64 random(3);
  for (int turn = 0; turn < 20000; ++turn) {
    const auto count = static_cast<unsigned>(1 + random() % kMostOffsets);
    const uint64_t distinct = turn % 2 == 0 ? 1 + random() % 40 : uint64_t{1} << 32;
    std::vector<uint32_t> ranks(32);
    // also those behind the last one, which count for nothing
    for (uint32_t& rank : ranks) rank = static_cast<uint32_t>(random() % distinct);
    SCOPED_TRACE(turn);
    expectLeast(ranks, count);
  }
}

TEST(LeastRank, OfTheLargestRanks) {
  for (unsigned count = 1; count <= kMostOffsets; ++count) {
    std::vector<uint32_t> ranks(32, 0);
    std::fill(ranks.begin(), ranks.begin() + count, ~uint32_t{0});
    expectLeast(ranks, count);
    ranks[count - 1] = 0x80000000U;  // the least, though not as a signed number
    expectLeast(ranks, count);
  }
}

}  // namespace

}  // namespace velk::test
