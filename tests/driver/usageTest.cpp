// The help text, byte for byte.
#include "driver/velk.h"
#include "tests/driver/helpText.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

class Usage : public RunParametersTest {};

void showHelp() {
  sendOutputToError();
  usage();
}

TEST_F(Usage, PrintsTheHelpWithTheDefaultsAndExitsWithStatus1) {
  EXPECT_EXIT(showHelp(), ::testing::ExitedWithCode(1), ::testing::MatchesRegex(helpPattern()));
}

TEST_F(Usage, GoesToStandardOutputAlone) {
  const auto showHelpUnseen = [] {
    fclose(stdout);
    usage();
  };
  EXPECT_EXIT(showHelpUnseen(), ::testing::ExitedWithCode(1), ::testing::Eq(""));
}

TEST_F(Usage, ShowsTheCurrentValues) {
  OverRatio = 0.0000001;
  mapCut = 1;
  CuttEdge = -12;
  Kmer = 63;
  thread_num = 16;
  readLen = 250;
  initSize = 18446744073709551615U;
  CONTIGLEN = 2147483647;
  LoadFactor = 0.3F;
  const HelpValues values{"1e-07",      "1",  "-12", "63", "16", "250", "18446744073709551615",
                          "2147483647", "0.3"};
  EXPECT_EXIT(showHelp(), ::testing::ExitedWithCode(1),
              ::testing::MatchesRegex(helpPattern(values)));
}

TEST_F(Usage, ValuesHaveSixSignificantDigits) {
  OverRatio = 1.0 / 3;
  mapCut = 1234567.0;
  HelpValues values;
  values.overRatio = "0.333333";
  values.mapCut = "1.23457e+06";
  EXPECT_EXIT(showHelp(), ::testing::ExitedWithCode(1),
              ::testing::MatchesRegex(helpPattern(values)));
}

}  // namespace
}  // namespace velk::test
