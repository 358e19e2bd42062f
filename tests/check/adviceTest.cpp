#include "check/advice.h"

#include <gtest/gtest.h>

namespace velk::check {
namespace {

TEST(DiskSpace, ShortOnlyWhenAllOutputsOfADiskTakeMoreThanIsFree) {
  Findings enough;
  checkDiskSpace(enough, {{"out.fa", 1000}, {"s.fa", 1000}});
  EXPECT_FALSE(enough.has("disk-short"));
  Findings tooMuch;
  checkDiskSpace(tooMuch, {{"out.fa", uint64_t{1} << 61}, {"s.fa", uint64_t{1} << 61}});
  EXPECT_TRUE(tooMuch.has("disk-short"));
  EXPECT_EQ(tooMuch.all().size(), 1U);
}

}  // namespace
}  // namespace velk::check
