// Alignment against a model that compares letter by letter.
#include "placement/alignment.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string_view>

#include "contig/contig.h"
#include "kmer/seedIndex.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/randomPlacement.h"

namespace velk::test {
namespace {

char upper(char letter) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(letter)));
}

bool isBase(char letter) {
  return std::string_view("ACGT").find(upper(letter)) != std::string_view::npos;
}

// A contig of the text under a read, or its reverse complement, whose first base lies at `offset`.
class Model {
 public:
  Model(std::string_view contig, std::string read, int64_t offset, bool isReversed, std::size_t k)
      : contig_(contig),
        strand_(isReversed ? plainReverseComplement(read) : std::move(read)),
        offset_(offset),
        isReversed_(isReversed),
        k_(k) {}

  std::size_t windows() const { return strand_.size() - k_ + 1; }

  // The offset in the contig of a window of the read as it was sequenced.
  int64_t offsetOf(std::size_t window) const {
    const std::size_t onStrand = isReversed_ ? strand_.size() - k_ - window : window;
    return offset_ + static_cast<int64_t>(onStrand);
  }

  // Whether all letters of the window are bases and lie on equal ones of the contig, from `least`
  // on, where the contig's first window is.
  bool agrees(std::size_t window, int64_t least) const {
    const int64_t there = offsetOf(window);
    if (there < least || there + static_cast<int64_t>(k_) > static_cast<int64_t>(contig_.size())) {
      return false;
    }
    const std::size_t onStrand = isReversed_ ? strand_.size() - k_ - window : window;
    for (std::size_t n = 0; n < k_; ++n) {
      const char letter = contig_[static_cast<std::size_t>(there) + n];
      if (!isBase(letter) || upper(letter) != upper(strand_[onStrand + n])) return false;
    }
    return true;
  }

 private:
  std::string_view contig_;
  std::string strand_;
  int64_t offset_;
  bool isReversed_;
  std::size_t k_;
};

class AlignmentTest : public PlacementTest {
 protected:
  // Aligns every read, on both strands, through some windows of the index.
  void compareInput(const RandomPlacement& input) {
    makeParameters(input.settings);
    assemble(input.assembly);
    if (!seedIndex->hasText()) return;
    for (const std::string& read : input.reads) {
      PackedBases bases;
      const auto k = static_cast<std::size_t>(seedIndex->text().windowLength());
      if (read.size() < k || !bases.fill(read)) continue;
      for (int turn = 0; turn < 6 && !HasFatalFailure(); ++turn) compareRead(read, bases);
    }
  }

  std::map<std::string, int> met_;

 private:
  // A window of the read that the index has, else a random one, at a place where the index has a
  // window.
  void compareRead(const std::string& read, const PackedBases& bases) {
    const ContigText& text = seedIndex->text();
    const auto k = static_cast<std::size_t>(text.windowLength());
    const std::size_t window = random_() % (read.size() - k + 1);
    bool isReversed = random_() % 2 == 0;
    const uint64_t key = bases.at(window, text.windowLength());
    Occurrence found = seedIndex->find(isReversed ? reversedKey(key, text.windowLength()) : key);
    if (!found.isThere()) {
      const TextContig& contig = text.contigs()[random_() % text.contigs().size()];
      found.position = contig.firstWindow + random_() % contig.windows;
      ++met_["diagonal at random"];
    }
    compareDiagonal(read, bases, Diagonal::through(found.position, window, isReversed), window);
  }

  void compareDiagonal(const std::string& read, const PackedBases& bases, const Diagonal& diagonal,
                       std::size_t window) {
    const ContigText& text = seedIndex->text();
    const auto k = static_cast<std::size_t>(text.windowLength());
    const uint64_t position = diagonal.positionOf(window);
    const std::size_t number = text.contigOf(position);
    const TextContig& contig = text.contigs()[number];
    const std::size_t onStrand = diagonal.isReversed ? read.size() - k - window : window;
    const Model model(
        text.letters(number), read,
        static_cast<int64_t>(position - contig.start) - static_cast<int64_t>(onStrand),
        diagonal.isReversed, k);
    Alignment alignment;
    alignment.reset(model.windows());
    alignment.align(text, bases, diagonal, window);
    ASSERT_TRUE(alignment.isThere());
    ASSERT_EQ(alignment.diagonal(), diagonal);
    ++met_[diagonal.isReversed ? "reversed" : "forward"];
    compareWindows(alignment, model, contig);
  }

  void compareWindows(const Alignment& alignment, const Model& model, const TextContig& contig) {
    const ContigText& text = seedIndex->text();
    const int length = text.windowLength();
    WindowSet notReversed;
    notReversed.reset(model.windows());
    alignment.addNotReversed(text, notReversed);
    ASSERT_EQ(alignment.matches().size(), model.windows());
    const auto least = static_cast<int64_t>(contig.firstWindow - contig.start);
    for (std::size_t w = 0; w < model.windows(); ++w) {
      const bool agrees = model.agrees(w, least);
      ASSERT_EQ(alignment.matches().contains(w), agrees) << w;
      ASSERT_EQ(alignment.agreesAt(w, alignment.diagonal().isReversed), agrees) << w;
      ASSERT_FALSE(alignment.agreesAt(w, !alignment.diagonal().isReversed)) << w;
      ++met_[agrees ? "windows that agree" : "windows that do not"];
      if (!agrees) {
        ASSERT_FALSE(notReversed.contains(w)) << w;
        continue;
      }
      const uint64_t position = alignment.diagonal().positionOf(w);
      ASSERT_EQ(static_cast<int64_t>(position - contig.start), model.offsetOf(w));
      const uint64_t key = text.basesAt(position, length);
      ASSERT_EQ(text.isMarkedRepeated(position), !seedIndex->find(key).isUnique) << w;
      ASSERT_EQ(notReversed.contains(w), !seedIndex->find(reversedKey(key, length)).isThere()) << w;
      met_["repeated"] += text.isMarkedRepeated(position) ? 1 : 0;
      met_["reverse complement there"] += notReversed.contains(w) ? 0 : 1;
    }
  }

  std::mt19937 random_{1};
};

TEST_F(AlignmentTest, HardInputs) {
  for (const Hard input : kHardInputs) {
    for (const int kmer : kHardKmers) {
      for (uint32_t seed = 0; seed < 2 && !HasFatalFailure(); ++seed) {
        compareInput(hardPlacement(input, kmer, seed));
      }
    }
  }
  EXPECT_GE(met_["diagonal at random"], 1000);
  EXPECT_GE(met_["forward"], 2000);
  EXPECT_GE(met_["reversed"], 2000);
  EXPECT_GE(met_["repeated"], 10000);
  EXPECT_GE(met_["reverse complement there"], 10000);
  EXPECT_GE(met_["windows that agree"], 50000);
  EXPECT_GE(met_["windows that do not"], 50000);
}

TEST_F(AlignmentTest, ThereUntilItIsReset) {
  assemble({{{randomBases(300, 1)}}});
  const std::string read = scaffoldInfo[0].contigsInfo[0].contigSeq.substr(100, 80);
  PackedBases bases;
  ASSERT_TRUE(bases.fill(read));
  Alignment alignment;
  EXPECT_FALSE(alignment.isThere());
  alignment.reset(read.size() - static_cast<std::size_t>(Kmer) + 1);
  EXPECT_FALSE(alignment.isThere());
  alignment.align(seedIndex->text(), bases,
                  Diagonal::through(seedIndex->text().contigs()[0].firstWindow + 100, 0, false), 0);
  EXPECT_TRUE(alignment.isThere());
  EXPECT_EQ(alignment.matches().firstMissing(0), alignment.matches().size());
  alignment.reset(7);
  EXPECT_FALSE(alignment.isThere());
  EXPECT_EQ(alignment.matches().size(), 7U);
  EXPECT_EQ(alignment.matches().firstContained(0), 7U);
}

}  // namespace
}  // namespace velk::test
