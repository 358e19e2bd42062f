// The search of samples, and what is made of its time.
#include "survey/timeModel.h"

#include <gtest/gtest.h>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "tests/support/assembly.h"

namespace velk::survey {
namespace {

class TrySearchTest : public test::AssemblyTest {
 protected:
  TrySearchTest() { load({{{left_}, {right_, 200}}}); }

  SearchTrial searched(const std::vector<Sample>& samples) const {
    const Scaffolds all(scaffoldInfo, scaffoldSum);
    const BoundedIndex index(FirstContigs(all, 1000000), Kmer, 1);
    return trySearch(index, all, optionsOfRun(), samples);
  }

  const std::string left_ = test::randomBases(3000, 1);
  const std::string right_ = test::randomBases(3000, 2);
};

TEST_F(TrySearchTest, CountsReadsAndWhatIsFound) {
  // One read over the left contig's end, one inside it, one from elsewhere.
  const std::string over = left_.substr(2950) + test::randomBases(50, 3);
  const SearchTrial trial =
      searched({{0, {over, left_.substr(0, 100), test::randomBases(100, 4)}, {}}});
  EXPECT_EQ(trial.reads, 3U);
  EXPECT_EQ(trial.found, 1U);
  EXPECT_GT(trial.seconds, 0);
  EXPECT_DOUBLE_EQ(trial.foundPerRead(), 1.0 / 3);
  EXPECT_DOUBLE_EQ(trial.secondsPerRead(), trial.seconds / 3);
}

// With 400 bases of insert the mate lies in the gap; a large insert's pairs point outwards.
TEST_F(TrySearchTest, SearchesPairsByTheirInsert) {
  const std::string anchor = left_.substr(2750, 100);
  const std::string mate = test::randomBases(100, 5);
  EXPECT_EQ(searched({{400, {anchor}, {mate}}}).found, 1U);
  EXPECT_EQ(searched({{400, {anchor}, {mate}}}).reads, 2U);
  EXPECT_EQ(searched({{400, {left_.substr(1000, 100)}, {mate}}}).found, 0U);
  BIGGAPLEN = 10000;
  const std::string farAnchor = test::reverseComplement(left_.substr(1150, 100));
  EXPECT_EQ(searched({{2000, {farAnchor}, {mate}}}).found, 1U);
  EXPECT_EQ(searched({{999, {farAnchor}, {mate}}}).found, 0U);
}

TEST_F(TrySearchTest, NothingToSearch) {
  const SearchTrial trial = searched({});
  EXPECT_EQ(trial.reads, 0U);
  EXPECT_EQ(trial.secondsPerRead(), 0);
  EXPECT_EQ(trial.foundPerRead(), 0);
}

TEST(InputSeconds, ReadingIsSharedByNobody) {
  EXPECT_DOUBLE_EQ(inputSeconds({1000, false, 0.5}, 2.0, 1), 1000 * 2.5);
  EXPECT_DOUBLE_EQ(inputSeconds({1000, true, 0.5}, 2.0, 4), 1000 * (0.5 + 1.0));
}

}  // namespace
}  // namespace velk::survey
