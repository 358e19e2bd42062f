#include "run/extract.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "run/failure.h"
#include "run/tables.h"
#include "tests/run/bamFile.h"
#include "tests/run/madeReads.h"

namespace velk::test {
namespace {

using run::ExtractForm;
using run::ExtractPart;
using run::ExtractRequest;
using run::GapRange;

class ExtractTest : public OutputsTest {
 protected:
  ExtractTest() : dir_(write("out")) {}

  std::string extract(const ExtractRequest& request) {
    run::extractReads(request, folder_.path("extracted"));
    return contentOf(folder_.path("extracted"));
  }

  std::string refusal(const ExtractRequest& request, run::Status status) {
    try {
      extract(request);
    } catch (const run::Failure& failure) {
      EXPECT_EQ(failure.status, status);
      return failure.what();
    }
    return "";
  }

  // The records of a gap in the whole file.
  std::string recordsOf(const std::string& name, uint64_t gap) const {
    const std::string mark = "\tzg:i:" + std::to_string(gap);
    std::istringstream lines(readBgzip(dir_ + "/" + name));
    std::string text;
    std::string line;
    while (std::getline(lines, line)) {
      const bool isOfGap = line.ends_with(mark);
      for (int n = 0; n < 4; ++n) {
        if (isOfGap) text += line + "\n";
        if (n < 3) std::getline(lines, line);
      }
    }
    return text;
  }

  std::string dir_;
};

TEST_F(ExtractTest, TheReadsOfEachGap) {
  std::string all;
  for (uint64_t gap = 0; gap < assembly().gaps().size(); ++gap) {
    const std::string expected = recordsOf("pairs.fq.gz", gap) + recordsOf("singles.fq.gz", gap);
    EXPECT_EQ(extract({dir_, {gap}}) == expected, true) << gap;
    EXPECT_FALSE(expected.empty()) << gap;
    all = expected + all;
  }
  std::vector<GapRange> gaps;
  for (uint64_t gap = assembly().gaps().size(); gap-- > 0;) gaps.push_back(gap);
  EXPECT_EQ(extract({dir_, gaps}) == all, true);
}

TEST_F(ExtractTest, ARangeOfGaps) {
  for (const ExtractForm form : {ExtractForm::kFastq, ExtractForm::kBam}) {
    const std::string expected = extract({dir_, {1, 4, 5, 6}, form});
    EXPECT_EQ(extract({dir_, {1, {4, 6}}, form}) == expected, true);
    EXPECT_NE(extract({dir_, {1, 4, 5, 7}, form}) == expected, true);
  }
}

TEST_F(ExtractTest, PairsAndSingleReadsAlone) {
  const std::string pairs = recordsOf("pairs.fq.gz", 3);
  const std::string singles = recordsOf("singles.fq.gz", 3);
  EXPECT_FALSE(pairs.empty() || singles.empty());
  EXPECT_EQ(extract({dir_, {3}, ExtractForm::kFastq, 0, ExtractPart::kPairs}), pairs);
  EXPECT_EQ(extract({dir_, {3}, ExtractForm::kFastq, 0, ExtractPart::kSingles}), singles);
}

TEST_F(ExtractTest, NoReadsOfAResultWithoutAny) {
  entries_.clear();
  EXPECT_EQ(extract({write("empty"), {0}}), "");
}

TEST_F(ExtractTest, FastaHasTheSameReads) {
  std::string expected;
  std::istringstream lines(extract({dir_, {3}}));
  std::string head;
  std::string bases;
  std::string unused;
  while (std::getline(lines, head) && std::getline(lines, bases) && std::getline(lines, unused) &&
         std::getline(lines, unused)) {
    expected += ">" + head.substr(1) + "\n" + bases + "\n";
  }
  EXPECT_GT(expected.size(), 1000U);
  EXPECT_EQ(extract({dir_, {3}, ExtractForm::kFasta}), expected);
}

TEST_F(ExtractTest, AGapThatIsNamedTwiceIsWrittenOnce) {
  const GapRange some{2, 4};
  EXPECT_EQ(extract({dir_, {3, some, 2}}), extract({dir_, {3, 2, 4}}));
}

TEST_F(ExtractTest, TheFlanksStandInFront) {
  // Gap 1 lies between contigs 1, of 300 bases, and 2, of 90.
  const std::string front(assembly().basesOf(0, 1));
  const std::string behind(assembly().basesOf(0, 2));
  const std::string reads = extract({dir_, {1}, ExtractForm::kFasta});
  EXPECT_EQ(extract({dir_, {1}, ExtractForm::kFasta, 100}),
            ">gap1:front\tzg:i:1\n" + front.substr(200) + "\n>gap1:behind\tzg:i:1\n" + behind +
                "\n" + reads);
  EXPECT_EQ(extract({dir_, {1}, ExtractForm::kFastq, 50}),
            "@gap1:front\tzg:i:1\n" + front.substr(250) + "\n+\n" + std::string(50, 'B') +
                "\n@gap1:behind\tzg:i:1\n" + behind.substr(0, 50) + "\n+\n" + std::string(50, 'B') +
                "\n" + extract({dir_, {1}}));
}

// The records of a gap are those found there, and the other reads of their pairs.
TEST_F(ExtractTest, BamRecordsOfAGap) {
  const auto all = readBam(dir_ + "/reads.bam").records;
  for (const std::vector<GapRange>& gaps : {std::vector<GapRange>{0}, {2}, {12, 4}, {4, 5}}) {
    const auto isAsked = [&](const BamRecord& record) {
      return std::any_of(gaps.begin(), gaps.end(), [&](const GapRange& gap) {
        return record.tags.at("zg") == std::to_string(gap.first);
      });
    };
    std::set<std::string> names;
    for (const BamRecord& record : all) {
      if (record.tags.count("zp") != 0 && isAsked(record)) names.insert(record.name);
    }
    std::vector<BamRecord> expected;
    for (const BamRecord& record : all) {
      const bool isFound = record.tags.count("zp") != 0;
      if (isAsked(record) || (!isFound && names.contains(record.name))) expected.push_back(record);
    }
    extract({dir_, gaps, ExtractForm::kBam});
    std::vector<BamRecord> found = readBam(folder_.path("extracted")).records;
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end(), [](const auto& one, const auto& other) {
      return std::tie(one.scaffold, one.position) < std::tie(other.scaffold, other.position);
    }));
    std::sort(found.begin(), found.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(found == expected, true) << found.size() << " for " << expected.size();
    EXPECT_GT(found.size(), 50U);
  }
}

TEST_F(ExtractTest, AGapThatIsNotThere) {
  EXPECT_EQ(refusal({dir_, {0, 18}}, run::Status::kUsage),
            "there is no gap 18; " + dir_ + " has 18, numbered from 0");
  EXPECT_EQ(refusal({dir_, {{16, uint64_t{1} << 60}}}, run::Status::kUsage),
            "there is no gap 18; " + dir_ + " has 18, numbered from 0");
}

TEST_F(ExtractTest, AFolderWithoutAWholeResult) {
  std::filesystem::remove(dir_ + "/summary.json");
  EXPECT_EQ(refusal({dir_, {0}}, run::Status::kFailed),
            dir_ + " holds no whole result of velk-run");
}

TEST_F(ExtractTest, ADamagedIndex) {
  const std::string index = contentOf(dir_ + "/gaps.idx");
  const std::string message = dir_ + "/gaps.idx is no index of gaps, or is damaged";
  for (const std::string& damaged :
       {std::string(), index.substr(0, 10), index.substr(0, index.size() - 8), "x" + index}) {
    folder_.write("out/gaps.idx", damaged);
    EXPECT_EQ(refusal({dir_, {0}}, run::Status::kFailed), message);
  }
}

TEST_F(ExtractTest, ADamagedFile) {
  const std::string pairs = contentOf(dir_ + "/pairs.fq.gz");
  folder_.write("out/pairs.fq.gz", pairs.substr(0, 100));
  EXPECT_EQ(refusal({dir_, {3}}, run::Status::kFailed),
            dir_ + "/pairs.fq.gz can't be read, or is damaged");
}

TEST_F(ExtractTest, AFileThatIsGone) {
  std::filesystem::remove(dir_ + "/singles.fq.gz");
  EXPECT_EQ(refusal({dir_, {3}}, run::Status::kFailed),
            dir_ + "/singles.fq.gz can't be opened: No such file or directory");
}

}  // namespace
}  // namespace velk::test
