// What the name of a read file says.
#include "streaming/readFileName.h"

#include <gtest/gtest.h>

namespace velk::test {
namespace {

TEST(ReadFileName, GzipIsToldByTheEnding) {
  EXPECT_TRUE(isGzipName("reads.fq.gz"));
  EXPECT_TRUE(isGzipName(".gz"));
  EXPECT_FALSE(isGzipName("reads.fq"));
  EXPECT_FALSE(isGzipName("reads.fq.GZ"));
  EXPECT_FALSE(isGzipName("reads.gz.fq"));
  EXPECT_FALSE(isGzipName("gz"));
  EXPECT_FALSE(isGzipName(""));
}

TEST(ReadFileName, ShortestIsTheEndingAlone) {
  EXPECT_EQ(kShortestReadFileName, std::string_view(".gz").size());
}

}  // namespace
}  // namespace velk::test
