#include "report/page.h"

#include <gtest/gtest.h>

#include <random>

namespace velk::test {
namespace {

using report::RunData;

// A run of many gaps of all lengths and reasons, with names that are long and full of marks.
RunData manyGaps(uint64_t count) {
  std::mt19937 chance(1);
  const auto below = [&](uint32_t most) { return static_cast<uint32_t>(chance() % most); };
  RunData data;
  data.sample = std::string(10000, '<');
  data.assembly.bases = 2000 * count;
  data.settings.bigGapLength = 500;
  for (int n = 0; n < 60; ++n) data.warnings.emplace_back(10000, '&');
  report::LibraryData library;
  library.name = std::string(10000, '"');
  library.arePairs = true;
  library.orientation = "FR";
  library.insert = 400;
  library.spread = 40;
  library.readsSearched = 20 * count;
  library.basesSearched = 2000 * count;
  library.onContigs = 10 * count;
  data.libraries.push_back(library);
  data.evidence.emplace(count, std::vector<std::string>{library.name});
  for (uint64_t gap = 0; gap < count; ++gap) {
    if (gap % 1000 == 0) data.scaffolds.emplace_back(200 + gap / 1000, '\'');
    const uint64_t length = 10 + below(1U << below(16));
    data.gaps.push_back({static_cast<uint32_t>(gap / 1000), 10000 * gap, 10000 * gap + length,
                         length, below(20) == 0, below(5000), below(5000),
                         static_cast<int64_t>(below(1U << below(16))), 9, gap});
    for (const uint32_t most : {30U, 30U, 20U, 50U}) {
      data.counts.push_back(below(3) == 0 ? below(most) : 0);
    }
    data.reach.push_back({below(300), below(300)});
    data.evidence->setKmers(gap, run::Side::kFront, below(20) == 0 ? 0 : 300, below(300));
    data.evidence->setKmers(gap, run::Side::kBehind, 300, below(300));
    for (uint32_t n = below(4); n > 0; --n) {
      data.evidence->addRefused(gap, 0, below(2) == 0 ? Refusal::kUnlike : Refusal::kShortOverlap);
    }
    for (uint32_t n = below(30); n > 0; --n) data.evidence->addFlankRead(gap);
  }
  return data;
}

TEST(PageTest, IsSmallHoweverManyGapsThereAre) {
  const RunData data = manyGaps(400000);
  const report::Judge judge(data);
  const auto gaps = judgeAll(data, judge);
  const std::string page = report::makePage({data, judge, gaps}, nullptr);
  EXPECT_LE(page.size(), report::kMostBytes);
  EXPECT_GT(page.size(), 1000000U);
}

}  // namespace
}  // namespace velk::test
