// Random small files: every reader must make of them what the standard tools make of them.
#include <rapidcheck.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "driver/velk.h"
#include "streaming/gzipInput.h"
#include "tests/streaming/gzipWays.h"
#include "tests/streaming/readerKinds.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

using Bytes = std::string;

rc::Gen<std::string> anyLine(bool mayHoldNul) {
  const auto repeated = [](char letter, int least, int most) {
    return rc::gen::map(rc::gen::inRange(least, most), [letter](int count) {
      return std::string(static_cast<std::size_t>(count), letter);
    });
  };
  const std::string letters = mayHoldNul ? std::string("ACGT>@+\r\0", 9) : std::string("ACGT>@+\r");
  return rc::gen::weightedOneOf<std::string>(
      {{3, rc::gen::just(std::string())},
       {12, rc::gen::container<std::string>(rc::gen::elementOf(letters))},
       {1, repeated('C', 1018, 1028)},
       {1, repeated('G', 2040, 2050)}});
}

rc::Gen<std::string> anyText(bool mayHoldNul) {
  return rc::gen::exec([mayHoldNul] {
    const auto count = *rc::gen::inRange<std::size_t>(0, 61);
    const auto lines = *rc::gen::container<std::vector<std::string>>(count, anyLine(mayHoldNul));
    std::string text;
    for (const std::string& line : lines) text.append(line).append("\n");
    const bool endsWithNewline = *rc::gen::weightedElement<bool>({{2, true}, {1, false}});
    if (!endsWithNewline && !text.empty()) text.pop_back();
    return text;
  });
}

// The text as a file under a gzip name: as it stands, or as members cut anywhere, empty ones too.
rc::Gen<Bytes> packed(const std::string& text) {
  return rc::gen::exec([text]() -> Bytes {
    const auto members = *rc::gen::inRange<std::size_t>(0, 4);
    if (members == 0) return text;
    Bytes file;
    std::size_t from = 0;
    for (std::size_t i = 1; i <= members; ++i) {
      const std::size_t to =
          i == members ? text.size() : *rc::gen::inRange<std::size_t>(from, text.size() + 1);
      file += gzipped(text.substr(from, to - from));
      from = to;
    }
    return file;
  });
}

class ReaderProperties : public StreamingTest, public ::testing::WithParamInterface<ReaderKind> {};

INSTANTIATE_TEST_SUITE_P(Twelve, ReaderProperties, ::testing::ValuesIn(kReaderKinds),
                         ::testing::PrintToStringParamName());

TEST_P(ReaderProperties, ReaderEqualsThePlainLoopOverStandardTools) {
  const ReaderKind& kind = GetParam();
  const std::string fileA = kind.isGzip ? "one.gz" : "one";
  const std::string fileB = kind.files == 1 ? "" : kind.isGzip ? "two.gz" : "two";
  const bool holds = rc::check([&] {
    const auto fill = [&](const std::string& file) {
      const std::string text = *anyText(true);
      std::ofstream(file, std::ios::binary) << (kind.isGzip ? *packed(text) : text);
    };
    fill(fileA);
    if (kind.files == 2) fill(fileB);
    const Slots slots = oldSlots(*rc::gen::inRange<std::size_t>(1, 6));
    thread_num = *rc::gen::inRange(1, 3);  // gzip files are inflated in place, or ahead
    const Batches expected = batchesByStandardTools(kind, fileA, fileB, slots);
    const ReaderRun run = runReader(kind, fileA, fileB, slots);
    RC_TAG(std::min<std::size_t>(expected.size(), 3));
    RC_ASSERT(run.batches == expected);
    RC_ASSERT(run.messages == messagesOf(kind, expected));
  });
  EXPECT_TRUE(holds);
}

TEST_P(ReaderProperties, CountingLinesAgreesWithTheStandardTools) {
  const ReaderKind& kind = GetParam();
  const std::string fileA = kind.isGzip ? "one.gz" : "one";
  const std::string fileB = kind.files == 1 ? "" : kind.isGzip ? "two.gz" : "two";
  for (int count = 0; count <= 3; ++count) {
    for (std::size_t cut = 0; cut < static_cast<std::size_t>(kind.lines); ++cut) {
      for (const bool endsWithNewline : {true, false}) {
        FileText first = numberedReads(kind, 0, count);
        const FileText second = numberedReads(kind, 1, 2);
        first.lines.resize(first.lines.size() + cut, "tail");
        first.endsWithNewline = endsWithNewline;
        write(fileA, first.text());
        if (kind.files == 2) write(fileB, second.text());
        EXPECT_EQ(batchesByCounting(kind, first, second, oldSlots(2)),
                  batchesByStandardTools(kind, fileA, fileB, oldSlots(2)));
      }
    }
  }
}

// Damaged gzip read files under the readers: what could be read reaches the workers, the damage is
// named once, when it is met, and remembered for the end of the run.

constexpr std::size_t kTrailer = 8;  // bytes: checksum and length of a member

std::string withoutTrailer(const std::string& member) {
  return member.substr(0, member.size() - kTrailer);
}

std::string withWrongLength(std::string member) {
  member.back() = '\x7f';
  return member;
}

std::string damaged(const std::string& file, const std::string& reason) {
  return "[ERROR]: damaged gzip file: " + file + ": " + reason + "\n";
}

class DamagedReads : public GzipWayTest {
 protected:
  static ReaderRun run(const std::string& reader, const std::string& fileB = "",
                       std::size_t limit = 10) {
    return runReader(kindOf(reader), "one.gz", fileB, emptySlots(limit));
  }
};

INSTANTIATE_GZIP_WAYS(DamagedReads);

TEST_P(DamagedReads, NoneIsRememberedAtFirst) {
  EXPECT_EXIT(std::exit(gzipDamageSeen() ? 1 : 0), ExitedWithCode(0), Eq(""));
}

TEST_P(DamagedReads, ReportedAndRemembered) {
  EXPECT_EXIT(
      {
        reportGzipDamage("one.gz", "some reason");
        std::exit(gzipDamageSeen() ? 1 : 0);
      },
      ExitedWithCode(1), Eq("[ERROR]: damaged gzip file: one.gz: some reason\n"));
}

TEST_P(DamagedReads, WholeFilesLeaveNoTrace) {
  writeGzip("one.gz", ">\nAC\n");
  writeGzip("two.gz", ">\nGT\n");
  EXPECT_EXIT(
      {
        const ReaderRun result = run("LoadPEfa_gz", "two.gz");
        std::cerr << result.messages;
        std::exit(gzipDamageSeen() ? 1 : 0);
      },
      ExitedWithCode(0), Eq("bufferNum: 1\n"));
}

TEST_P(DamagedReads, CutFileGivesWhatInflates) {
  write("one.gz", withoutTrailer(gzipped(">\nAC\n>\nGT\n")));
  const ReaderRun result = run("LoadSEfa_gz");
  EXPECT_EQ(result.batches, (Batches{{{"AC", "GT"}, {}}}));
  EXPECT_EQ(result.messages,
            damaged("one.gz", "unexpected end of file") + "bufferNum: 2\nFind reads finished!\n");
  EXPECT_TRUE(gzipDamageSeen());
}

TEST_P(DamagedReads, PartOfALineCountsAsALine) {
  write("one.gz", withoutTrailer(gzipped(">\nAC\n>\nGTCA")));
  EXPECT_EQ(run("LoadSEfa_gz").batches, (Batches{{{"AC", "GTC"}, {}}}));
}

TEST_P(DamagedReads, EveryGzipReaderNamesTheDamageBeforeTheLastBatch) {
  for (const ReaderKind& kind : kReaderKinds) {
    if (!kind.isGzip) continue;
    SCOPED_TRACE(kind.name);
    const std::string first = gzipped(numberedReads(kind, 0, 3).text());
    const std::string second = gzipped(numberedReads(kind, 1, 3).text());
    write("one.gz", withWrongLength(first));
    write("two.gz", second);
    const std::string fileB = kind.files == 2 ? "two.gz" : "";
    const Slots slots = emptySlots(2);
    const ReaderRun result = runReader(kind, "one.gz", fileB, slots);
    EXPECT_EQ(result.batches,
              batchesByCounting(kind, numberedReads(kind, 0, 3), numberedReads(kind, 1, 3), slots));
    EXPECT_EQ(result.messages, "bufferNum: 2\n" + damaged("one.gz", "incorrect length check") +
                                   "bufferNum: 1\n" +
                                   (kind.isPaired() ? "" : "Find reads finished!\n"));
  }
}

TEST_P(DamagedReads, DamageInTheRestOfTheLongerMateFileIsMet) {
  writeGzip("one.gz", ">\nAC\n");
  write("two.gz", withWrongLength(gzipped(">\nGT\n>\nCC\n>\nTT\n")));
  EXPECT_EQ(run("LoadPEfa_gz", "two.gz").messages,
            damaged("two.gz", "incorrect length check") + "bufferNum: 1\n");

  write("one.gz", gzipped(">\nGT\n>\nCC\n>\nTT\n") + "x");
  writeGzip("two.gz", ">\nAC\n");
  EXPECT_EQ(run("LoadPEfa_gz", "two.gz").messages,
            damaged("one.gz", "trailing bytes after the last member") + "bufferNum: 1\n");
}

TEST_P(DamagedReads, AtTheEndTheFirstFileComesFirst) {
  const std::string text = ">\nAC\n";
  write("one.gz", gzipped(text) + "x");
  write("two.gz", withWrongLength(gzipped(text)));
  EXPECT_EQ(run("LoadPEfa_gz", "two.gz").messages,
            damaged("one.gz", "trailing bytes after the last member") +
                damaged("two.gz", "incorrect length check") + "bufferNum: 1\n");
}

TEST_P(DamagedReads, DamageIsNamedWhenItIsMet) {
  // The second file breaks off in the first record, the first one much later.
  std::string many;
  for (int i = 0; i < 200000; ++i) many.append(">\n").append(std::to_string(i)).append("\n");
  write("one.gz", withWrongLength(gzipped(many)));
  write("two.gz", withoutTrailer(gzipped(">\n")));
  const ReaderRun result = run("LoadPEfa_gz", "two.gz");
  EXPECT_EQ(result.batches, (Batches{{{"0"}, {">"}}}));
  EXPECT_EQ(result.messages, damaged("two.gz", "unexpected end of file") +
                                 damaged("one.gz", "incorrect length check") + "bufferNum: 1\n");
}

TEST_P(DamagedReads, DamageInsideARecordIsNamedBeforeTheBatchThatHoldsIt) {
  write("one.gz", withoutTrailer(gzipped("@\nAC\n+\nII\n@\nGT\n")));
  const ReaderRun result = run("LoadSEfq_gz", "", 2);
  EXPECT_EQ(result.batches, (Batches{{{"AC", "GT"}, {}}}));
  EXPECT_EQ(result.messages,
            damaged("one.gz", "unexpected end of file") + "bufferNum: 2\nFind reads finished!\n");
}

TEST_P(DamagedReads, SecondMateFileThatCannotBeOpened) {
  writeGzip("one.gz", ">\nAC\n>\nGT\n");
  const ReaderRun result = run("LoadPEfa_gz", "missing.gz");
  EXPECT_EQ(result.batches, Batches{});
  EXPECT_EQ(result.messages, damaged("missing.gz", "No such file or directory"));
  EXPECT_TRUE(gzipDamageSeen());
}

TEST_P(DamagedReads, SecondMateFileThatCannotBeOpenedAndDamageInTheFirst) {
  write("one.gz", gzipped("@\nAC\n+\nII\n") + "x");
  EXPECT_EQ(run("LoadPEfq_gz", "missing").messages,
            damaged("missing", "No such file or directory") +
                damaged("one.gz", "trailing bytes after the last member"));
}

TEST_P(DamagedReads, SecondMateFileThatIsAFolder) {
  writeGzip("one.gz", ">\nAC\n");
  std::filesystem::create_directory("folder");
  const ReaderRun result = run("LoadPEfa_gz", "folder");
  EXPECT_EQ(result.batches, Batches{});
  EXPECT_EQ(result.messages, damaged("folder", "Is a directory"));
}

TEST_P(DamagedReads, RunGoesOnWithTheNextFile) {
  write("one.gz", withoutTrailer(gzipped(">\nAC\n")));
  write("next", ">\nGT");
  run("LoadSEfa_gz");
  const ReaderRun next = runReader(kindOf("LoadSEfa"), "next", "", emptySlots(2));
  EXPECT_EQ(next.batches, (Batches{{{"GT"}, {}}}));
  EXPECT_TRUE(gzipDamageSeen()) << "damage of an earlier file is remembered";
}

}  // namespace

}  // namespace velk::test
