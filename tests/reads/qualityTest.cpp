// The scale of qualities, found from a sample.
#include "reads/quality.h"

#include "tests/reads/readsTest.h"

namespace velk::test {
namespace {

// Whether reads with these qualities, the last one a second mate, look like Phred+64.
bool looksOld(const std::vector<std::string>& qualities) {
  reads::Sample sample;
  for (const std::string& quality : qualities) {
    auto& reads = &quality == &qualities.back() ? sample.second : sample.first;
    reads.emplace_back(reads::RecordView{"a", std::string(quality.size(), 'A'), quality});
  }
  return reads::looksLikePhred64(sample);
}

TEST(Quality, Phred64) {
  EXPECT_TRUE(looksOld({"hhhhhgfedB"}));
  EXPECT_TRUE(looksOld({"BBBBBB", "abcdefgh", "@@@ABC"}));
  EXPECT_TRUE(looksOld({"hhhh;;<h"}));
}

TEST(Quality, Phred33) {
  EXPECT_FALSE(looksOld({"IIIIIIIIII"}));          // all of 40
  EXPECT_FALSE(looksOld({"FFFF:,#F"}));            // in few steps
  EXPECT_FALSE(looksOld({"JJJKKK"}));              // up to 42
  EXPECT_FALSE(looksOld({"~~~~~~~"}));             // of long reads: all of 93
  EXPECT_FALSE(looksOld({"hhhhhhhh", "hh:hhh"}));  // one below the other scale
  EXPECT_FALSE(looksOld({":hhhhhhh", "hhhhhh"}));
}

TEST(Quality, NoQualities) {
  EXPECT_FALSE(looksOld({"", ""}));
  EXPECT_FALSE(reads::looksLikePhred64({}));
}

}  // namespace
}  // namespace velk::test
