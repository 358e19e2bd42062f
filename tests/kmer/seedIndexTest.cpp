// What the seed index answers, against a model that keeps every window in a map.
#include "kmer/seedIndex.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/kmer/kmerModel.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

constexpr int kLongestKmer = 70;  // of those that are tried one by one

#ifdef VELK_SHORT
constexpr std::array kKmersOfLongContigs = {10, 31};
constexpr std::array kThreadsToCompare = {2, 5};
#else
constexpr std::array kKmersOfLongContigs = {1, 10, 17, 31, 32, 45};
constexpr std::array kThreadsToCompare = {2, 3, 5, 8};
#endif

// An assembly of more letters than a thread takes at once, with repeats.
Assembly longAssembly(RandomAssemblies& random) {
  Assembly assembly = random.next(20000);
  const std::string bases = random.bases(80000);
  assembly.push_back({bases, random.tandem(70000), bases.substr(30000)});
  return assembly;
}

class SeedIndexTest : public RunParametersTest {
 protected:
  // Whether the index of the assembly counts and answers as the model.
  static void expectRight(const Assembly& assembly, int threads = 1, uint64_t placeBase = 0) {
    const KmerModel model(assembly);
    SeedIndex index;
    ASSERT_TRUE(model.build(index, threads, placeBase));
    EXPECT_EQ(index.distinctKeys(), model.kmers().size());
    EXPECT_EQ(model.firstWrongAnswer(index), "");
  }
};

TEST_F(SeedIndexTest, EveryWindowOfRandomAssemblies) {
  for (int kmer = 0; kmer <= kLongestKmer; kmer += 5 / part(5)) {
    RandomAssemblies random(static_cast<uint64_t>(kmer));
    Kmer = kmer;
    for (int n = 0; n < 4; ++n) {
      SCOPED_TRACE(testing::Message() << "k " << kmer << ", assembly " << n);
      CONTIGLEN = static_cast<int>(random.below(90));
      expectRight(random.next(2000));
    }
  }
}

TEST_F(SeedIndexTest, LongContigsBySeveralThreads) {
  RandomAssemblies random(1);
  CONTIGLEN = 0;
  for (const int kmer : kKmersOfLongContigs) {
    SCOPED_TRACE(testing::Message() << "k " << kmer);
    Kmer = kmer;
    expectRight(longAssembly(random), 3);
  }
}

TEST_F(SeedIndexTest, HardTexts) {
  CONTIGLEN = 0;
  for (const auto& [name, assembly] : hardTexts(part(20000U))) {
    for (const int kmer : {2, 8, 9, 13, 16, 21, 31, 32, 40}) {
      SCOPED_TRACE(testing::Message() << name << ", k " << kmer);
      Kmer = kmer;
      expectRight(assembly, 2);
    }
  }
}

TEST_F(SeedIndexTest, PlacesBeyond32Bits) {
  constexpr uint64_t kMostOfTwelve = uint64_t{1} << 34;  // places a bucket holds twelve of
  CONTIGLEN = 0;
  Kmer = 31;
  const std::vector<HardText> texts = hardTexts(10000);
  for (const auto& [name, assembly] : texts) {
    for (const uint64_t base :
         {(uint64_t{1} << 32) - 5000, kMostOfTwelve - 11000, kMostOfTwelve - 5000,
          kMostOfTwelve + 5000, uint64_t{1} << 36, (uint64_t{1} << 40) - 5000}) {
      SCOPED_TRACE(testing::Message() << name << ", from place " << base);
      expectRight(assembly, 1, base);
    }
  }
}

TEST_F(SeedIndexTest, ContigsBelowTheShortestHoldNothing) {
  RandomAssemblies random(1);
  Kmer = 21;
  CONTIGLEN = 60;
  const std::string shorter = random.bases(59);
  const std::string enough = random.bases(60);
  const KmerModel model({{shorter}, {}, {shorter, enough, ""}});
  SeedIndex index;
  ASSERT_TRUE(model.build(index));
  EXPECT_EQ(index.distinctKeys(), 40U);
  EXPECT_EQ(model.firstWrongAnswer(index), "");
}

TEST_F(SeedIndexTest, NoContigs) {
  const std::vector<Assembly> assemblies = {{}, {{}, {}}, {{""}}, {{"ACGT", "N"}}};
  for (const int kmer : {5, 31, 32, 33, 70, 2147483647}) {
    Kmer = kmer;
    CONTIGLEN = 0;
    for (const Assembly& assembly : assemblies) {
      for (const int threads : {1, 4}) {
        const KmerModel model(assembly);
        SeedIndex index;
        ASSERT_TRUE(model.build(index, threads));
        EXPECT_EQ(index.distinctKeys(), 0U);
        EXPECT_FALSE(index.hasText());
        EXPECT_FALSE(index.placeOf(0));
        EXPECT_FALSE(index.placeOf(~uint64_t{0}));
      }
    }
  }
}

TEST_F(SeedIndexTest, EmptyKmerIsAtTheFirstIndexedContig) {
  Kmer = 0;
  CONTIGLEN = 3;
  expectRight({{"AC"}, {"AC", "ACGT"}, {"ACGT"}});
  CONTIGLEN = 0;
  expectRight({{""}});  // one window, so it occurs once
  expectRight({{"", ""}});
  expectRight({{"A"}});
  expectRight({{}});
}

TEST_F(SeedIndexTest, FoldedLetterGivesAKeyThatBasesGiveToo) {
  // N stands as an A and sets the low bit of the base before it: "AN" has the key of "CA"
  Kmer = 21;
  CONTIGLEN = 0;
  const std::string front = RandomAssemblies(1).bases(10);
  const std::string back = RandomAssemblies(2).bases(9);
  expectRight({{front + "AN" + back}});
  expectRight({{front + "AN" + back, front + "CA" + back}});
  expectRight({{front + "CA" + back}, {front + "AN" + back}});
  expectRight({{front + "CN" + back}, {front + "CA" + back}});
  expectRight({{"N" + front + back + "A"}, {front + back + "AA"}});
}

// What the index tells of its text: the marks of all windows, in words of 64 letters.
std::string marksOf(const SeedIndex& index) {
  std::string marks;
  const ContigText& text = index.text();
  for (const TextContig& contig : text.contigs()) {
    for (uint64_t p = contig.firstWindow; p < contig.endWindow(); ++p) {
      const bool isReversed = (text.reversedMarksFrom(p) & 1U) != 0;
      marks += !text.isWindow(p) ? 'n' : isReversed ? 'r' : '.';
      marks += text.isMarkedRepeated(p) ? '2' : '1';
    }
  }
  return marks;
}

// The same from the model: of each window, whether it is non-ACGT, its reverse complement is there,
// and it is repeated.
std::string marksOf(const KmerModel& model, const SeedIndex& index) {
  std::string marks;
  const ContigText& text = index.text();
  const int bases = text.windowLength();
  for (std::size_t n = 0; n < text.contigs().size(); ++n) {
    const TextContig& contig = text.contigs()[n];
    for (uint64_t p = contig.firstWindow; p < contig.endWindow(); ++p) {
      const std::string_view window =
          text.letters(n).substr(p - contig.start, static_cast<std::size_t>(bases));
      if (window.find_first_not_of("ACGTacgt") != std::string_view::npos) {
        marks += "n2";
        continue;
      }
      const uint64_t key = text.basesAt(p, bases);
      marks += model.has(modelOfReversing(key, bases)) ? 'r' : '.';
      marks += model.kmers().at(key).times == 1 ? '1' : '2';
    }
  }
  return marks;
}

TEST_F(SeedIndexTest, MarksOfEveryWindow) {
  RandomAssemblies random(5);
  CONTIGLEN = 0;
  for (const int kmer : {1, 2, 5, 8, 9, 11, 16, 21, 30, 31, 32, 36}) {
    for (int n = 0; n < 5; ++n) {
      SCOPED_TRACE(testing::Message() << "k " << kmer << ", assembly " << n);
      Kmer = kmer;
      const KmerModel model(random.next(3000));
      SeedIndex index;
      ASSERT_TRUE(model.build(index, 2));
      EXPECT_EQ(marksOf(index), marksOf(model, index));
    }
  }
}

// Saved indexes hold these bytes. Where they change on purpose, kVersion of run/savedFormat.h does,
// too.
TEST_F(SeedIndexTest, BytesAreThoseOfSavedIndexes) {
  RandomAssemblies random(11);
  CONTIGLEN = 0;
  uLong sum = 0;
  for (const int kmer : {9, 31, 40}) {
    Kmer = kmer;
    const KmerModel model(longAssembly(random));
    SeedIndex index;
    ASSERT_TRUE(model.build(index, 2));
    SeedIndex::forEachKept(index, [&](const auto& array) {
      const auto* bytes = reinterpret_cast<const Bytef*>(array.begin());
      sum = crc32_z(sum, bytes, array.size() * sizeof(array[0]));
    });
  }
  EXPECT_EQ(sum, 2511079250U);
}

TEST_F(SeedIndexTest, SameForAnyNumberOfThreads) {
  RandomAssemblies random(7);
  CONTIGLEN = 0;
  for (const int kmer : {9, 31}) {
    Kmer = kmer;
    const KmerModel model(longAssembly(random));
    SeedIndex one;
    ASSERT_TRUE(model.build(one, 1));
    const std::string marks = marksOf(one);
    for (const int threads : kThreadsToCompare) {
      SCOPED_TRACE(testing::Message() << "k " << kmer << ", threads " << threads);
      SeedIndex other;
      ASSERT_TRUE(model.build(other, threads));
      EXPECT_EQ(bytesOf(other), bytesOf(one));
      EXPECT_EQ(other.distinctKeys(), one.distinctKeys());
      EXPECT_EQ(marksOf(other), marks);
      EXPECT_EQ(model.firstWrongAnswer(other), "");
    }
  }
}

}  // namespace
}  // namespace velk::test
