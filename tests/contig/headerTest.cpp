// What is cut out of a header line, and the bound on a contig's length.
#include "contig/header.h"

#include "tests/contig/contigFixture.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

TEST(DeleteTail, CutsAtTheFirstBlankOrTab) {
  EXPECT_EQ(delete_tail("7 length=5000"), "7");
  EXPECT_EQ(delete_tail("7\tlength=5000"), "7");
  EXPECT_EQ(delete_tail("7 a\tb"), "7");
  EXPECT_EQ(delete_tail("7\ta b"), "7");
  EXPECT_EQ(delete_tail(" 7"), "");
}

TEST(DeleteTail, KeepsWhatHasNeither) {
  EXPECT_EQ(delete_tail("7_length"), "7_length");
  EXPECT_EQ(delete_tail(""), "");
  EXPECT_EQ(delete_tail("7\r"), "7\r");
  EXPECT_EQ(delete_tail("7\v8"), "7\v8");
}

TEST(IdAfter, DropsTheLeadingCharacters) {
  const TextInput input("f");
  EXPECT_EQ(idAfter(">scaffold12", 9, input, kHeaderError), "12");
  EXPECT_EQ(idAfter(">scaffold", 9, input, kHeaderError), "");
}

TEST(IdAfter, ShorterHeaderEndsTheRun) {
  const TemporaryFolder folder;
  const std::string file = folder.write("f.fa", ">scaffold1\nA\n>scaffol\n");
  TextInput input(file);
  std::string line;
  while (line != ">scaffol") ASSERT_TRUE(input.readLine(line));
  EXPECT_EXIT(idAfter(line, 9, input, kInputError), ExitedWithCode(255),
              Eq("[ERROR]: " + file + ", line 3: header too short to hold an id\n"));
}

TEST(ScaffoldPart, EndsAtTheFirstUnderscore) {
  EXPECT_EQ(scaffoldPart("12_0\t30"), "12");
  EXPECT_EQ(scaffoldPart("a_b_1"), "a");
  EXPECT_EQ(scaffoldPart("12\t30"), "12\t30");
  EXPECT_EQ(scaffoldPart("_1"), "");
}

TEST(ContigLength, LongestContigThatPlacementCanTell) {
  requireContigLength(2147483647, "f.fa", "7", kHeaderError);
  EXPECT_EXIT(requireContigLength(2147483648, "f.fa", "7", kHeaderError), ExitedWithCode(3),
              Eq("[ERROR]: f.fa: a contig of scaffold 7 is longer than 2147483647 bases\n"));
  EXPECT_EXIT(requireContigLength(2147483648, "f.fa", "7", kInputError), ExitedWithCode(255),
              Eq("[ERROR]: f.fa: a contig of scaffold 7 is longer than 2147483647 bases\n"));
}

}  // namespace
}  // namespace velk::test
