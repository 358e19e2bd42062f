// Damaged gzip read files under the readers: what could be read reaches the workers, the damage is
// named once, when it is met, and remembered for the end of the run.
#include <cstdlib>

#include "streaming/gzipDamage.h"
#include "tests/streaming/gzipWays.h"
#include "tests/streaming/readerKinds.h"

namespace velk::test {
namespace {

using ::testing::Eq;
using ::testing::ExitedWithCode;

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
