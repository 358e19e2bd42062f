#include "report/summaryText.h"

#include <gtest/gtest.h>

#include <sstream>

namespace velk::test {
namespace {

using report::RunData;
using run::Side;

// Two libraries and 13 gaps: 11 whose flanks are repeats, the last of them with reads; one beside
// a short contig; and one with as many reads as are predicted.
RunData poorRun() {
  constexpr uint64_t kGaps = 13;
  RunData data;
  data.sample = "sample";
  data.settings.bigGapLength = 100;
  data.assembly.bases = 130000;
  data.readsSearched = 263000;
  data.readsFound = 1005;
  data.warnings = {"one thing\nand another"};
  data.libraries.resize(2);
  data.libraries[0].name = "pairs";
  data.libraries[0].arePairs = true;
  data.libraries[0].orientation = "FR";
  data.libraries[0].insert = 300.4;
  data.libraries[0].spread = 19.6;
  data.libraries[1].name = "single\u00E4";
  for (report::LibraryData& library : data.libraries) {
    library.readsSearched = 130000;
    library.basesSearched = 13000000;
    library.onContigs = 13000;
  }
  data.scaffolds.emplace_back("s");
  data.evidence.emplace(kGaps, std::vector<std::string>{"pairs", "single\u00E4"});
  data.counts.resize(kGaps * 2 * run::kReadKinds);
  for (uint64_t n = 0; n < kGaps; ++n) {
    const uint64_t length = 500 - 10 * n;  // the first ones miss most
    data.gaps.push_back({0, 10000 * n, 10000 * n + length, length, false, 9000, 9000, {}, 0, n});
    data.evidence->setKmers(n, Side::kFront, n == 11 ? 0 : 200, n < 11 ? 196 : 0);
    data.evidence->setKmers(n, Side::kBehind, 200, n < 11 ? 196 : 0);
  }
  data.gaps[11].basesBefore = 12;
  data.counts[10 * 2 * run::kReadKinds] = 5;
  data.counts[12 * 2 * run::kReadKinds] = 1000;
  return data;
}

std::string textOf(const RunData& data, std::size_t width) {
  const report::Judge judge(data);
  const auto gaps = judgeAll(data, judge);
  return report::summaryText({data, judge, gaps}, width);
}

std::vector<std::string> linesOf(const std::string& text) {
  std::istringstream input(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(input, line);) lines.push_back(line);
  return lines;
}

TEST(SummaryTextTest, TheRunAndItsLibraries) {
  const std::string text = textOf(poorRun(), 200);
  EXPECT_EQ(text.substr(0, text.find("\nWhy")),
            "sample: found 1,005 of 263,000 reads; 2 of 13 gaps have reads, 0 in the median.\n"
            "  pairs: found 0 of 130,000, insert size 300 +- 20, FR\n"
            "  single\u00E4: found 0 of 130,000\n"
            "[WARNING]: one thing\uFFFDand another\n");
}

TEST(SummaryTextTest, ReasonsWithBars) {
  const std::string text = textOf(poorRun(), 80);
  EXPECT_NE(text.find("\nWhy gaps have few reads or none\n"
                      "                              none       few\n"
                      "  repeated flanks               10         1  "
                      "##################################\n"
                      "  short contig                   1         0  ####\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(textOf(poorRun(), 45).find('#'), std::string::npos);  // there is no room
}

TEST(SummaryTextTest, TheTenGapsThatMissMost) {
  const std::vector<std::string> lines = linesOf(textOf(poorRun(), 200));
  const auto first = std::find(lines.begin(), lines.end(), "Gaps to look at first");
  ASSERT_EQ(lines.end() - first, 11);
  for (int n = 0; n < 10; ++n) {
    EXPECT_EQ(first[n + 1].find("  gap " + std::to_string(n) + ", s:"), 0U) << first[n + 1];
    EXPECT_NE(first[n + 1].find(": repeated flanks (98 % of k-mers)"), std::string::npos);
  }
  EXPECT_EQ(first[1].find("  gap 0, s:1-500, 0 reads of about "), 0U);
}

// The table of the reasons takes 44 characters.
TEST(SummaryTextTest, NoLineIsTooWide) {
  for (const std::size_t width : {40U, 60U, 80U}) {
    for (const std::string& line : linesOf(textOf(poorRun(), width))) {
      EXPECT_LE(line.size(), std::max<std::size_t>(width, 44)) << line;
    }
  }
}

TEST(SummaryTextTest, OfVelksOwnFiles) {
  RunData data = poorRun();
  data.isOfVelk = true;
  data.evidence.reset();
  data.warnings.clear();
  data.reach.resize(data.gaps.size());
  data.reach[3] = {470, 0};
  EXPECT_EQ(textOf(data, 200),
            "sample: found 1,005 reads; 2 of 13 gaps have reads, 0 in the median; 1 is covered "
            "whole by exact reads.\n  pairs: found 0\n  single\u00E4: found 0\n");
}

}  // namespace
}  // namespace velk::test
