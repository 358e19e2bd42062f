// The run parameters: defaults, constants, the lenient conversion and the check of their values.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

#include "driver/options.h"
#include "driver/velk.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

class Parameters : public RunParametersTest {};

TEST_F(Parameters, Defaults) {
  EXPECT_EQ("", lib_file);
  EXPECT_EQ("", contig_file);
  EXPECT_EQ("", scaffold_file);
  EXPECT_EQ("", out_file);
  EXPECT_EQ(0.3, OverRatio);
  EXPECT_EQ(0.98, mapCut);
  EXPECT_EQ(0, CuttEdge);
  EXPECT_EQ(31, Kmer);
  EXPECT_EQ(1, thread_num);
  EXPECT_EQ(100, readLen);
  EXPECT_EQ(1048576U, initSize);
  EXPECT_EQ(70, CONTIGLEN);
  EXPECT_EQ(0.75F, LoadFactor);
  EXPECT_EQ(900, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Parameters, FixedConstants) {
  EXPECT_EQ(2000, MINLARGEINSERT);
  EXPECT_EQ(500000, bufferSize);
  EXPECT_EQ(32, DATA_LEN);
  EXPECT_EQ(2, LEN_TO_BITLEN);
  EXPECT_EQ(200, MAX_READ_LEN);
  EXPECT_EQ(70, MINREADLEN);
}

TEST_F(Parameters, SmallestPossibleValuesPassTheCheck) {
  thread_num = 1;
  Kmer = CuttEdge = readLen = 0;
  CONTIGLEN = INT_MIN;
  EXPECT_EXIT((checkParameters(), std::exit(0)), ::testing::ExitedWithCode(0), ::testing::Eq(""));
}

TEST_F(Parameters, ImpossibleValuesEndTheRun) {
  const auto expectRefused = [](int& parameter, int value, const char* message) {
    const int before = parameter;
    parameter = value;
    EXPECT_EXIT(checkParameters(), ::testing::ExitedWithCode(1), ::testing::Eq(message));
    parameter = before;
  };
  expectRefused(thread_num, 0, "[ERROR]: -t must be at least 1\n");
  expectRefused(thread_num, INT_MIN, "[ERROR]: -t must be at least 1\n");
  expectRefused(Kmer, -1, "[ERROR]: -k must be at least 0\n");
  expectRefused(CuttEdge, -1, "[ERROR]: -C must be at least 0\n");
  expectRefused(readLen, -1, "[ERROR]: -r must be at least 0\n");
}

TEST_F(Parameters, OnlyTheFirstImpossibleValueIsTold) {
  thread_num = Kmer = CuttEdge = readLen = -1;
  EXPECT_EXIT(checkParameters(), ::testing::ExitedWithCode(1),
              ::testing::Eq("[ERROR]: -t must be at least 1\n"));
  thread_num = 1;
  EXPECT_EXIT(checkParameters(), ::testing::ExitedWithCode(1),
              ::testing::Eq("[ERROR]: -k must be at least 0\n"));
  Kmer = 0;
  EXPECT_EXIT(checkParameters(), ::testing::ExitedWithCode(1),
              ::testing::Eq("[ERROR]: -C must be at least 0\n"));
}

TEST_F(Parameters, ImpossibleValuesInTheOrderInWhichTheyAreLookedAt) {
  EXPECT_TRUE(impossibleValues().empty());
  readLen = CuttEdge = Kmer = -1;
  thread_num = 0;
  EXPECT_EQ(impossibleValues(),
            (std::vector<std::string>{"-t must be at least 1", "-k must be at least 0",
                                      "-C must be at least 0", "-r must be at least 0"}));
}

TEST(LenientInt, ReadsTheNumberInFront) {
  EXPECT_EQ(31, lenientInt("31"));
  EXPECT_EQ(-31, lenientInt("-31"));
  EXPECT_EQ(31, lenientInt(" \t+31 7"));
  EXPECT_EQ(31, lenientInt("31\r"));
  EXPECT_EQ(3, lenientInt("3.9"));
  EXPECT_EQ(1, lenientInt("1e3"));
  EXPECT_EQ(10, lenientInt("010"));
}

TEST(LenientInt, TextThatIsNoNumberIsZero) {
  for (const char* const text : {"", " ", "word", "-", "+-3", "x31", "0x1F", "\r"}) {
    EXPECT_EQ(0, lenientInt(text)) << text;
  }
}

TEST(LenientInt, KeepsTheLow32Bits) {
  EXPECT_EQ(INT_MAX, lenientInt("2147483647"));
  EXPECT_EQ(INT_MIN, lenientInt("2147483648"));
  EXPECT_EQ(INT_MIN, lenientInt("-2147483648"));
  EXPECT_EQ(INT_MAX, lenientInt("-2147483649"));
  EXPECT_EQ(-1, lenientInt("4294967295"));
  EXPECT_EQ(0, lenientInt("4294967296"));
  EXPECT_EQ(1410065407, lenientInt("9999999999"));
}

TEST(LenientInt, SaturatesAt64Bits) {
  EXPECT_EQ(-1, lenientInt("9223372036854775807"));
  EXPECT_EQ(-1, lenientInt("9223372036854775808"));
  EXPECT_EQ(-1, lenientInt("99999999999999999999999"));
  EXPECT_EQ(1, lenientInt("-9223372036854775807"));
  EXPECT_EQ(0, lenientInt("-9223372036854775808"));
  EXPECT_EQ(0, lenientInt("-99999999999999999999999"));
}

RC_GTEST_PROP(LenientInt, GivesEveryIntBack, (int number)) {
  RC_ASSERT(lenientInt(std::to_string(number)) == number);
}

RC_GTEST_PROP(LenientInt, CutsWhatIsLonger, (int low, int16_t high)) {
  // low + high * 2^32 has the low 32 bits of `low`
  const int64_t number = int64_t{low} + int64_t{high} * (int64_t{1} << 32);
  RC_ASSERT(lenientInt(std::to_string(number)) == low);
}

}  // namespace
}  // namespace velk::test
