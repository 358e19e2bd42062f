// The text of the seed index: which contig a position lies in, which positions are windows, marks.
#include "kmer/contigText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kmer/Sequence.h"
#include "tests/kmer/kmerModel.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

class ContigTextTest : public RunParametersTest {
 protected:
  ContigTextTest() { CONTIGLEN = 0; }

  // Makes the text of an assembly; the words stay all A until they are packed.
  void make(const Assembly& assembly, int kmer) {
    Kmer = kmer;
    model_.emplace_back(assembly, KmerModel::kWithoutKmers);
    text_.lay(model_.back().scaffolds(), model_.back().size(), kmer);
    text_.make();
  }

  ContigText text_;

 private:
  std::vector<KmerModel> model_;  // behind the text's views
};

std::string lettersOf(std::size_t length) {
  return std::string(length, 'C');
}

TEST_F(ContigTextTest, ContigOfEveryPosition) {
  RandomAssemblies random(8);
  for (int n = 0; n < 20; ++n) {
    Assembly assembly(3);
    for (uint64_t c = 0; c < 1 + random.below(60); ++c) {
      const std::size_t length = random.below(4) == 0 ? random.below(5000) : random.below(60);
      assembly[random.below(3)].push_back(lettersOf(length));
    }
    assembly[0].push_back(lettersOf(40));
    make(assembly, 20);
    const Array<TextContig>& contigs = text_.contigs();
    std::size_t last = 0;
    for (uint64_t p = 0; p < text_.end() + ContigText::kPad; ++p) {
      while (last + 1 < contigs.size() && contigs[last + 1].start <= p) ++last;
      ASSERT_EQ(text_.contigOf(p), last) << "position " << p;
    }
  }
}

TEST_F(ContigTextTest, ContigsLieApartAndInOrder) {
  make({{"AC", lettersOf(50)}, {}, {lettersOf(33), "", lettersOf(31)}}, 31);
  const Array<TextContig>& contigs = text_.contigs();
  ASSERT_EQ(contigs.size(), 3U);  // the others hold no window
  EXPECT_EQ(text_.windows(), 20U + 3 + 1);
  EXPECT_GE(contigs[0].start, ContigText::kPad);
  for (std::size_t n = 0; n < 3; ++n) {
    EXPECT_EQ(contigs[n].start % DATA_LEN, 0U);
    EXPECT_EQ(contigs[n].firstWindow, contigs[n].start);
    const uint64_t behind = n + 1 < 3 ? contigs[n + 1].start : text_.end();
    EXPECT_LE(contigs[n].start + text_.letters(n).size(), behind);
  }
  const KmerPlace place = text_.placeOf(contigs[1].start + 2);
  EXPECT_EQ(place.scaffold, 2U);
  EXPECT_EQ(place.contig, 0U);
  EXPECT_EQ(place.start, 2U);
}

TEST_F(ContigTextTest, LongKmersBeginAtTheirFirstBase) {
  make({{lettersOf(100)}}, 70);
  EXPECT_EQ(text_.windowLength(), 32);
  const TextContig& contig = text_.contigs()[0];
  EXPECT_EQ(contig.windows, 31U);
  EXPECT_EQ(contig.firstWindow, contig.start + 38);
  EXPECT_EQ(text_.placeOf(contig.firstWindow + 30).start, 30U);
  EXPECT_FALSE(text_.isWindow(contig.firstWindow - 1));
  EXPECT_TRUE(text_.isWindow(contig.firstWindow));
  EXPECT_TRUE(text_.isWindow(contig.firstWindow + 30));
  EXPECT_FALSE(text_.isWindow(contig.firstWindow + 31));
}

TEST_F(ContigTextTest, WindowsAreThoseOfBasesInsideAContig) {
  std::string withN = lettersOf(80);
  withN[40] = 'N';
  withN[41] = 'n';
  make({{lettersOf(45), withN}, {lettersOf(90)}}, 15);
  text_.pack(0, ContigText::kPad + 512);
  std::vector<bool> isWindow(text_.end() + ContigText::kPad);
  for (std::size_t n = 0; n < 3; ++n) {
    for (uint64_t w = 0; w + 15 <= text_.letters(n).size(); ++w) {
      const bool isNonAcgt = n == 1 && w + 15 > 40 && w <= 41;
      isWindow[text_.contigs()[n].start + w] = !isNonAcgt;
    }
  }
  for (uint64_t p = 0; p < isWindow.size(); ++p) ASSERT_EQ(text_.isWindow(p), isWindow[p]) << p;
}

TEST_F(ContigTextTest, PositionsThatAreNoWindowsAreMarked) {
  make({{lettersOf(45), lettersOf(300)}, {lettersOf(129)}}, 15);
  for (uint64_t p = 0; p < text_.end() + ContigText::kPad; ++p) {
    ASSERT_EQ(text_.isMarkedRepeated(p), !text_.isWindow(p)) << p;
    ASSERT_EQ(text_.reversedMarksFrom(p) & 1U, 0U) << p;
  }
}

TEST_F(ContigTextTest, MarksFromAnyPositionOn) {
  make({{lettersOf(1000)}}, 15);
  RandomAssemblies random(9);
  std::vector<bool> repeated(1000);
  std::vector<bool> reversed(1000);
  for (uint64_t p = 200; p < 900; ++p) {
    if (random.below(3) == 0) text_.markRepeated(p), repeated[p] = true;
    if (random.below(3) == 0) text_.markReversed(p), reversed[p] = true;
  }
  for (uint64_t p = 200; p < 800; ++p) {
    for (uint64_t i = 0; i < 64; ++i) {
      ASSERT_EQ(text_.repeatedMarksFrom(p) >> i & 1U, repeated[p + i]) << p << ' ' << i;
      ASSERT_EQ(text_.reversedMarksFrom(p) >> i & 1U, reversed[p + i]) << p << ' ' << i;
    }
  }
}

TEST_F(ContigTextTest, BasesAtAnyPosition) {
  RandomAssemblies random(10);
  const std::string letters = random.bases(400);
  make({{letters}}, 31);
  for (uint64_t from = 0; from < ContigText::kPad + 400; from += 64) text_.pack(from, from + 64);
  const uint64_t start = text_.contigs()[0].start;
  for (uint64_t at = 0; at < letters.size(); ++at) {
    for (std::size_t count = 1; count <= DATA_LEN && at + count <= letters.size(); ++count) {
      ASSERT_EQ(text_.basesAt(start + at, static_cast<int>(count)),
                packedKmer(letters.substr(at, count)))
          << at << ' ' << count;
    }
  }
}

TEST_F(ContigTextTest, NonAcgtWindowsAreMarkedWhereverTheyArePacked) {
  std::string withN = lettersOf(200);
  for (const std::size_t at : {0UL, 31UL, 32UL, 63UL, 64UL, 100UL, 199UL}) withN[at] = 'N';
  make({{lettersOf(45), withN}}, 15);
  for (uint64_t from = 0; from < text_.end(); from += 32) text_.pack(from, from + 32);
  const TextContig& contig = text_.contigs()[1];
  for (uint64_t w = 0; w < contig.windows; ++w) {
    const bool isNonAcgt = withN.substr(w, 15).find('N') != std::string::npos;
    ASSERT_EQ(text_.isMarkedRepeated(contig.start + w), isNonAcgt) << w;
    ASSERT_EQ(text_.keyAt(contig.start + w), packedKmer(withN.substr(w, 15))) << w;
  }
  ASSERT_EQ(text_.contigs()[0].hasNonAcgt, 0U);
}

TEST_F(ContigTextTest, NoContigsHaveNoWindows) {
  make({{}, {"ACGT"}}, 31);
  EXPECT_EQ(text_.windows(), 0U);
  for (uint64_t p = 0; p < text_.end() + ContigText::kPad; ++p) EXPECT_FALSE(text_.isWindow(p));
}

}  // namespace
}  // namespace velk::test
