// Turning reads and pairs round.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "placement/Read2Scaf.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/plainPlacement.h"
#include "tests/support/assembly.h"

namespace velk::test {
namespace {

std::string reverseComplementOf(const std::string& read) {
  std::string dest(read.size(), '\0');
  ReverseComplementSeq(dest, read);
  return dest;
}

TEST(ReverseComplementSeq, TurnsNIntoA) {
  EXPECT_EQ("AACGT", reverseComplementOf("ACGTN"));
  EXPECT_EQ("AACGT", reverseComplementOf("ACGTn"));
}

TEST(ReverseComplementSeq, WritesUpperCase) {
  EXPECT_EQ("ACGT", reverseComplementOf("acgt"));
  EXPECT_EQ("TTTGGGCCCAAA", reverseComplementOf("ttTggGccCaaA"));
}

TEST(ReverseComplementSeq, EveryOtherByteBecomesA) {
  for (int byte = 0; byte < 256; ++byte) {
    const char letter = static_cast<char>(byte);
    std::string expected = "A";
    if (letter == 'A' || letter == 'a') expected = "T";
    if (letter == 'C' || letter == 'c') expected = "G";
    if (letter == 'G' || letter == 'g') expected = "C";
    EXPECT_EQ(expected, reverseComplementOf(std::string(1, letter))) << byte;
  }
}

TEST(ReverseComplementSeq, AllLengths) {
  for (std::size_t length = 0; length <= 210; ++length) {
    const std::string read = randomBases(length, static_cast<unsigned>(length));
    EXPECT_EQ(reverseComplement(read), reverseComplementOf(read)) << length;
    EXPECT_EQ(read, reverseComplementOf(reverseComplementOf(read))) << length;
  }
}

// Other letters anywhere: where a register full of bases ends, and what follows it.
TEST(ReverseComplementSeq, AllLengthsWithOtherLetters) {
  for (std::size_t length = 1; length <= 130; ++length) {
    std::string read = randomBases(length, static_cast<unsigned>(length));
    read[length / 2] = 'c';
    for (std::size_t at = 0; at < length; at += 3) {
      std::string changed = read;
      changed[at] = "N\xC7r-"[at % 4];
      EXPECT_EQ(plainReverseComplement(changed), reverseComplementOf(changed))
          << length << ' ' << at;
      EXPECT_EQ(reverseComplementOf(changed)[length - 1 - at], 'A');
    }
  }
}

TEST(ReverseComplementSeq, ReplacesWhatTheDestinationHeld) {
  std::string dest = "GGGG";
  ReverseComplementSeq(dest, "AACC");
  EXPECT_EQ("GGTT", dest);
}

TEST(LongReverseComplement, SwapsAndTurnsThePair) {
  std::string a = "AAC";
  std::string b = "GGT";
  LongReverseComplement(a, b);
  EXPECT_EQ("ACC", a);
  EXPECT_EQ("GTT", b);
}

TEST(LongReverseComplement, ReadsOfUnlikeLengthChangePlaces) {
  std::string a = "AACCA";
  std::string b = "G";
  LongReverseComplement(a, b);
  EXPECT_EQ("C", a);
  EXPECT_EQ("TGGTT", b);
  b.clear();
  LongReverseComplement(a, b);
  EXPECT_EQ("", a);
  EXPECT_EQ("G", b);
}

TEST(LongReverseComplement, AllLengths) {
  for (std::size_t length = 0; length <= 1100; length += 1 + length / 130) {
    std::string first = randomBases(length, static_cast<unsigned>(length));
    const std::string second = randomBases(1100 - length, 7);
    for (const std::size_t at : {std::size_t{0}, length / 2, length - 1}) {
      if (at < length) first[at] = "N\xC7r-c"[(at + length) % 5];
    }
    std::string a = first;
    std::string b = second;
    LongReverseComplement(a, b);
    EXPECT_EQ(reverseComplementOf(second), a) << length;
    EXPECT_EQ(reverseComplementOf(first), b) << length;
  }
}

// Letters of reads that are no bases, and what the reads' reverse complements make of them.

using OddLetter = PlacementTest;

// The read's R reads as A, and leaves the C in front of it as it is. Its reverse complement runs
// along the first contig with an A there, which says nothing of the read's own k-mers.
TEST_F(OddLetter, AnotherLetterOfTheReadIsNoBaseOfItsReverseComplement) {
  std::string bases = randomBases(61, 77);
  bases[29] = 'C';
  const auto with = [&](char letter) {
    std::string read = bases;
    read[30] = letter;
    return read;
  };
  const std::string along =
      randomBases(100, 5) + reverseComplement(with('T')) + randomBases(100, 6);
  assemble({{{along}}, {{randomBases(200, 7)}, {with('A').substr(10) + randomBases(200, 8), 300}}});
  const std::vector<TestRecord> expected = {{with('R'), 1, 0, 290, 0, 300}};
  const Outcome outcome = single(with('R'));
  EXPECT_EQ(outcome.stop, 10);
  EXPECT_EQ(outcome.records, expected);
  setBatch({with('R')});
  EXPECT_EQ(scan(0), expected);
}

}  // namespace

}  // namespace velk::test
