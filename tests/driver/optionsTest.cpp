// The option parser: what every option sets, where parsing stops and what ends in the help; the
// help.
#include <unistd.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "driver/options.h"
#include "driver/velk.h"
#include "tests/support/runParameters.h"

namespace velk::test {
namespace {

// The values that the help shows, as it prints them.
struct HelpValues {
  std::string overRatio = "0.3";
  std::string mapCut = "0.98";
  std::string cutEdge = "0";
  std::string kmer = "31";
  std::string threads = "1";
  std::string readLength = "100";
  std::string initSize = "1048576";
  std::string contigLength = "70";
  std::string loadFactor = "0.75";
};

// An extended regular expression that the help, with these values, matches as a whole. Only the
// build's date and time are left open.
std::string helpPattern(const HelpValues& values = {});

// `text` as an extended regular expression that matches nothing else.
std::string literally(const std::string& text) {
  std::string pattern;
  for (const char letter : text) {
    if (std::string(".[](){}*+?|^$\\").find(letter) != std::string::npos) pattern += '\\';
    pattern += letter;
  }
  return pattern;
}

std::string helpPattern(const HelpValues& values) {
  const std::string date = "[A-Z][a-z][a-z] [ 1-3][0-9] [0-9][0-9][0-9][0-9]";
  const std::string time = "[0-9][0-9]:[0-9][0-9]:[0-9][0-9]";
  std::string options =
      "Author:\tthe velk developers\n"
      "Contact:\tsee README.md\n"
      "\t-l\t<str>\t\tlib file \n"
      "\t-c\t<str>\t\tcontig file in fasta\n"
      "\t-s\t<str>\t\tscaffold file in fasta\n"
      "\t-o\t<str>\t\toutput the reads fall in gaps \n";
  const auto add = [&](const char* text, const std::string& value) {
    options.append(text).append(value).append("\n");
  };
  add("\t-O\t<float>\t\toverlap ratio cut ratio of long reads with contig edge, default=",
      values.overRatio);
  add("\t-M <float>\t\tmap ratio cut ratio of reads to contig, default =", values.mapCut);
  add("\t-C <int>\t\tcut contig edge length =", values.cutEdge);
  add("\t-k\t<int>\t\tkmer length(<=63), default=", values.kmer);
  add("\t-t\t<int>\t\tthread number, default=", values.threads);
  add("\t-r\t<int>\t\tmax PE read length, default=", values.readLength);
  add("\t-m\t<int>\t\tinitialize size of hash table, default=", values.initSize);
  add("\t-L\t<int>\t\tcontig length cutoff, default=", values.contigLength);
  add("\t-f\t<float>\t\tLoad factor ", values.loadFactor);
  options +=
      "\t-h\t\t\tthis help\n\n"
      "Example:\n"
      "velk -l reads.lib -s scaffolds.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
      "velk -l reads.lib -c contigs.fa -m seqlength*1/LoadFactor -o found.fa 2>velk.log\n"
      "Attention:\n"
      "Please do not set -s and -c at the same time, or else, velk will only load and use "
      "scaffold.\n"
      "\n\n";
  return literally("Usage:\t\tVelk(VELK) [option]\nVersion:\tvelk1.13\nCompile Date:\t")
      .append(date)
      .append("\t")
      .append(time)
      .append(literally("\n" + options));
}

// Makes standard output of this process end where standard error does. For death tests, which
// see standard error alone.
void sendOutputToError() {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

using Arguments = std::vector<std::string>;

// Parses `arguments`, with the program's name in front of them.
int parse(const Arguments& arguments) {
  Arguments words = arguments;
  words.insert(words.begin(), "velk");
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  return mGetOptions(static_cast<int>(pointers.size()), pointers.data());
}

class Options : public RunParametersTest {
 protected:
  // Expects that `arguments` end in the help, with `values`, and status 1.
  static void expectHelp(const Arguments& arguments, const HelpValues& values = {}) {
    const auto parseForHelp = [&] {
      sendOutputToError();
      parse(arguments);
    };
    EXPECT_EXIT(parseForHelp(), ::testing::ExitedWithCode(1),
                ::testing::MatchesRegex(helpPattern(values)));
  }
};

TEST_F(Options, EveryOptionSetsItsParameter) {
  EXPECT_EQ(27, parse({"-l",   "a.lib", "-c",  "c.fa", "-s", "s.fa", "-o", "o.fa", "-O",
                       "0.25", "-M",    "0.5", "-C",   "7",  "-k",   "21", "-t",   "3",
                       "-r",   "150",   "-m",  "64",   "-L", "90",   "-f", "0.625"}));
  EXPECT_EQ("a.lib", lib_file);
  EXPECT_EQ("c.fa", contig_file);
  EXPECT_EQ("s.fa", scaffold_file);
  EXPECT_EQ("o.fa", out_file);
  EXPECT_EQ(0.25, OverRatio);
  EXPECT_EQ(0.5, mapCut);
  EXPECT_EQ(7, CuttEdge);
  EXPECT_EQ(21, Kmer);
  EXPECT_EQ(3, thread_num);
  EXPECT_EQ(150, readLen);
  EXPECT_EQ(64U, initSize);
  EXPECT_EQ(90, CONTIGLEN);
  EXPECT_EQ(0.625F, LoadFactor);
  EXPECT_EQ(900, BIGGAPLEN);
  EXPECT_EQ(0, MAXINSERT);
}

TEST_F(Options, KindsOfValues) {
  for (const char letter : std::string("lcso")) EXPECT_EQ(kindOfOption(letter), OptionKind::kText);
  for (const char letter : std::string("CktrmL")) {
    EXPECT_EQ(kindOfOption(letter), OptionKind::kWhole) << letter;
  }
  for (const char letter : std::string("OMf")) EXPECT_EQ(kindOfOption(letter), OptionKind::kReal);
  for (int letter = 0; letter < 256; ++letter) {
    const bool isOption =
        std::string("lcsoOMCktrmLf").find(static_cast<char>(letter)) != std::string::npos;
    EXPECT_EQ(kindOfOption(static_cast<char>(letter)) != OptionKind::kNone, isOption) << letter;
  }
}

TEST_F(Options, NoArgumentsChangeNothing) {
  EXPECT_EQ(1, parse({}));
  EXPECT_EQ("", lib_file);
  EXPECT_EQ(31, Kmer);
}

TEST_F(Options, ParsingStopsAtTheFirstStrayArgument) {
  EXPECT_EQ(7, parse({"-l", "a.lib", "-s", "s.fa", "-o", "out.fa", "extra"}));
  EXPECT_EQ("out.fa", out_file);
}

TEST_F(Options, OptionsBehindAStrayArgumentAreNotRead) {
  EXPECT_EQ(1, parse({"extra", "-k", "25", "-h"}));
  EXPECT_EQ(31, Kmer);
}

TEST_F(Options, EmptyArgumentIsAStrayArgument) {
  EXPECT_EQ(3, parse({"-k", "25", ""}));
}

TEST_F(Options, OnlySecondCharacterCounts) {
  EXPECT_EQ(3, parse({"-lfoo", "a.lib"}));
  EXPECT_EQ("a.lib", lib_file);
  EXPECT_EQ(3, parse({"-k25", "27"}));
  EXPECT_EQ(27, Kmer);
}

TEST_F(Options, ValueIsTheNextArgumentWhateverItLooksLike) {
  EXPECT_EQ(9, parse({"-l", "-s", "-o", "-h", "-c", "", "-C", "-5"}));
  EXPECT_EQ("-s", lib_file);
  EXPECT_EQ("-h", out_file);
  EXPECT_EQ("", contig_file);
  EXPECT_EQ("", scaffold_file);
  EXPECT_EQ(-5, CuttEdge);
}

TEST_F(Options, LastValueWins) {
  parse({"-k", "25", "-l", "a.lib", "-k", "27", "-l", "b.lib"});
  EXPECT_EQ(27, Kmer);
  EXPECT_EQ("b.lib", lib_file);
}

TEST_F(Options, ValuesAreNotRangeChecked) {
  EXPECT_EQ(11, parse({"-k", "80", "-t", "0", "-f", "0", "-r", "-1", "-L", "-2147483648"}));
  EXPECT_EQ(80, Kmer);
  EXPECT_EQ(0, thread_num);
  EXPECT_EQ(0.0F, LoadFactor);
  EXPECT_EQ(-1, readLen);
  EXPECT_EQ(std::numeric_limits<int>::min(), CONTIGLEN);
}

TEST_F(Options, WordsBecomeZero) {
  parse({"-O", "many", "-M", "", "-C", "x", "-k", "word", "-t", "two", "-r", "?", "-m", "big", "-L",
         "-", "-f", "half"});
  EXPECT_EQ(0.0, OverRatio);
  EXPECT_EQ(0.0, mapCut);
  EXPECT_EQ(0, CuttEdge);
  EXPECT_EQ(0, Kmer);
  EXPECT_EQ(0, thread_num);
  EXPECT_EQ(0, readLen);
  EXPECT_EQ(0U, initSize);
  EXPECT_EQ(0, CONTIGLEN);
  EXPECT_EQ(0.0F, LoadFactor);
}

TEST_F(Options, HashSizeHas64Bits) {
  parse({"-m", "2000000000000"});
  EXPECT_EQ(2000000000000U, initSize);
}

TEST_F(Options, HashSizeSaturatesAtTheSignedLimitsAndIsThenTakenAsUnsigned) {
  parse({"-m", "99999999999999999999"});
  EXPECT_EQ(9223372036854775807U, initSize);
  parse({"-m", "-99999999999999999999"});
  EXPECT_EQ(9223372036854775808U, initSize);
  parse({"-m", "-1"});
  EXPECT_EQ(18446744073709551615U, initSize);
  parse({"-m", "0x10"});
  EXPECT_EQ(0U, initSize);
}

TEST_F(Options, LoadFactorIsNarrowedToFloat) {
  parse({"-f", "0.5"});
  EXPECT_EQ(0.5F, LoadFactor);
  parse({"-f", "0.1"});
  EXPECT_EQ(0.1F, LoadFactor);
  parse({"-f", "1e-60"});
  EXPECT_EQ(0.0F, LoadFactor);
  parse({"-f", "340282346638528859811704183484516925440"});
  EXPECT_EQ(std::numeric_limits<float>::max(), LoadFactor);
}

TEST_F(Options, LoadFactorBeyondFloatBecomesInfinite) {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  for (const char* const value : {"1e39", "1e400", "inf"}) {
    LoadFactor = 0;
    parse({"-f", value});
    EXPECT_EQ(kInfinity, LoadFactor) << value;
  }
  for (const char* const value : {"-1e39", "-1e400", "-inf"}) {
    LoadFactor = 0;
    parse({"-f", value});
    EXPECT_EQ(-kInfinity, LoadFactor) << value;
  }
  parse({"-f", "nan"});
  EXPECT_TRUE(std::isnan(LoadFactor));
}

TEST_F(Options, RatiosTakeAllThatStrtodTakes) {
  parse({"-O", "0x1p-2", "-M", " .5x"});
  EXPECT_EQ(0.25, OverRatio);
  EXPECT_EQ(0.5, mapCut);
  parse({"-O", "nan", "-M", "-inf"});
  EXPECT_TRUE(std::isnan(OverRatio));
  EXPECT_EQ(-std::numeric_limits<double>::infinity(), mapCut);
  parse({"-O", "1e400"});
  EXPECT_EQ(std::numeric_limits<double>::infinity(), OverRatio);
}

TEST_F(Options, HelpOption) {
  expectHelp({"-h"});
  expectHelp({"-h", "5"});
  expectHelp({"-hurry", "a.lib"});
}

TEST_F(Options, UnknownLettersEndInTheHelp) {
  expectHelp({"-x", "5"});
  expectHelp({"-x"});
  expectHelp({"-K", "5"});
  expectHelp({"--help", "5"});
}

TEST_F(Options, LoneDashEndsInTheHelp) {
  expectHelp({"-"});
  expectHelp({"-", "a.lib"});
}

TEST_F(Options, OptionWithoutItsValueEndsInTheHelp) {
  for (const char letter : std::string("lcsoOMCktrmLf")) {
    SCOPED_TRACE(letter);
    expectHelp({std::string("-") + letter});
  }
}

TEST_F(Options, HelpShowsTheValuesOfEarlierOptions) {
  HelpValues values;
  values.kmer = "25";
  expectHelp({"-k", "25", "-h"}, values);
  expectHelp({"-k", "25", "-h", "-k", "27"}, values);
  values.threads = "4";
  expectHelp({"-k", "25", "-t", "4", "-l"}, values);
}

// The help text, byte for byte.

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
