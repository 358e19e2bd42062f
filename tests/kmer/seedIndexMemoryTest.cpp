// What the seed index takes on hard inputs, in bytes and in time, and what it does without memory.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ctime>
#include <string>
#include <string_view>
#include <vector>

#include "kmer/Sequence.h"
#include "kmer/contigWindows.h"
#include "kmer/hashSet.h"
#include "kmer/seedIndex.h"
#include "tests/kmer/failingAllocations.h"
#include "tests/kmer/kmerModel.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

constexpr uint64_t kSpare = 64 * 1024;  // bytes that an index may take whatever it holds
constexpr int kStep = 5 / part(5);      // of numbers that are tried in a row

// Bytes of the hash set that just holds so many keys: 16 a slot, and two bits.
uint64_t tableBytes(uint64_t keys) {
  constexpr float kLoadFactor = 0.75F;
  auto slots = static_cast<uint64_t>(static_cast<double>(keys) / kLoadFactor);
  HashSet table = numbersOfNew(slots, kLoadFactor);
  while (table.max < keys) table = numbersOfNew(table.size + 1, kLoadFactor);
  return table.size * 65 / 4;
}

uint64_t textBytes(const SeedIndex& index) {
  uint64_t bytes = index.text().lines().size() * sizeof(index.text().lines()[0]);
  index.text().forEachLaid([&](const auto& array) { bytes += array.size() * sizeof(array[0]); });
  return bytes;
}

class SeedIndexMemory : public RunParametersTest {
 protected:
  SeedIndexMemory() { CONTIGLEN = 0; }

  static void expectNoMoreThanTheTable(int threads) {
    for (const auto& [name, assembly] : hardTexts(100000)) {
      for (Kmer = 1; Kmer <= DATA_LEN; Kmer += kStep) {
        const KmerModel model(assembly, KmerModel::kWithoutKmers);
        SeedIndex index;
        ASSERT_TRUE(model.build(index, threads));
        // Where keys come back often their table is small, and the text as long as ever.
        const uint64_t text = textBytes(index);
        const bool isRepetitive = 4 * index.distinctKeys() < index.text().windows();
        const uint64_t most = tableBytes(index.distinctKeys()) + (isRepetitive ? text : 0);
        EXPECT_LE(bytesOf(index), most + kSpare)
            << name << ", k " << Kmer << ", keys " << index.distinctKeys() << ", text " << text;
      }
    }
  }
};

TEST_F(SeedIndexMemory, NeverMoreThanTheTable) {
  expectNoMoreThanTheTable(1);
}

TEST_F(SeedIndexMemory, NeverMoreThanTheTableByFourThreads) {
  expectNoMoreThanTheTable(4);
}

TEST_F(SeedIndexMemory, TwentyThousandShortContigs) {
  RandomAssemblies random(2);
  std::vector<std::string> contigs(20000);
  for (std::string& contig : contigs) contig = random.bases(33 + random.below(20));
  Kmer = 31;
  const KmerModel model({contigs});
  SeedIndex index;
  ASSERT_TRUE(model.build(index, 4));
  EXPECT_EQ(index.distinctKeys(), model.kmers().size());
  EXPECT_EQ(model.firstWrongAnswer(index), "");
  EXPECT_LE(bytesOf(index), tableBytes(index.distinctKeys()) + kSpare);
}

// The most bytes that are held while the index is built, without what each thread has in buffers.
uint64_t mostOfBuild(SeedIndex& index, const Assembly& assembly, int threads) {
  constexpr uint64_t kBuffers = 1 << 20;  // bytes of a thread
  const KmerModel model(assembly, KmerModel::kWithoutKmers);
  const uint64_t most = mostBytesOf([&] { EXPECT_TRUE(model.build(index, threads)); });
  const uint64_t buffers = kBuffers * static_cast<uint64_t>(threads);
  return most - std::min(most, buffers);
}

TEST_F(SeedIndexMemory, BuildTakesLittleMoreThanTheIndex) {
  RandomAssemblies random(8);
  const Assembly assembly = {{random.bases(8000000)}};
  for (const int kmer : {17, 31}) {
    for (const int threads : {1, 4}) {
      Kmer = kmer;
      SeedIndex index;
      const auto most = static_cast<double>(mostOfBuild(index, assembly, threads));
      EXPECT_LE(most, 1.15 * static_cast<double>(bytesOf(index))) << kmer << ' ' << threads;
    }
  }
}

// A text all of whose windows of 31 bases have one seed of 13, and most of which are different.
Assembly oneSeed(std::size_t length) {
  constexpr int kMer = 13;
  RandomAssemblies random(9);
  uint64_t least = 0;
  for (uint64_t mer = 0; mer < uint64_t{1} << 20; ++mer) {
    const uint64_t canonical = std::min(mer, modelOfReversing(mer, kMer));
    if (rankOf(canonical) < rankOf(least)) least = canonical;
  }
  std::string seed;
  for (int i = kMer - 1; i >= 0; --i) seed += "ACGT"[least >> 2 * i & 3U];
  std::string letters;
  while (letters.size() < length) letters += seed + random.bases(6);
  return {{letters}};
}

TEST_F(SeedIndexMemory, BuildIsBoundedOnHardTexts) {
  constexpr std::size_t kLength = part(std::size_t{2000000});
  constexpr uint64_t kMostOfWindow = 16;  // bytes
  for (const auto& [name, assembly] : hardTexts(kLength)) {
    for (const int kmer : {9, 31}) {
      Kmer = kmer;
      SeedIndex index;
      const uint64_t most = mostOfBuild(index, assembly, 2);
      EXPECT_LE(most, kMostOfWindow * index.text().windows()) << name << ", k " << kmer;
      if (std::string_view(name) == "all A") {
        EXPECT_LE(most, bytesOf(index)) << kmer;
      }
    }
  }
  Kmer = 31;
  SeedIndex index;
  const uint64_t most = mostOfBuild(index, oneSeed(kLength), 2);
  EXPECT_GT(index.distinctKeys(), kLength / 2);
  EXPECT_LE(most, 4 * bytesOf(index));
}

// Seconds of processor time that the build and a look-up of every window take.
double secondsOf(const Assembly& assembly) {
  const std::clock_t start = std::clock();
  const KmerModel model(assembly, KmerModel::kWithoutKmers);
  SeedIndex index;
  EXPECT_TRUE(model.build(index));
  const auto length = static_cast<std::size_t>(Kmer);
  for (const auto& contigs : assembly) {
    for (const std::string_view contig : contigs) {
      for (std::size_t at = 0; at + length <= contig.size(); ++at) {
        EXPECT_TRUE(index.placeOf(packedKmer(contig.substr(at, length))));
      }
    }
  }
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

TEST_F(SeedIndexMemory, NoWindowTakesLong) {
  constexpr std::size_t kLetters = 200000;
  // Generous, the more so with a sanitizer or gcc's counters. A chain of a tenth of the windows
  // would take some ten times as long.
#ifdef VELK_SHORT
  constexpr double kSecondsOfWindow = 30e-6;
#else
  constexpr double kSecondsOfWindow = 10e-6;
#endif
  for (const auto& [name, assembly] : hardTexts(kLetters)) {
    for (const int kmer : {9, 12, 31}) {
      Kmer = kmer;
      EXPECT_LT(secondsOf(assembly), kSecondsOfWindow * kLetters) << name << ", k " << kmer;
    }
  }
}

class FailingBuild : public SeedIndexMemory, public ::testing::WithParamInterface<int> {
 protected:
  // Denies the build one allocation after the other, `step` further each time, until it has all
  // that it asks for. fail: failAllocationAfter or failNewAfter. Returns how many it asks for, or
  // up to a step more.
  static int denyOneByOne(const KmerModel& model, void (*fail)(int), int step) {
    for (int n = 0;; n += step) {
      SeedIndex index;
      fail(n);
      const bool isBuilt = model.build(index, GetParam());
      failNoAllocation();
      if (deniedBytes() == 0) {
        EXPECT_TRUE(isBuilt);
        return n;
      }
      if (isBuilt) {
        // a thread less, or memory that is not needed
        EXPECT_EQ(model.firstWrongAnswer(index), "") << "allocation " << n;
      }
      forgiven_ += isBuilt ? 1 : 0;
    }
  }

  static int forgiven_;
};
int FailingBuild::forgiven_ = 0;

TEST_P(FailingBuild, ReturnsFalse) {
  RandomAssemblies random(3);
  Kmer = 21;
  std::string withN = random.bases(3000);
  for (std::size_t at = 0; at < withN.size(); at += 100) withN[at] = 'N';
  // heavy seeds, non-ACGT letters, two pieces
  const KmerModel model({{random.tandem(2000), withN}, {random.bases(70000)}});
  forgiven_ = 0;
  EXPECT_GT(denyOneByOne(model, failNewAfter, kStep), 100);
  EXPECT_GE(denyOneByOne(model, failAllocationAfter, 1), 7);  // text and both levels
  if (GetParam() == 1) {
    EXPECT_EQ(forgiven_, 0);
  }
}

INSTANTIATE_TEST_SUITE_P(Threads, FailingBuild, ::testing::Values(1, 4));

}  // namespace
}  // namespace velk::test
