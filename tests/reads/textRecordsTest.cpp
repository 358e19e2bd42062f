// FASTQ and FASTA files as they come: widths, line ends, cases, blocks, packings and qualities.
#include <rapidcheck.h>

#include <algorithm>

#include "reads/readInput.h"
#include "reads/recordParser.h"
#include "tests/reads/plainRecords.h"
#include "tests/reads/readsTest.h"

namespace velk::test {
namespace {

using reads::Helpers;
using reads::Packing;

class TextRecords : public ReadsTest {
 protected:
  // The records of a file of this text.
  Records of(const std::string& text) const { return recordsOf(write("reads", text)); }

  // What is fixed in a file of this text.
  reads::Fixes fixesOf(const std::string& text) const {
    const auto source = reads::openRecords(write("reads", text), Helpers::kNone);
    reads::RecordView view;
    while (source->next(view)) {
    }
    return source->fixes();
  }
};

const std::vector<Read> kTwo{{"a", "ACGT", "IIII"}, {"b", "GGCCA", "@>+!~"}};
const std::vector<Read> kTwoWithout{{"a", "ACGT", ""}, {"b", "GGCCA", ""}};

TEST_F(TextRecords, FourLines) {
  EXPECT_EQ(of("@a\nACGT\n+\nIIII\n@b\nGGCCA\n+\n@>+!~\n"), (Records{kTwo, ""}));
}

TEST_F(TextRecords, TwoLines) {
  EXPECT_EQ(of(">a\nACGT\n>b\nGGCCA\n"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, FileWithoutRecords) {
  for (const char* const text : {"", "\n", "\r\n\r\n", "\n\n\n"}) {
    EXPECT_EQ(of(text), (Records{})) << ::testing::PrintToString(text);
  }
}

TEST_F(TextRecords, LastLineWithoutEnd) {
  EXPECT_EQ(of("@a\nACGT\n+\nIIII\n@b\nGGCCA\n+\n@>+!~"), (Records{kTwo, ""}));
  EXPECT_EQ(of(">a\nACGT\n>b\nGGCCA"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, BlankLinesBeforeBetweenAndBehindRecords) {
  EXPECT_EQ(of("\n@a\nACGT\n+\nIIII\n\n\r\n@b\nGGCCA\n+\n@>+!~\n\n\n"), (Records{kTwo, ""}));
  EXPECT_EQ(of("\n>a\nACGT\n\n\r\n>b\n\nGG\n\nCCA\n\n"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, CarriageReturns) {
  EXPECT_EQ(of("@a\r\nACGT\r\n+\r\nIIII\r\n@b\r\nGGCCA\r\n+\r\n@>+!~\r\n"), (Records{kTwo, ""}));
  EXPECT_EQ(of(">a\r\nACGT\r\n>b\r\nGG\r\nCCA\r\n"), (Records{kTwoWithout, ""}));
  EXPECT_EQ(of(">a\r\nACGT\r\n>b\r\nGGCCA\r"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, CarriageReturnsOnSomeLinesAlone) {
  EXPECT_EQ(of("@a\nACGT\r\n+\nIIII\n@b\nGGCCA\n+\r\n@>+!~\r\n"), (Records{kTwo, ""}));
  EXPECT_EQ(of("@a\r\nACGT\n+\nIIII\n@b\nGGCCA\n+\n@>+!~"), (Records{kTwo, ""}));
}

TEST_F(TextRecords, SequencesOnSeveralLines) {
  EXPECT_EQ(of("@a\nAC\nGT\n+\nII\nII\n@b\nGG\nCC\nA\n+\n@>\n+!\n~\n"), (Records{kTwo, ""}));
  EXPECT_EQ(of(">a\nAC\nGT\n>b\nGG\nCC\nA\n"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, BasesAndQualitiesWrappedDifferently) {
  EXPECT_EQ(of("@a\nACGT\n+\nI\nII\nI\n@b\nG\nG\nC\nC\nA\n+\n@>+!~\n"), (Records{kTwo, ""}));
}

// However much of the file is at hand: what follows the header looks like a record of four lines.
TEST_F(TextRecords, ALineOfPlusAloneEndsTheBases) {
  for (const char* const text : {"@a\n+\n+b\n+\n", "@a\n+\n+b\n"}) {
    EXPECT_EQ(of(text),
              (Records{{{"a", "", ""}}, "reads, record 2: it begins with '+', not with '@'"}));
  }
}

// The four lines of the first record are no more of it than the first three.
TEST_F(TextRecords, ABlankLineBehindARecordWithoutBases) {
  const std::string text = "@a\r\n\r\n+\r\n\r\n@b\r\nAC\r\n+\r\nII\r\n";
  EXPECT_EQ(of(text), (Records{{{"a", "", ""}, {"b", "AC", "II"}}, ""}));
  reads::RecordView view;
  reads::RecordParser parser(reads::TextFormat::kFastq);
  EXPECT_EQ(parser.take(text, false, view), std::string_view("@a\r\n\r\n+\r\n").size());
}

TEST_F(TextRecords, QualityLinesThatLookLikeOtherLines) {
  EXPECT_EQ(of("@a\nACGT\n+\n@b#1\n@b\nGG\nCCA\n+b\n+\n>\n@\n+\n@\n"),
            (Records{{{"a", "ACGT", "@b#1"}, {"b", "GGCCA", "+>@+@"}}, ""}));
}

TEST_F(TextRecords, ReadsWithoutBases) {
  EXPECT_EQ(of("@a\n\n+\n\n@b\nGGCCA\n+\n@>+!~\n"), (Records{{{"a", "", ""}, kTwo[1]}, ""}));
  EXPECT_EQ(of("@a\n+\n@b\nGGCCA\n+\n@>+!~\n"), (Records{{{"a", "", ""}, kTwo[1]}, ""}));
  EXPECT_EQ(of("@a\nACGT\n+\nIIII\n@b\n\n+\n\n"), (Records{{kTwo[0], {"b", "", ""}}, ""}));
  EXPECT_EQ(of(">a\n>b\nGGCCA\n>c\n\n"),
            (Records{{{"a", "", ""}, kTwoWithout[1], {"c", "", ""}}, ""}));
}

TEST_F(TextRecords, LowerCaseIsPutInUpperCase) {
  EXPECT_EQ(of("@a\nAcGt\n+\nIIII\n@b\nggcca\n+\n@>+!~\n"), (Records{kTwo, ""}));
  EXPECT_EQ(of(">a\nacgt\n>b\nGG\ncCA\n"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, OtherLettersStay) {
  EXPECT_EQ(of(">a\nNRYKMnryxU.-*\n"), (Records{{{"a", "NRYKMNRYXU.-*", ""}}, ""}));
}

TEST_F(TextRecords, NamesGoUpToTheFirstBlank) {
  EXPECT_EQ(of("@a 1:N:0:ACGT\nACGT\n+a 1:N:0:ACGT\nIIII\n@b\tx\nGGCCA\n+\n@>+!~\n"),
            (Records{kTwo, ""}));
  EXPECT_EQ(of(">a/1 x\nACGT\n>!b#~/2\nGGCCA\n"),
            (Records{{{"a/1", "ACGT", ""}, {"!b#~/2", "GGCCA", ""}}, ""}));
  const std::string longest(254, 'n');
  EXPECT_EQ(of(">" + longest + "\nACGT\n"), (Records{{{longest, "ACGT", ""}}, ""}));
}

TEST_F(TextRecords, WhatIsFixedIsCountedByRecords) {
  const reads::Fixes fixes = fixesOf(
      "@a\r\nACGT\r\n+\r\nIIII\r\n@b\nacgtA\n+\nIIIII\n@c\nA\nC\nG\n+\nIII\n@d\nA\r\nc\n+\nII\n");
  EXPECT_EQ(fixes.carriageReturns, 2u);
  EXPECT_EQ(fixes.lowerCase, 2u);
  EXPECT_EQ(fixes.wrapped, 2u);
}

TEST_F(TextRecords, NothingIsCountedWhereNothingIsFixed) {
  for (const char* const text : {"@a x\nACGTN\n+\nIIIII\n\n", ">a\nA.N-\n>b\n\nACGT\n"}) {
    const reads::Fixes fixes = fixesOf(text);
    EXPECT_EQ(fixes.carriageReturns + fixes.lowerCase + fixes.wrapped, 0u) << text;
  }
}

// Records that lie across the blocks in which a file is read, at every place.
TEST_F(TextRecords, RecordsAcrossBlocks) {
  constexpr std::size_t kBlock = 131072;
  const std::string behind = "@b\nGGCCA\n+\n@>+!~\n@c\nAC\n+\nII\n";
  for (std::size_t place = 0; place <= behind.size(); ++place) {
    for (const std::size_t block : {std::size_t{4096}, std::size_t{65536}, kBlock, kBlock + 4096}) {
      const std::size_t length = (block - place - 7) / 2;
      const std::size_t name = block - place - 6 - 2 * length;
      const Read first{std::string(name, 'n'), std::string(length, 'A'), std::string(length, 'I')};
      const std::string text = written({first}, {}) + behind;
      ASSERT_EQ(text.size(), block - place + behind.size());
      EXPECT_EQ(of(text), (Records{{first, kTwo[1], {"c", "AC", "II"}}, ""})) << place;
    }
  }
}

// The same of files that are decoded in blocks of 256 KiB.
TEST_F(TextRecords, RecordsAcrossDecodedBlocks) {
  constexpr std::size_t kBlock = 262144;
  const std::string behind = ">b\nGGCCA\n>c\nAC\n";
  for (std::size_t place = 0; place <= behind.size(); ++place) {
    const Read first{"n", std::string(kBlock - place - 4, 'A'), ""};
    const std::string text = ">n\n" + first.bases + "\n" + behind;
    write("reads", gzipped(text));
    for (const Helpers helpers : {Helpers::kNone, Helpers::kInflateAhead}) {
      EXPECT_EQ(recordsOf("reads", helpers),
                (Records{{first, kTwoWithout[1], {"c", "AC", ""}}, ""}))
          << place;
    }
  }
}

TEST_F(TextRecords, LongRecords) {
  std::vector<Read> reads;
  for (const std::size_t length : {3u, 5000000u, 0u, 1000000u, 2u}) {
    reads.push_back({"r" + std::to_string(length), randomBases(length, 7), ""});
  }
  EXPECT_TRUE(of(written(reads, {.isFastq = false})) == (Records{reads, ""}));
  EXPECT_TRUE(of(written(reads, {.isFastq = false, .width = 61})) == (Records{reads, ""}));
  for (Read& read : reads) read.quality = std::string(read.bases.size(), '@');
  EXPECT_TRUE(of(written(reads, {})) == (Records{reads, ""}));
  EXPECT_TRUE(of(written(reads, {.width = 70, .lineEnd = "\r\n"})) == (Records{reads, ""}));
}

TEST_F(TextRecords, Packings) {
  std::vector<Read> reads;
  for (unsigned i = 0; i < 5000; ++i) {
    reads.push_back({std::to_string(i), randomBases(i % 200, i), std::string(i % 200, 'F')});
  }
  const std::string text = written(reads, {});
  for (const reads::Packing packing : kPackings) {
    write("reads", packed(text, packing));
    for (const Helpers helpers : {Helpers::kNone, Helpers::kInflateAhead}) {
      EXPECT_TRUE(recordsOf("reads", helpers) == (Records{reads, ""})) << nameOf(packing);
    }
  }
}

TEST_F(TextRecords, NameOfTheFileTellsNothing) {
  write("reads.gz", "@a\nACGT\n+\nIIII\n@b\nGGCCA\n+\n@>+!~\n");
  EXPECT_EQ(recordsOf("reads.gz"), (Records{kTwo, ""}));
  write("reads.bam", gzipped(">a\nACGT\n>b\nGGCCA\n"));
  EXPECT_EQ(recordsOf("reads.bam"), (Records{kTwoWithout, ""}));
}

TEST_F(TextRecords, SeveralMembersOrStreamsAreOneText) {
  const std::string one = "@a\nACGT\n+\nII";
  const std::string other = "II\n@b\nGGCCA\n+\n@>+!~\n";
  for (const reads::Packing packing : kPackings) {
    write("reads", packed(one, packing) + packed(other, packing));
    EXPECT_EQ(recordsOf("reads"), (Records{kTwo, ""})) << nameOf(packing);
  }
}

TEST_F(TextRecords, PackedFilesWithoutRecords) {
  for (const reads::Packing packing : kPackings) {
    write("reads", packed("", packing));
    EXPECT_EQ(recordsOf("reads"), (Records{})) << nameOf(packing);
  }
}

// The scale of qualities, found from a sample.

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

// Random records, written in random ways, against a plain reading of the text.

std::string anyOf(const std::string& letters, std::size_t length) {
  return *rc::gen::container<std::string>(length, rc::gen::elementOf(letters));
}

// Lengths small and large: some records are longer than a block of a file.
std::size_t anyLength() {
  return *rc::gen::weightedOneOf<std::size_t>({{8, rc::gen::inRange<std::size_t>(0, 40)},
                                               {4, rc::gen::inRange<std::size_t>(0, 400)},
                                               {1, rc::gen::inRange<std::size_t>(3000, 9000)}});
}

std::vector<Read> anyReads(bool isFastq) {
  std::vector<Read> reads;
  const auto count = *rc::gen::inRange(0, 12);
  for (int i = 0; i < count; ++i) {
    const std::size_t length = anyLength();
    const bool isLower = *rc::gen::weightedElement<bool>({{4, false}, {1, true}});
    Read read{anyOf("ab:/.12#>+", *rc::gen::inRange<std::size_t>(1, 9)),
              anyOf(isLower ? "acgtnACGTN" : "ACGTNRY", length), ""};
    if (isFastq) read.quality = anyOf("@>+!~IF#", length);
    reads.push_back(read);
  }
  return reads;
}

Writing anyWriting(bool isFastq) {
  Writing writing;
  writing.isFastq = isFastq;
  writing.width = *rc::gen::element<std::size_t>(0, 0, 1, 7, 60, 4096);
  writing.lineEnd = *rc::gen::element<std::string>("\n", "\n", "\r\n");
  writing.repeatsHeader = *rc::gen::arbitrary<bool>();
  writing.endsWithLine = *rc::gen::arbitrary<bool>();
  writing.blankLines = *rc::gen::inRange<std::size_t>(0, 3);
  writing.comment = *rc::gen::element<std::string>("", " 1:N:0:AC", "\t@x > y");
  return writing;
}

// The text packed as a whole, or in pieces one behind the other.
std::string anyPacked(const std::string& text, Packing packing) {
  const std::size_t cut = *rc::gen::inRange<std::size_t>(0, text.size() + 1);
  if (packing == Packing::kNone || *rc::gen::arbitrary<bool>()) return packed(text, packing);
  return packed(text.substr(0, cut), packing) + packed(text.substr(cut), packing);
}

// A record whose last line has neither characters nor an end is one that is cut short.
bool isCutShort(const std::vector<Read>& reads, const Writing& writing) {
  return !writing.isFastq && !writing.endsWithLine && !reads.empty() && reads.back().bases.empty();
}

class RecordsProperty : public ReadsTest {};

TEST_F(RecordsProperty, RecordsAreThoseOfThePlainReading) {
  EXPECT_TRUE(rc::check("records are those of the plain reading", [this] {
    const bool isFastq = *rc::gen::arbitrary<bool>();
    const std::vector<Read> reads = anyReads(isFastq);
    const Writing writing = anyWriting(isFastq);
    RC_PRE(!isCutShort(reads, writing));
    const std::string text = written(reads, writing);
    const Packing packing =
        *rc::gen::elementOf(std::vector<Packing>(std::begin(kPackings), std::end(kPackings)));
    const Helpers helpers =
        *rc::gen::element(Helpers::kNone, Helpers::kInflateAhead, Helpers::kInflateByTwo);
    write("in", anyPacked(text, packing));
    const Records got = recordsOf("in", helpers);
    RC_ASSERT(got.error == "");
    RC_ASSERT(got.reads == plainRecords(text));
    RC_ASSERT(got.reads.size() == reads.size());
    RC_CLASSIFY(packing != Packing::kNone, "packed");
    RC_CLASSIFY(writing.width != 0, "wrapped");
  }));
}

// Any change of a byte: the reads before it stay, and nothing but an error or another read follows.
TEST_F(RecordsProperty, ChangedBytesAreNoEndOfTheWorld) {
  EXPECT_TRUE(rc::check("changed bytes", [this] {
    const bool isFastq = *rc::gen::arbitrary<bool>();
    const std::vector<Read> reads = anyReads(isFastq);
    const Packing packing =
        *rc::gen::elementOf(std::vector<Packing>(std::begin(kPackings), std::end(kPackings)));
    std::string file = packed(written(reads, {.isFastq = isFastq}), packing);
    RC_PRE(!file.empty());
    const auto place = *rc::gen::inRange<std::size_t>(0, file.size());
    const auto byte = static_cast<char>(*rc::gen::inRange(0, 256));
    RC_PRE(file[place] != byte);
    file[place] = byte;
    write("in", file);
    const Records got = recordsOf("in");
    RC_ASSERT(got == recordsOf("in", Helpers::kInflateAhead));
    if (packing == Packing::kNone) return;
    // Headers of members hold some bytes that mean nothing; all others are reported.
    RC_ASSERT(!got.error.empty() || got.reads.size() == reads.size());
  }));
}

}  // namespace

}  // namespace velk::test
