#include "report/comparison.h"

#include <gtest/gtest.h>

namespace velk::test {
namespace {

using report::ReadKind;
using report::RunData;

// A run of gaps of 10 bases at every 1,000 of a scaffold, and what its libraries have at them:
// exact reads, estimates, contained reads and anchors, by gap and library.
class MadeRun {
 public:
  MadeRun(const std::vector<std::string>& libraries, const std::vector<uint64_t>& places,
          std::vector<uint32_t> counts) {
    for (const std::string& name : libraries) {
      data_.libraries.emplace_back();
      data_.libraries.back().name = name;
    }
    data_.scaffolds.emplace_back("<s>");
    for (const uint64_t place : places) {
      data_.gaps.push_back({0, place, place + 10, 10, false, 500, 500, {}, 0, data_.gaps.size()});
    }
    data_.counts = std::move(counts);
    for (std::size_t gap = 0; gap < places.size(); ++gap) data_.readsFound += data_.belonging(gap);
    judge_.emplace(data_);
    gaps_ = report::judgeAll(data_, *judge_);
  }

  report::Findings findings() const { return {data_, *judge_, gaps_}; }

 private:
  RunData data_;
  std::optional<report::Judge> judge_;
  std::vector<report::Judgement> gaps_;
};

std::string same(const std::string& name) {
  return name;
}

// Gap 0 gains 3 and loses 1 of two libraries; gap 1 has one read of another kind; gap 2 loses all;
// gap 3 is filled; gap 4 does not change; each run has one more.
class ComparisonTest : public ::testing::Test {
 protected:
  MadeRun one_{{"a", "<b>"}, {1000, 2000, 3000, 4000, 5000, 6000}, {5, 2, 0, 7, 1, 0, 0, 0,  //
                                                                    3, 1, 0, 0, 0, 0, 0, 0,  //
                                                                    4, 0, 2, 1, 0, 0, 0, 0,  //
                                                                    0, 0, 0, 0, 0, 0, 0, 0,  //
                                                                    9, 9, 9, 9, 9, 9, 9, 9,  //
                                                                    1, 0, 0, 0, 0, 0, 0, 0}};
  MadeRun other_{{"c", "a"}, {1000, 2000, 3000, 4000, 5000, 7000}, {0, 0, 0, 0, 8, 2, 1, 6,  //
                                                                    0, 0, 0, 0, 2, 2, 0, 0,  //
                                                                    0, 0, 0, 0, 0, 0, 0, 0,  //
                                                                    0, 6, 0, 0, 0, 0, 0, 0,  //
                                                                    9, 9, 9, 9, 9, 9, 9, 9,  //
                                                                    0, 0, 0, 0, 0, 0, 0, 5}};
  report::Comparison compared_ = compare(one_.findings(), other_.findings());

  const report::KindCounts& kindOf(std::size_t library, ReadKind kind) const {
    return compared_.kinds.at(library * run::kReadKinds + static_cast<std::size_t>(kind));
  }

  // "gap: changes" of a shared gap.
  std::string changesOf(std::size_t gap) const {
    for (const report::SharedGap& shared : compared_.gaps) {
      if (shared.one != gap) continue;
      return changesText(
          compared_, changesAt(compared_, shared, one_.findings(), other_.findings()), "-", same);
    }
    return "none";
  }
};

TEST_F(ComparisonTest, Gaps) {
  EXPECT_EQ(compared_.gaps.size(), 5U);
  EXPECT_EQ(compared_.onlyOne, 1U);
  EXPECT_EQ(compared_.onlyOther, 1U);
  EXPECT_EQ(compared_.gained, 2U);
  EXPECT_EQ(compared_.filled, 1U);
  EXPECT_EQ(compared_.lost, 1U);
  EXPECT_EQ(compared_.emptied, 1U);
  EXPECT_EQ(compared_.gaps.front().one, 3U);  // +6
  EXPECT_EQ(compared_.gaps.front().gain, 6);
  EXPECT_EQ(compared_.gaps.back().one, 2U);  // -4
  EXPECT_EQ(compared_.gaps.back().gain, -4);
}

TEST_F(ComparisonTest, LibrariesAreTheSameByTheirNames) {
  ASSERT_EQ(compared_.libraries.size(), 3U);
  EXPECT_EQ(compared_.libraries[0].name, "a");
  EXPECT_EQ(compared_.libraries[0].one, 0U);
  EXPECT_EQ(compared_.libraries[0].other, 1U);
  EXPECT_EQ(compared_.libraries[1].name, "<b>");
  EXPECT_FALSE(compared_.libraries[1].other);
  EXPECT_EQ(compared_.libraries[2].name, "c");
  EXPECT_FALSE(compared_.libraries[2].one);
  EXPECT_EQ(compared_.libraries[2].other, 0U);
}

TEST_F(ComparisonTest, GainsAndLossesByLibraryAndKind) {
  const report::KindCounts& exact = kindOf(0, ReadKind::kExact);
  EXPECT_EQ(exact.one, 5U + 3 + 4 + 0 + 9 + 1);
  EXPECT_EQ(exact.other, 8U + 2 + 0 + 0 + 9 + 0);
  EXPECT_EQ(exact.gained.reads, 3U);
  EXPECT_EQ(exact.gained.gaps, 1U);
  EXPECT_EQ(exact.lost.reads, 1U + 4);  // gap 5 of the first run alone is no loss
  EXPECT_EQ(exact.lost.gaps, 2U);
  const report::KindCounts& anchors = kindOf(0, ReadKind::kAnchor);
  EXPECT_EQ(anchors.lost.reads, 1U + 1);
  EXPECT_EQ(anchors.gained.reads, 0U);  // nor is one of the second alone a gain
  EXPECT_EQ(kindOf(1, ReadKind::kContained).lost.reads, 9U);
  EXPECT_EQ(kindOf(2, ReadKind::kEstimate).gained.reads, 6U + 9);
  EXPECT_EQ(kindOf(2, ReadKind::kEstimate).gained.gaps, 2U);
}

TEST_F(ComparisonTest, ChangesOfAGap) {
  EXPECT_EQ(changesOf(0), "a: +3 exact, +1 contained, -1 anchor; <b>: -1 exact");
  EXPECT_EQ(changesOf(1), "a: -1 exact, +1 estimate");
  EXPECT_EQ(changesOf(3), "c: +6 estimate");
  EXPECT_EQ(changesOf(4),
            "<b>: -9 exact, -9 estimate, -9 contained, -9 anchor; c: +9 exact, +9 estimate, +9 "
            "contained, +9 anchor");
}

TEST_F(ComparisonTest, ThePageHasThem) {
  const std::string page = comparisonPage(one_.findings(), other_.findings(), {"one", "<other>"});
  EXPECT_NE(page.find("<td class=\"word changes\"><bdi>a</bdi>: +3 exact, +1 contained, "
                      "&minus;1 anchor; <bdi>&lt;b&gt;</bdi>: &minus;1 exact<"),
            std::string::npos);
  EXPECT_NE(page.find("&minus;1 exact, +1 estimate<"), std::string::npos);  // as many as before
  EXPECT_EQ(page.find("<other>"), std::string::npos);
  EXPECT_NE(page.find("(left edge: none)"), std::string::npos);
}

TEST_F(ComparisonTest, TheTextHasThem) {
  const std::string text = comparisonText(one_.findings(), other_.findings(), 200);
  EXPECT_NE(text.find("+3 at 1"), std::string::npos);
  EXPECT_NE(text.find("-5 at 2"), std::string::npos);
  EXPECT_NE(text.find("8 reads, then 10 (a: +3 exact, +1 contained, -1 anchor; <b>: -1 exact)"),
            std::string::npos);
  EXPECT_NE(text.find("Gaps that lost most\n  gap 2, <s>:3001-3010, 4 reads, then 0 (a: -4 exact, "
                      "-2 contained, -1 anchor): no single reason\n"),
            std::string::npos);
}

TEST(Comparison, WithoutSharedGaps) {
  const MadeRun one({"a"}, {1000}, {1, 2, 3, 4});
  const MadeRun other({"a"}, {2000}, {1, 2, 3, 4});
  const std::string page = comparisonPage(one.findings(), other.findings(), {"one", "other"});
  EXPECT_NE(page.find("1 of the first alone, 1 of the second"), std::string::npos);
  const std::string text = comparisonText(one.findings(), other.findings(), 1);
  EXPECT_EQ(text.find("Gaps that"), std::string::npos);
}

}  // namespace
}  // namespace velk::test
