// Where reads lie, what pairs on contigs of many lengths show, and the insert sizes that follow.
#include "survey/insertSize.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "survey/boundedIndex.h"
#include "tests/support/assembly.h"

namespace velk::survey {
namespace {

constexpr std::size_t kRead = 100;

// A genome of random bases, contigs of many lengths cut out of it, and pairs from all over it.
class PairGeometryTest : public test::AssemblyTest {
 protected:
  PairGeometryTest() : genome_(test::randomBases(400000, 7)) {
    test::TestScaffold scaffold;
    for (std::size_t start = 0; start < genome_.size(); start += kGap) {
      const std::size_t length = 2000 + random_() % 12000;
      const std::string contig = genome_.substr(start, length);
      scaffold.push_back({contig, kGap});
      start += contig.size();
    }
    load({scaffold});
  }

  static Scaffolds all() { return {scaffoldInfo, scaffoldSum}; }

  // The measure of pairs whose fragments have a normally spread length; of each the reads are
  // `turn`ed.
  template <class Turn>
  PairMeasure measured(double mean, double spread, int pairs, Turn turn) {
    std::normal_distribution<double> lengths(mean, spread);
    const BoundedIndex index(FirstContigs(all(), 1000000), Kmer, 1);
    PairSurvey survey(index, all(), optionsOfRun());
    for (int i = 0; i < pairs; ++i) {
      const auto length = static_cast<std::size_t>(std::max(1.0 * kRead, lengths(random_)));
      std::string fragment = genome_.substr(random_() % (genome_.size() - length), length);
      if (random_() % 2 == 0) fragment = test::reverseComplement(fragment);
      std::string one = fragment.substr(0, kRead);
      std::string other = test::reverseComplement(fragment.substr(length - kRead));
      turn(one, other);
      survey.add(one, other);
    }
    return survey.measure();
  }

  static void inwards(std::string& /*one*/, std::string& /*other*/) {}

  static void outwards(std::string& one, std::string& other) {
    one = test::reverseComplement(one);
    other = test::reverseComplement(other);
  }

  static constexpr std::size_t kGap = 200;
  std::mt19937 random_{11};
  std::string genome_;
};

TEST_F(PairGeometryTest, InwardLibrary) {
  const PairMeasure measure = measured(350, 30, 4000, inwards);
  EXPECT_NEAR(measure.insert, 350, 0.02 * 350);
  EXPECT_NEAR(measure.spread, 30, 5);
  EXPECT_GT(measure.inward, 3000U);
  EXPECT_EQ(measure.outward + measure.sameStrand, 0U);
}

// Most fragments of this length lie on no single contig, and the longer ones more often.
TEST_F(PairGeometryTest, OutwardLibraryOfLongInserts) {
  const PairMeasure measure = measured(4000, 600, 8000, outwards);
  EXPECT_NEAR(measure.insert, 4000, 0.02 * 4000);
  EXPECT_GT(measure.outward, 1000U);
  EXPECT_EQ(measure.inward + measure.sameStrand, 0U);
}

TEST_F(PairGeometryTest, PairsOnOneStrand) {
  const PairMeasure measure = measured(350, 30, 1000, [](std::string& /*one*/, std::string& other) {
    other = test::reverseComplement(other);
  });
  EXPECT_GT(measure.sameStrand, 700U);
  EXPECT_EQ(measure.inward + measure.outward, 0U);
}

TEST_F(PairGeometryTest, PairsOnDifferentContigsDoNotCount) {
  PairGeometry geometry(indexedLengths(all()));
  geometry.add({0, 0, 0, 100, false}, {0, 1, 200, 300, true});
  geometry.add({0, 0, 0, 100, false}, {1, 0, 200, 300, true});
  EXPECT_EQ(geometry.measure().pairs(), 0U);
}

// A chimeric pair at the ends of the longest contig has one place where it fits, and says nothing.
TEST_F(PairGeometryTest, ChimerasHaveNoSay) {
  PairGeometry geometry({1000, 10000});
  for (int i = 0; i < 90; ++i)
    geometry.add({0, 0, i, i + 100, false}, {0, 0, i + 200, i + 300, true});
  for (int i = 0; i < 10; ++i) geometry.add({0, 1, 0, 100, true}, {0, 1, 9900, 10000, false});
  EXPECT_EQ(geometry.measure().orientation, Orientation::kInward);
  EXPECT_EQ(geometry.measure().insert, 300);
  geometry.add({0, 1, 0, 100, true}, {0, 1, 9900, 10000, false});
  EXPECT_EQ(geometry.measure().orientation, Orientation::kOutward);
}

TEST_F(PairGeometryTest, NothingIsMeasuredOfFewPairs) {
  PairGeometry geometry(indexedLengths(all()));
  for (int i = 0; i < 99; ++i) geometry.add({0, 0, 0, 100, false}, {0, 0, 200, 300, true});
  EXPECT_FALSE(geometry.measure().isMeasured());
  geometry.add({0, 0, 0, 100, false}, {0, 0, 200, 300, false});
  EXPECT_TRUE(geometry.measure().isMeasured());
}

TEST_F(PairGeometryTest, PlacesOfReads) {
  const std::string read = genome_.substr(500, kRead);
  Engine engine = engineOfRun();
  const auto placeOf = [&](const std::string& bases) {
    return placeOfRead(engine, all(), optionsOfRun(), bases);
  };
  const auto forward = placeOf(read);
  ASSERT_TRUE(forward);
  EXPECT_EQ(forward->start, 500);
  EXPECT_EQ(forward->end, 600);
  EXPECT_FALSE(forward->isReverse);
  const auto reverse = placeOf(test::reverseComplement(read));
  ASSERT_TRUE(reverse);
  EXPECT_EQ(reverse->start, 500);
  EXPECT_TRUE(reverse->isReverse);
  EXPECT_FALSE(placeOf(test::randomBases(kRead, 99)));
  EXPECT_FALSE(placeOf(read.substr(0, 30)));
  EXPECT_FALSE(placeOf("N" + read));
}

// Insert size and orientation of made libraries, clean, contaminated, and of fragmented assemblies.

// Fragments of a normally spread length, and how the reads of each lie.
struct Fragments {
  Orientation orientation;
  double insert;
  double spread;
};

struct Library {
  const char* name;
  Fragments made;
  Fragments others;             // that got among them
  double shareOfOthers;         // of the pairs
  double shareOfChimeras;       // of the pairs: ends of two places
  std::size_t shortest = 5000;  // contig, bases
  std::size_t longest = 40000;
};

void PrintTo(const Library& library, std::ostream* output) {
  *output << library.name;
}

constexpr Orientation kIn = Orientation::kInward;
constexpr Orientation kOut = Orientation::kOutward;
constexpr Orientation kSame = Orientation::kSameStrand;
constexpr Fragments kNone{};

const Library kLibraries[] = {
    {"inwardShort", {kIn, 180, 15}, kNone, 0, 0},
    {"inward", {kIn, 350, 35}, kNone, 0, 0},
    {"inwardWide", {kIn, 600, 150}, kNone, 0, 0},
    {"inwardLarge", {kIn, 2500, 250}, kNone, 0, 0},
    {"outwardShort", {kOut, 450, 40}, kNone, 0, 0},
    {"outward", {kOut, 3000, 300}, kNone, 0, 0},
    {"outwardLarge", {kOut, 9000, 1200}, kNone, 0, 0},
    {"inwardWithOutward", {kIn, 400, 40}, {kOut, 3000, 400}, 0.3, 0},
    {"outwardWithInward", {kOut, 5000, 500}, {kIn, 300, 60}, 0.3, 0},
    {"inwardFragmented", {kIn, 500, 80}, kNone, 0, 0, 200, 1500},
    {"outwardFragmented", {kOut, 3000, 400}, kNone, 0, 0, 500, 6000},
    {"inwardWithChimeras", {kIn, 350, 35}, kNone, 0, 0.1},
    {"outwardWithInwardFragmented", {kOut, 3000, 300}, {kIn, 300, 60}, 0.3, 0.02, 500, 6000},
    {"sameStrand", {kSame, 400, 40}, kNone, 0, 0.02},
};

class InsertSizeTest : public test::AssemblyTest, public ::testing::WithParamInterface<Library> {
 protected:
  // A genome of random bases cut into contigs, with a gap of 100 bases behind each.
  InsertSizeTest() : genome_(test::randomBases(1500000, 7)) {
    const Library& library = GetParam();
    test::TestScaffold scaffold;
    for (std::size_t at = 0; at < genome_.size();) {
      const std::size_t length =
          library.shortest + random_() % (library.longest - library.shortest);
      scaffold.push_back({genome_.substr(at, length), 100});
      at += length + 100;
    }
    load({scaffold});
  }

  std::string fragment(const Fragments& fragments) {
    std::normal_distribution<double> lengths(fragments.insert, fragments.spread);
    const auto length = static_cast<std::size_t>(std::max(1.0 * kRead, lengths(random_)));
    std::string made = genome_.substr(random_() % (genome_.size() - length), length);
    return random_() % 2 == 0 ? test::reverseComplement(made) : made;
  }

  // Takes in a pair of a fragment, read as these fragments are.
  void take(PairSurvey& pairs, const Fragments& fragments, const std::string& made) {
    std::string one = made.substr(0, kRead);
    std::string other = made.substr(made.size() - kRead);
    if (fragments.orientation == kIn) other = test::reverseComplement(other);
    if (fragments.orientation == kOut) one = test::reverseComplement(one);
    if (random_() % 50 == 0) one[50] = one[50] == 'A' ? 'C' : 'A';
    random_() % 2 == 0 ? pairs.add(one, other) : pairs.add(other, one);
  }

  PairMeasure measured(int count) {
    const Library& library = GetParam();
    const Scaffolds all(scaffoldInfo, scaffoldSum);
    const BoundedIndex index(FirstContigs(all, 10000000), Kmer, 1);
    PairSurvey pairs(index, all, optionsOfRun());
    std::uniform_real_distribution<double> share(0, 1);
    for (int i = 0; i < count; ++i) {
      const double kind = share(random_);
      const Fragments& fragments = kind < library.shareOfOthers ? library.others : library.made;
      std::string made = fragment(fragments);
      if (kind > 1 - library.shareOfChimeras) made = made.substr(0, kRead) + fragment(library.made);
      take(pairs, fragments, made);
    }
    return pairs.measure();
  }

  std::mt19937 random_{11};
  std::string genome_;
};

TEST_P(InsertSizeTest, IsMeasuredWithinThreeHundredths) {
  const Fragments& made = GetParam().made;
  const PairMeasure measure = measured(10000);
  EXPECT_TRUE(measure.isMeasured());
  EXPECT_EQ(measure.orientation, made.orientation)
      << measure.inward << " inward, " << measure.outward << " outward, " << measure.sameStrand;
  if (made.orientation == kSame) return;
  EXPECT_NEAR(measure.insert, made.insert, 0.03 * made.insert);
  EXPECT_NEAR(measure.spread, made.spread, 0.2 * made.spread + 5);
}

TEST_P(InsertSizeTest, FewPairsMeasureNothing) {
  EXPECT_FALSE(measured(50).isMeasured());
}

INSTANTIATE_TEST_SUITE_P(Made, InsertSizeTest, ::testing::ValuesIn(kLibraries),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace

}  // namespace velk::survey
