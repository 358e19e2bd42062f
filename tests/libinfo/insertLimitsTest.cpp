// MAXINSERT and BIGGAPLEN, derived from the libraries' average inserts.
#include <climits>

#include "tests/libinfo/libFile.h"

namespace velk::test {
namespace {

TEST_F(Loadlib, ThreeLibrariesGiveTheInsertLimits) {
  load("[LIB]\navg_ins=200\n[LIB]\navg_ins=500\n[LIB]\navg_ins=5000\n");
  EXPECT_EQ(600, BIGGAPLEN);
  EXPECT_EQ(5000, MAXINSERT);
}

TEST_F(Loadlib, InsertOf2000IsNotSmall) {
  load("[LIB]\navg_ins=2000\n");
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(2000, MAXINSERT);
}

TEST_F(Loadlib, InsertOf1999IsSmall) {
  load("[LIB]\navg_ins=1999\n");
  EXPECT_EQ(2099, BIGGAPLEN);
  EXPECT_EQ(1999, MAXINSERT);
}

TEST_F(Loadlib, OverwrittenInsertCounts) {
  load("[LIB]\navg_ins=5000\navg_ins=700\navg_ins=300\n");
  EXPECT_EQ(300, libs[0].avg_ins);
  EXPECT_EQ(800, BIGGAPLEN);
  EXPECT_EQ(5000, MAXINSERT);
}

TEST_F(Loadlib, BigGapLengthHasTheReadLengthOfTheOptions) {
  readLen = 150;
  load("[LIB]\navg_ins=500\n");
  EXPECT_EQ(650, BIGGAPLEN);
}

TEST_F(Loadlib, WithoutSmallInsertsTheBigGapLengthIsTheReadLength) {
  BIGGAPLEN = 12345;
  load("");
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Loadlib, NegativeInsertsDoNotCount) {
  load("[LIB]\navg_ins=-500\n");
  EXPECT_EQ(-500, libs[0].avg_ins);
  EXPECT_EQ(100, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Loadlib, BigGapLengthSaturates) {
  readLen = INT_MAX - 500;
  load("[LIB]\navg_ins=500\n");
  EXPECT_EQ(INT_MAX, BIGGAPLEN);
  load("[LIB]\navg_ins=501\n");
  EXPECT_EQ(INT_MAX, BIGGAPLEN);
  load("[LIB]\navg_ins=499\n");
  EXPECT_EQ(INT_MAX - 1, BIGGAPLEN);
}

}  // namespace
}  // namespace velk::test
