// What a seed tells of all windows that share it, against a model that keeps every window in a map.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "kmer/seedIndex.h"
#include "tests/kmer/kmerModel.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

class SeedVerdictTest : public RunParametersTest {
 protected:
  void build(const Assembly& assembly, uint64_t leastWindows = 0) {
    model_.emplace(assembly);
    ASSERT_TRUE(model_->build(index_.emplace(), 2, 0, leastWindows));
  }

  // Asks for all seeds of a read, and holds what they tell against the model.
  void expectSound(const std::string& letters) {
    const auto length = static_cast<std::size_t>(Kmer);
    PackedBases read;
    if (letters.size() < length || !read.fill(letters)) return;
    index_->seeds().forEachRun(read, 0, letters.size() - length + 1, [&](const SeedRun& run) {
      index_->prefetchSeed(run);
      if (!index_->prefetchText(run)) {
        for (uint64_t window = run.first; window <= run.last; ++window) expectAbsent(read, window);
        return;
      }
      const auto verdict = index_->verdictOn(run, read);
      ASSERT_EQ(verdict.absent & ~run.windowMask(), 0U);
      for (uint64_t window = run.first; window <= run.last; ++window) {
        if ((verdict.absent >> (window - run.first) & 1U) != 0) expectAbsent(read, window);
      }
      if (!verdict.diagonal) return;
      expectFound(read, run, verdict.window, *verdict.diagonal);
    });
  }

  uint64_t ruledOut() const { return ruledOut_; }
  uint64_t found(bool isReversed) const { return found_[isReversed ? 1 : 0]; }

 private:
  void expectAbsent(const PackedBases& read, uint64_t window) {
    ++ruledOut_;
    const uint64_t key = read.at(window, Kmer);
    EXPECT_FALSE(model_->has(key)) << "window " << window << " of k " << Kmer;
    EXPECT_FALSE(model_->has(modelOfReversing(key, Kmer))) << window << " of k " << Kmer;
  }

  void expectFound(const PackedBases& read, const SeedRun& run, uint64_t window,
                   const Diagonal& diagonal) {
    ++found_[diagonal.isReversed ? 1 : 0];
    EXPECT_GE(window, run.first);
    EXPECT_LE(window, run.last);
    const uint64_t key = read.at(window, Kmer);
    EXPECT_TRUE(index_->text().isWindow(diagonal.positionOf(window)));
    EXPECT_EQ(index_->text().basesAt(diagonal.positionOf(window), Kmer),
              diagonal.isReversed ? modelOfReversing(key, Kmer) : key);
  }

  std::optional<KmerModel> model_;
  std::optional<SeedIndex> index_;
  uint64_t ruledOut_ = 0;
  uint64_t found_[2] = {};  // as they are, reversed
};

TEST_F(SeedVerdictTest, WindowsRuledOutAreNowhere) {
  RandomAssemblies random(3);
  CONTIGLEN = 0;
  for (const int kmer : {1, 4, 8, 9, 12, 15, 20, 21, 25, 31, 32}) {
    Kmer = kmer;
    for (int n = 0; n < 6; ++n) {
      SCOPED_TRACE(testing::Message() << "k " << kmer << ", assembly " << n);
      Assembly assembly = random.next(2000);
      assembly.push_back({random.bases(500)});
      build(assembly);
      for (const auto& contigs : assembly) {
        for (const std::string& contig : contigs) {
          for (int reads = 0; reads < 10 && !contig.empty(); ++reads) {
            std::string read = contig.substr(random.below(contig.size()), 20 + random.below(180));
            if (random.below(2) == 0) read = reverseComplement(read);
            if (random.below(2) == 0) random.change(read);
            expectSound(read);
          }
        }
      }
      expectSound(random.bases(150));
      expectSound(random.tandem(150));
    }
  }
  // all kinds of verdicts were met, often
  EXPECT_GT(ruledOut(), 5000U);
  EXPECT_GT(found(false), 1000U);
  EXPECT_GT(found(true), 1000U);
}

// Seeds of 17 bases and more, as large genomes have: m-mers with other canonical forms may tie,
// too.
TEST_F(SeedVerdictTest, OtherMersThatTieAreNotRuledOut) {
  RandomAssemblies random(5);
  CONTIGLEN = 0;
  Kmer = 31;
  const std::string tied = "CCAAATGTCCTACTACAAATGTCCTACTGCA";
  build({{random.bases(6000) + tied}}, (uint64_t{1} << 27) + 5000);
  expectSound(random.bases(31) + reverseComplement(tied) + random.bases(31));
  EXPECT_GT(ruledOut(), 50U);  // of 62 windows without those of the contig
}

TEST_F(SeedVerdictTest, WindowsRuledOutByLongSeedsAreNowhere) {
  RandomAssemblies random(6);
  CONTIGLEN = 0;
  for (const int kmer : {20, 26, 31, 32}) {
    Kmer = kmer;
    for (int n = 0; n < 40; ++n) {
      Assembly assembly = random.next(2000);
      assembly.push_back({random.tandem(60) + random.bases(300)});
      build(assembly, uint64_t{1} << (26 + random.below(20)));
      for (const auto& contigs : assembly) {
        for (const std::string& contig : contigs) {
          for (int reads = 0; reads < 4 && !contig.empty(); ++reads) {
            std::string read = contig.substr(random.below(contig.size()), 20 + random.below(180));
            if (random.below(2) == 0) read = reverseComplement(read);
            if (random.below(2) == 0) random.change(read);
            expectSound(read);
          }
        }
      }
    }
  }
  EXPECT_GT(ruledOut(), 5000U);
  EXPECT_GT(found(true), 1000U);
}

TEST_F(SeedVerdictTest, RandomReadIsRuledOutAlmostEverywhere) {
  RandomAssemblies random(4);
  CONTIGLEN = 0;
  Kmer = 31;
  build({{random.bases(20000)}});
  const std::string read = random.bases(2000);
  expectSound(read);
  EXPECT_GT(ruledOut(), 1900U);  // of 1970 windows
  EXPECT_EQ(found(false) + found(true), 0U);
}

TEST_F(SeedVerdictTest, ReadOfTheTextIsFoundOnItsStrand) {
  RandomAssemblies random(4);
  CONTIGLEN = 0;
  Kmer = 31;
  const std::string contig = random.bases(5000);
  build({{contig}});
  expectSound(contig.substr(1000, 500));
  EXPECT_GT(found(false), 20U);
  EXPECT_EQ(found(true), 0U);
  expectSound(reverseComplement(contig.substr(3000, 500)));
  EXPECT_GT(found(true), 20U);
  EXPECT_EQ(ruledOut(), 0U);
}

}  // namespace
}  // namespace velk::test
