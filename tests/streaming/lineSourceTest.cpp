// The two line sources: what a line is, and what a read beyond the last line leaves.
#include "streaming/lineSource.h"

#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

constexpr std::size_t kPlainBlock = 262144;  // bytes that a plain source reads at once

class PlainLines : public StreamingTest {};

class GzipLines : public GzipWayTest {
 protected:
  // The kept lines of a file: the first `skipped` lines are read over.
  static std::vector<std::string> linesOf(const std::string& text, int count, int skipped = 0) {
    writeGzip("lines.gz", text);
    GzipLineSource source("lines.gz");
    EXPECT_TRUE(source.open());
    for (int i = 0; i < skipped; ++i) source.skipLine();
    std::vector<std::string> lines(static_cast<std::size_t>(count), "old");
    for (std::string& line : lines) source.keepLine(line);
    return lines;
  }
};

INSTANTIATE_GZIP_WAYS(GzipLines);

using Lines = std::vector<std::string>;

TEST_F(PlainLines, BeyondTheLastLineFirstNothingThenWhatWasThere) {
  write("lines", "AC\n\nGT\n");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  Lines lines(6, "old");
  for (std::string& line : lines) source.keepLine(line);
  EXPECT_EQ(lines, (Lines{"AC", "", "GT", "", "old", "old"}));
  EXPECT_FALSE(source.startRecord());
}

TEST_F(PlainLines, BeyondALastLineWithoutNewlineWhatWasThere) {
  write("lines", "AC\nGT");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  Lines lines(4, "old");
  for (std::string& line : lines) source.keepLine(line);
  EXPECT_EQ(lines, (Lines{"AC", "GT", "old", "old"}));
  EXPECT_FALSE(source.startRecord());
}

TEST_F(PlainLines, EndIsKnownOnlyOnceARealLineIsMissing) {
  write("lines", "AC\nGT\n");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  EXPECT_TRUE(source.startRecord());
  source.skipLine();
  EXPECT_TRUE(source.startRecord()) << "no read has met the end yet";
  EXPECT_FALSE(source.startRecord());
}

TEST_F(PlainLines, LinesAroundTheEndOfABlock) {
  for (std::size_t length = kPlainBlock - 3; length <= kPlainBlock + 2; ++length) {
    const std::string first(length, 'A');
    write("lines", first + "\nGT\n" + first + first + "\nCC");
    PlainLineSource source("lines");
    ASSERT_TRUE(source.open());
    Lines lines(5, "old");
    for (std::string& line : lines) source.keepLine(line);
    EXPECT_TRUE(lines[0] == first) << length;
    EXPECT_EQ(lines[1], "GT") << length;
    EXPECT_TRUE(lines[2] == first + first) << length;
    EXPECT_EQ(lines[3], "CC") << length;
    EXPECT_EQ(lines[4], "old") << length;
  }
}

TEST_F(PlainLines, SkippedLinesAcrossBlocks) {
  write("lines", std::string(3 * kPlainBlock, 'A') + "\nGT\n");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  source.skipLine();
  std::string line;
  source.keepLine(line);
  EXPECT_EQ(line, "GT");
}

TEST_F(PlainLines, FileThatEndsWithABlock) {
  write("lines", std::string(kPlainBlock - 1, 'A') + "\n");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  Lines lines(3, "old");
  for (std::string& line : lines) source.keepLine(line);
  EXPECT_EQ(lines[0].size(), kPlainBlock - 1);
  EXPECT_EQ(lines[1], "");
  EXPECT_EQ(lines[2], "old");
}

TEST_F(PlainLines, NulBytesAreBytes) {
  const std::string line("A\0C", 3);
  write("lines", line + "\n");
  PlainLineSource source("lines");
  ASSERT_TRUE(source.open());
  std::string kept;
  source.keepLine(kept);
  EXPECT_EQ(kept, line);
}

TEST_F(PlainLines, MissingFile) {
  PlainLineSource source("missing");
  EXPECT_FALSE(source.open());
}

TEST_P(GzipLines, BeyondTheLastLineTheLastLine) {
  EXPECT_EQ(linesOf("AC\n\nGT\n", 5), (Lines{"AC", "", "GT", "GT", "GT"}));
  EXPECT_EQ(linesOf("AC\nGT\n", 2, 2), (Lines{"GT", "GT"}));
}

TEST_P(GzipLines, LastLineWithoutNewlineLosesItsLastCharacter) {
  EXPECT_EQ(linesOf("AC\nGTT", 3), (Lines{"AC", "GT", "GT"}));
  EXPECT_EQ(linesOf("AC\nG", 3), (Lines{"AC", "", ""}));
}

TEST_P(GzipLines, BufferStartsEmpty) {
  EXPECT_EQ(linesOf("", 2), (Lines{"", ""}));
}

TEST_P(GzipLines, LongLinesComeInPieces) {
  const auto bases = [](std::size_t count) { return std::string(count, 'A'); };
  EXPECT_EQ(linesOf(bases(1022) + "\nCC\n", 2), (Lines{bases(1022), "CC"}));
  // Of a piece of 1023 bases the last base is lost, and the newline is a line of its own.
  EXPECT_EQ(linesOf(bases(1023) + "\nCC\n", 3), (Lines{bases(1022), "", "CC"}));
  EXPECT_EQ(linesOf(bases(1024) + "\nCC\n", 3), (Lines{bases(1022), "A", "CC"}));
  EXPECT_EQ(linesOf(bases(2045) + "\nCC\n", 3), (Lines{bases(1022), bases(1022), "CC"}));
  EXPECT_EQ(linesOf(bases(2046) + "\nCC\n", 4), (Lines{bases(1022), bases(1022), "", "CC"}));
  EXPECT_EQ(linesOf(bases(3000) + "\nCC\n", 4),
            (Lines{bases(1022), bases(1022), bases(954), "CC"}));
  EXPECT_EQ(linesOf(bases(1023), 2), (Lines{bases(1022), bases(1022)}));
}

TEST_P(GzipLines, LineEndsForTheReadAtItsFirstNulByte) {
  using namespace std::string_literals;
  EXPECT_EQ(linesOf("ACG\0TT\nCC\n"s, 2), (Lines{"AC", "CC"}));
  EXPECT_EQ(linesOf("\0TT\nCC\n"s, 2), (Lines{"", "CC"}));
  EXPECT_EQ(linesOf("A\0\nCC\n"s, 2), (Lines{"", "CC"}));
  // Bytes that a longer line left in the buffer do not come back.
  EXPECT_EQ(linesOf("ACGTACGT\nCC\n\0\n"s, 3), (Lines{"ACGTACGT", "CC", ""}));
}

TEST_P(GzipLines, LinesAcrossMembersAndBlocks) {
  write("lines.gz", gzipped("AC") + gzipped("") + gzipped("GT\nCC") + gzipped("\n"));
  GzipLineSource source("lines.gz");
  ASSERT_TRUE(source.open());
  Lines lines(2, "old");
  for (std::string& line : lines) source.keepLine(line);
  EXPECT_EQ(lines, (Lines{"ACGT", "CC"}));

  std::string text;
  while (text.size() < 600000) text.append("A").append(std::to_string(text.size())).append("\n");
  writeGzip("many.gz", text);
  GzipLineSource many("many.gz");
  ASSERT_TRUE(many.open());
  std::string joined;
  std::string line;
  for (std::size_t left = text.size(); left > 0; left -= line.size() + 1) {
    many.keepLine(line);
    joined += line + "\n";
  }
  EXPECT_TRUE(joined == text);
}

TEST_P(GzipLines, StartRecordTellsTheEnd) {
  writeGzip("lines.gz", "AC\nGT");
  GzipLineSource source("lines.gz");
  ASSERT_TRUE(source.open());
  EXPECT_TRUE(source.startRecord());
  EXPECT_TRUE(source.startRecord());
  EXPECT_FALSE(source.startRecord());
  EXPECT_EQ(source.line(), "GT") << "a read that returns nothing leaves the buffer";
}

TEST_P(GzipLines, FinishReadsTheRestAndNamesItsDamage) {
  const std::string text = randomBases(100, 1) + "\n" + noise(500000, 2);
  const std::string whole = gzipped(text);
  write("lines.gz", whole.substr(0, whole.size() - 4) + "\x01\x02\x03\x04");
  const CapturedErrors errors;
  GzipLineSource source("lines.gz");
  ASSERT_TRUE(source.open());
  EXPECT_TRUE(source.startRecord());
  EXPECT_EQ(errors.text(), "");
  source.finish();
  EXPECT_EQ(errors.text(), "[ERROR]: damaged gzip file: lines.gz: incorrect length check\n");
  EXPECT_TRUE(gzipDamageSeen());
}

TEST_P(GzipLines, FinishOfAWholeFileSaysNothing) {
  writeGzip("lines.gz", "AC\nGT\n");
  const CapturedErrors errors;
  GzipLineSource source("lines.gz");
  ASSERT_TRUE(source.open());
  source.finish();
  EXPECT_EQ(errors.text(), "");
  EXPECT_FALSE(source.startRecord());
}

TEST_P(GzipLines, MissingFileCountsAsDamagedAndHasNoLines) {
  const CapturedErrors errors;
  GzipLineSource source("missing.gz");
  EXPECT_TRUE(source.open());
  EXPECT_EQ(errors.text(), "[ERROR]: damaged gzip file: missing.gz: No such file or directory\n");
  EXPECT_FALSE(source.startRecord());
  source.finish();
  EXPECT_EQ(errors.text(), "[ERROR]: damaged gzip file: missing.gz: No such file or directory\n");
}

}  // namespace
}  // namespace velk::test
