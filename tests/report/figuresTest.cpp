// The pictures of the page and the sections around them, of small runs.
#include "report/figures.h"

#include <gtest/gtest.h>

#include "report/drawing.h"
#include "report/page.h"

namespace velk::test {
namespace {

using report::GapRead;
using report::GapReads;
using report::InsertBin;
using report::LibraryData;
using report::ReadKind;
using report::RunData;
using report::Setting;

bool has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

std::size_t countOf(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

LibraryData pairs(const std::string& orientation) {
  LibraryData library;
  library.name = "a";
  library.kind = "pairs";
  library.arePairs = true;
  library.orientation = orientation;
  library.insert = 300;
  library.insertSource = "measured";
  library.spread = 20;
  return library;
}

// Gaps of 100 bases at every 1,000 of a scaffold, with contigs of 900 bases, and so many exact
// reads of its only library.
RunData runOf(const std::vector<uint32_t>& exact) {
  RunData data;
  data.libraries.push_back(pairs("FR"));
  data.scaffolds.emplace_back("s");
  for (uint64_t n = 0; n < exact.size(); ++n) {
    data.gaps.push_back({0, 1000 * n + 900, 1000 * n + 1000, 100, false, 900, 900, {}, 0, n});
    data.counts.insert(data.counts.end(), {exact[n], 0, 0, 0});
    data.readsFound += exact[n];
  }
  return data;
}

TEST(InsertFigureTest, BarsOfTheOrientationInUseHaveTheColour) {
  LibraryData library = pairs("RF");
  library.inserts[0] = {InsertBin{240, 250, 30}};
  library.inserts[1] = {InsertBin{280, 300, 100}, InsertBin{300, 320, 200}};
  const std::string svg = report::plotInserts(library, 1);
  EXPECT_TRUE(has(svg, "class=\"bars lib1\""));
  EXPECT_TRUE(has(svg, "class=\"bars other\""));
  EXPECT_TRUE(has(svg, ">measured 300<"));
  EXPECT_FALSE(has(svg, "No pair of the sample"));
  library.orientation = "FR";
  library.inserts[1].clear();
  EXPECT_FALSE(has(report::plotInserts(library, 1), "class=\"bars other\""));
}

TEST(InsertFigureTest, WithoutPairsTheGivenSizeStandsAlone) {
  const std::string svg = report::plotInserts(pairs("FR"), 0);
  EXPECT_TRUE(has(svg, "No pair of the sample lies on one contig."));
  EXPECT_TRUE(has(svg, ">measured 300<"));
  EXPECT_FALSE(has(svg, "class=\"bars"));
}

// The axis ends at what nearly all pairs have, so the mark of a far larger size lies at the right,
// and its text to the left of it.
TEST(InsertFigureTest, TheMarkOfALargeSize) {
  LibraryData library = pairs("FR");
  for (uint64_t from = 0; from < 400; from += 10)
    library.inserts[0].push_back({from, from + 10, 5});
  library.insert = 390;
  library.spread = 5;
  EXPECT_TRUE(has(report::plotInserts(library, 0), "text-anchor=\"end\" class=\"mark-name\""));
  library.insert = 20;
  const std::string svg = report::plotInserts(library, 0);
  EXPECT_TRUE(has(svg, "class=\"mark-name\">measured 20<"));
  EXPECT_FALSE(has(svg, "text-anchor=\"end\" class=\"mark-name\""));
}

TEST(DrawingTest, EveryKindAndLibraryHasItsStrokes) {
  RunData data = runOf({1});
  data.libraries.resize(10, pairs("FR"));
  const GapReads reads{{{1, 850, 950, 0, ReadKind::kExact},
                        {1, 600, 700, 0, ReadKind::kAnchor},
                        {2, 920, 990, 9, ReadKind::kEstimate},
                        {3, 860, 890, 1, ReadKind::kContained}},
                       0};
  const std::string svg = drawGap(data, 0, reads, Setting::kInPage);
  EXPECT_TRUE(has(svg, "class=\"read lib0 exact\""));
  EXPECT_TRUE(has(svg, "class=\"read lib0 anchor\""));
  EXPECT_TRUE(has(svg, "class=\"read lib1 estimate\""));  // the tenth has the colour of the second
  EXPECT_TRUE(has(svg, "class=\"read lib1 contained\""));
  EXPECT_EQ(countOf(svg, "class=\"join\""), 1U);
  EXPECT_TRUE(has(svg, "depth up to 2<"));  // an exact one and an estimate at 920
  EXPECT_TRUE(has(svg, ">100 N<"));
  EXPECT_FALSE(has(svg, "<style"));
  EXPECT_TRUE(has(drawGap(data, 0, reads, Setting::kAlone), "<style"));
}

TEST(DrawingTest, EveryTickHasItsNumber) {
  for (int64_t from = 0; from < 100; from += 7) {
    const GapReads reads{{{1, 700 - from, 800, 0, ReadKind::kAnchor}}, 0};
    const std::string svg = drawGap(runOf({1}), 0, reads, Setting::kInPage);
    const std::size_t lines = countOf(svg, "class=\"axis\"");
    EXPECT_GT(lines, 3U);
    EXPECT_EQ(lines, countOf(svg, "text-anchor=\"middle\" class=\"tick\"") + 1) << from;
  }
}

TEST(DrawingTest, AGapWithoutReads) {
  const std::string svg = drawGap(runOf({0}), 0, {}, Setting::kInPage);
  EXPECT_TRUE(has(svg, "aria-label=\"Gap 0 of s, 100 bases, with 0 reads\""));
  EXPECT_FALSE(has(svg, "depth up to"));
  EXPECT_FALSE(has(svg, "class=\"read"));
}

TEST(DrawingTest, WholeFragmentsUpToTheLimit) {
  GapReads reads;
  for (uint64_t n = 0; n < 200; ++n) {  // 200 pairs, of which 150 are drawn
    reads.reads.push_back({n, 800, 890, 0, ReadKind::kAnchor});
    reads.reads.push_back({n, 910, 1000, 0, ReadKind::kEstimate});
  }
  const std::string svg = drawGap(runOf({0}), 0, reads, Setting::kInPage);
  const auto from = svg.find("class=\"join\"");
  const std::string joins = svg.substr(svg.rfind("<path", from), from - svg.rfind("<path", from));
  EXPECT_EQ(countOf(joins, "M"), 150U);
}

TEST(DrawingTest, AShortGapHasNoNameButAWidth) {
  RunData data = runOf({0});
  data.gaps[0].to = data.gaps[0].from;
  const std::string svg =
      drawGap(data, 0, {{{1, 100, 200, 0, ReadKind::kAnchor}}, 0}, Setting::kInPage);
  EXPECT_FALSE(has(svg, "> N<"));
  EXPECT_FALSE(has(svg, ">0 N<"));
  EXPECT_TRUE(has(svg, "width=\"1.5\""));
}

// As many reads at each gap as its number.
class MadeReads : public report::GapReadSource {
 public:
  GapReads readsOf(std::size_t gap) override {
    GapReads reads;
    const auto from = static_cast<int64_t>(1000 * gap);
    for (uint64_t n = 0; n < gap; ++n) {
      reads.reads.push_back({n, from + 850, from + 950, 0, ReadKind::kExact});
    }
    return reads;
  }
};

class SectionsTest : public ::testing::Test {
 protected:
  std::string drawings(const RunData& data, std::size_t mostBytes) {
    const report::Judge judge(data);
    const auto gaps = judgeAll(data, judge);
    return report::drawingSection({data, judge, gaps}, reads_, mostBytes, drawn_);
  }

  MadeReads reads_;
  std::set<std::size_t> drawn_;
};

TEST_F(SectionsTest, TheRichestThePoorestAndTheEmptyOnes) {
  std::vector<uint32_t> exact;
  for (uint32_t n = 0; n < 200; ++n) exact.push_back(n < 50 ? 0 : n);
  exact[60] = 1;  // the poorest of all
  const std::string html = drawings(runOf(exact), 10'000'000);
  EXPECT_EQ(drawn_.size(), 80U + 70 + 40);
  EXPECT_TRUE(drawn_.contains(39));
  EXPECT_FALSE(drawn_.contains(40));  // the 41st of the empty ones
  EXPECT_TRUE(has(html, "<h3>Most reads</h3><figure class=\"panel\" id=\"gap-199\">"));
  EXPECT_TRUE(has(html, "<h3>Fewest reads</h3><figure class=\"panel\" id=\"gap-60\">"));
  EXPECT_TRUE(has(html, "<h3>Without reads</h3><figure class=\"panel\" id=\"gap-0\">"));
  EXPECT_TRUE(has(html, "<summary>76 more</summary>"));
  EXPECT_TRUE(has(html, "1 read: 1 exact, 0 estimates"));
  EXPECT_TRUE(has(html, "no reads"));
}

TEST_F(SectionsTest, DrawingsEndWhereThereIsNoRoom) {
  const std::string html = drawings(runOf({0, 1, 2, 3, 4, 5}), 5000);
  EXPECT_GT(drawn_.size(), 0U);
  EXPECT_LT(drawn_.size(), 6U);
  EXPECT_LT(html.size(), 10000U);
  EXPECT_FALSE(has(drawings(runOf({1}), 0), "<figure"));
}

TEST_F(SectionsTest, OfVelksOwnFilesThereAreNoAnchors) {
  RunData data = runOf({0, 1});
  EXPECT_TRUE(has(drawings(data, 100000), ">anchor</li>"));
  data.isOfVelk = true;
  EXPECT_FALSE(has(drawings(data, 100000), ">anchor</li>"));
}

TEST(SectionTest, ManyLibraries) {
  RunData data = runOf({1});
  data.libraries.resize(43, pairs("FR"));
  data.counts.resize(43 * run::kReadKinds);
  const report::Judge judge(data);
  const auto gaps = judgeAll(data, judge);
  const std::string html = report::librarySection({data, judge, gaps});
  EXPECT_EQ(countOf(html, "<div class=\"panel library"), 40U);
  EXPECT_TRUE(has(html, "3 more libraries are in summary.json."));
}

TEST(SectionTest, OneReadOfVelk) {
  RunData data = runOf({1});
  data.isOfVelk = true;
  const report::Judge judge(data);
  const auto gaps = judgeAll(data, judge);
  EXPECT_TRUE(has(report::topSection({data, judge, gaps}),
                  "1 read was found at gaps; 1 of 1 gaps have reads."));
}

TEST(FigureTest, TheMedianOfAnEvenNumberOfGapsLiesBetweenTheMiddleTwo) {
  const auto medianOf = [](const std::vector<uint32_t>& exact) {
    const RunData data = runOf(exact);
    const report::Judge judge(data);
    const auto gaps = judgeAll(data, judge);
    return report::tallyOf({data, judge, gaps}).medianReads;
  };
  EXPECT_EQ(medianOf({7, 1, 3}), 3U);
  EXPECT_EQ(medianOf({10, 1, 4, 6}), 5U);
  EXPECT_EQ(medianOf({9, 2}), 5U);  // whole reads: down from 5.5
}

TEST(FigureTest, NoGapIsSpanned) {
  RunData data = runOf({1, 0});
  const report::Judge judge(data);
  const auto gaps = judgeAll(data, judge);
  std::size_t spanned = 9;
  EXPECT_TRUE(has(report::plotLengths({data, judge, gaps}, spanned), "No gap is spanned"));
  EXPECT_EQ(spanned, 0U);
  data.gaps[0].implied = -20;  // the contigs overlap
  data.gaps[0].isPlaceholder = true;
  const std::string svg = report::plotLengths({data, judge, gaps}, spanned);
  EXPECT_EQ(spanned, 1U);
  EXPECT_TRUE(has(svg, "placeholder\""));
  EXPECT_TRUE(has(svg, "(lower edge: less)"));
  EXPECT_FALSE(has(svg, "No gap is spanned"));
}

}  // namespace
}  // namespace velk::test
