// The k-mers of a stretch, their minimizers and reverse complements.
#include "kmer/windowBatch.h"

#include <gtest/gtest.h>

#include <string>

#include "kmer/Sequence.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

uint64_t packed(const std::string& bases) {
  uint64_t key = 0;
  Seq2Kmer(key, bases);
  return key;
}

TEST(WindowBatch, KmerLengthsWithMinimizers) {
  EXPECT_FALSE(hasMinimizers(23));
  EXPECT_TRUE(hasMinimizers(24));
  EXPECT_TRUE(hasMinimizers(31));
  EXPECT_TRUE(hasMinimizers(32));
  EXPECT_FALSE(hasMinimizers(33));
}

TEST(WindowBatch, KeysAndMinimizersOfEveryCountAndLength) {
  for (int kmer = 24; kmer <= 32; ++kmer) {
    const auto length = static_cast<std::size_t>(kmer);
    for (std::size_t count = 1; count <= WindowBatch::kMost; ++count) {
      const std::string bases = randomBases(count + length - 1, static_cast<unsigned>(count));
      WindowBatch batch;
      ASSERT_TRUE(batch.fill(bases, count, kmer));
      for (std::size_t w = 0; w < count; ++w) {
        const uint64_t key = packed(bases.substr(w, length));
        ASSERT_EQ(batch.key(w), key) << kmer << ' ' << count << ' ' << w;
        ASSERT_EQ(batch.minimizer(w), minimizerOf(key, kmer)) << kmer << ' ' << count << ' ' << w;
      }
    }
  }
}

TEST(WindowBatch, LowerCaseIsTheSame) {
  WindowBatch upper;
  WindowBatch lower;
  ASSERT_TRUE(upper.fill("ACGTACGGTTACGATTACAGATTACAGACCA", 1, 31));
  ASSERT_TRUE(lower.fill("acgtacggttacgattacagattacagacca", 1, 31));
  EXPECT_EQ(upper.key(0), lower.key(0));
  EXPECT_EQ(upper.minimizer(0), lower.minimizer(0));
}

TEST(WindowBatch, AnotherLetterAnywhereIsRefused) {
  const std::string bases = randomBases(40, 5);
  WindowBatch batch;
  for (std::size_t i = 0; i < bases.size(); ++i) {
    std::string odd = bases;
    odd[i] = 'N';
    EXPECT_FALSE(batch.fill(odd, 10, 31)) << i;
  }
  EXPECT_TRUE(batch.fill(bases + "N", 10, 31)) << "letters behind the last k-mer do not count";
}

TEST(ReversedKey, IsTheKeyOfTheReverseComplement) {
  for (int kmer = 1; kmer <= 32; ++kmer) {
    const std::string bases = randomBases(static_cast<std::size_t>(kmer), 7);
    EXPECT_EQ(reversedKey(packed(bases), kmer), packed(reverseComplement(bases))) << kmer;
  }
}

TEST(MinimizerOf, IsTheSameForTheReverseComplement) {
  for (int kmer = 24; kmer <= 32; ++kmer) {
    for (unsigned seed = 0; seed < 50; ++seed) {
      const std::string bases = randomBases(static_cast<std::size_t>(kmer), seed);
      EXPECT_EQ(minimizerOf(packed(bases), kmer),
                minimizerOf(packed(reverseComplement(bases)), kmer));
    }
  }
}

}  // namespace
}  // namespace velk::test
