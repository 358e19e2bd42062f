// What is said of files that cannot be read: each message to the letter.
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "tests/reads/plainRecords.h"

namespace velk::test {
namespace {

struct Fault {
  const char* name;
  std::string text;
  std::size_t records;  // before the error
  std::string error;
};

void PrintTo(const Fault& fault, std::ostream* out) {
  *out << fault.name;
}

class RecordFaults : public ReadsTest, public ::testing::WithParamInterface<Fault> {};

// What is said is the same in one block, across blocks, and of packed files.
TEST_P(RecordFaults, AreTold) {
  const Fault& fault = GetParam();
  const Records one = recordsOf(write("in", fault.text));
  EXPECT_EQ(one.error, "in" + fault.error);
  EXPECT_EQ(one.reads.size(), fault.records);
  EXPECT_EQ(recordsOf(write("in", gzipped(fault.text))), one);
}

const std::string kFirst = "@a\nAC\n+\nII\n";

INSTANTIATE_TEST_SUITE_P(
    All, RecordFaults,
    ::testing::Values(
        Fault{"Binary",
              "\x7f"
              "ELF",
              0, ": is neither FASTQ nor FASTA nor BAM"},
        Fault{"Text", "ACGT\n", 0, ": is neither FASTQ nor FASTA nor BAM"},
        Fault{"Sam", "@HD\tVN:1.6\n@SQ\tSN:c\tLN:9\n", 0,
              ": is SAM; `samtools collate` makes BAM of it"},
        Fault{"SamWithoutHd", "@SQ\tSN:c\tLN:9\n", 0,
              ": is SAM; `samtools collate` makes BAM of it"},
        Fault{"NoMark", kFirst + "b\nAC\n+\nII\n", 1,
              ", record 2: it begins with 'b', not with '@'"},
        Fault{"FastaInFastq", kFirst + ">b\nAC\n", 1,
              ", record 2: it begins with '>', not with '@'"},
        Fault{"FastqInFasta", ">a\nAC\n>b\nAC\n@c\nAC\n+\nII\n", 1,
              ", record 2: '@' in its sequence"},
        Fault{"CutInHeader", kFirst + "@b", 1, ", record 2: it is cut short"},
        Fault{"CutBehindHeader", kFirst + "@b\n", 1, ", record 2: it is cut short"},
        Fault{"CutInBases", kFirst + "@b\nAC", 1, ", record 2: it is cut short"},
        Fault{"CutBehindBases", kFirst + "@b\nAC\n", 1, ", record 2: it is cut short"},
        Fault{"CutBehindPlus", kFirst + "@b\nAC\n+\n", 1, ", record 2: it is cut short"},
        Fault{"CutInQualities", kFirst + "@b\nAC\n+\nI", 1, ", record 2: it is cut short"},
        Fault{"CutFastaHeader", ">a\nAC\n>b", 1, ", record 2: it is cut short"},
        Fault{"CutBehindFastaHeader", ">a\nAC\n>b\n", 1, ", record 2: it is cut short"},
        Fault{"MoreQualities", kFirst + "@b\nACGT\n+\nIIIII\n", 1,
              ", record 2: it has 4 bases and 5 qualities"},
        Fault{"FewerQualities", kFirst + "@b\nACGT\n+\nIII\n@c\nAC\n+\nII\n", 1,
              ", record 2: it has 4 bases and 3 qualities"},
        Fault{"NoQualities", kFirst + "@b\nACGT\n+\n\n@c\nAC\n+\nII\n", 1,
              ", record 2: it has 4 bases and 0 qualities"},
        Fault{"MoreQualitiesOnALaterLine", kFirst + "@b\nACGT\n+\nII\nIII\n", 1,
              ", record 2: it has 4 bases and 5 qualities"},
        Fault{"LineOfQualitiesIsMissing", kFirst + "@b\nACGT\n+\nII\n@name\nAC\n+\nII\n", 1,
              ", record 2: it has 4 bases and 2 qualities"},
        Fault{"QualitiesOfAnEmptyRead", "@a\n\n+\nI\n" + kFirst, 1,
              ", record 2: it begins with 'I', not with '@'"},
        Fault{"NextRecordWithinASequence", "@a\nAC\n" + kFirst, 0,
              ", record 1: '@' in its sequence"},
        Fault{"Digit", kFirst + "@b\nA1\n+\nII\n", 1, ", record 2: '1' in its sequence"},
        Fault{"Blank", kFirst + "@b\nAC \n+\nIII\n", 1, ", record 2: ' ' in its sequence"},
        Fault{"ControlCharacter", kFirst + "@b\nA\tC\n+\nIII\n", 1,
              ", record 2: the byte 0x09 in its sequence"},
        Fault{"CarriageReturnWithin", ">a\nAC\rGT\n", 0,
              ", record 1: the byte 0x0d in its sequence"},
        Fault{"Nul", std::string(">a\nA\0C\n", 7), 0, ", record 1: the byte 0x00 in its sequence"},
        Fault{"HighByte",
              ">a\nA\xc3\xa4"
              "C\n",
              0, ", record 1: the byte 0xc3 in its sequence"},
        Fault{"QualityBelow", kFirst + "@b\nACG\n+\nI I\n", 1,
              ", record 2: ' ' in its qualities, which are not Phred+33"},
        Fault{"QualityAbove", kFirst + "@b\nACG\n+\nI\x7fI\n", 1,
              ", record 2: the byte 0x7f in its qualities, which are not Phred+33"},
        Fault{"QualityOfAWrappedRead", kFirst + "@b\nA\nCG\n+\n\tII\n", 1,
              ", record 2: the byte 0x09 in its qualities, which are not Phred+33"},
        Fault{"NoName", kFirst + "@ b\nAC\n+\nII\n", 1, ", record 2: it has no name"},
        Fault{"NoNameAtAll", ">\nAC\n", 0, ", record 1: it has no name"},
        Fault{"NameWithAByte", ">na\x01me\nAC\n", 0, ", record 1: the byte 0x01 in its name"},
        Fault{"NameBeginsWithAt", "@@a\nAC\n+\nII\n", 0, ", record 1: its name begins with '@'"},
        Fault{"NameTooLong", ">" + std::string(255, 'n') + "\nAC\n", 0,
              ", record 1: its name has 255 characters, and 254 are most"}),
    [](const auto& test) { return std::string(test.param.name); });

class InputErrors : public ReadsTest {
 protected:
  InputErrors() {
    write("three", ">a\nAC\n>b\nAC\n>c\nAC\n");
    write("two", ">a\nGT\n>b\nGT\n");
  }
};

TEST_F(InputErrors, NoSuchFile) {
  EXPECT_EQ(recordsOf("none").error, "none: No such file or directory");
  EXPECT_EQ(readsOf({"none"}).error, "none: No such file or directory");
  EXPECT_EQ(readsOf({"two", "none"}).error, "none: No such file or directory");
}

TEST_F(InputErrors, Folder) {
  std::filesystem::create_directory("folder");
  EXPECT_EQ(recordsOf("folder").error, "folder: Is a directory");
}

TEST_F(InputErrors, Cram) {
  EXPECT_EQ(recordsOf(write("in", "CRAM\3\1")).error,
            "in: is CRAM; `samtools collate` makes BAM of it");
}

TEST_F(InputErrors, FewerMates) {
  EXPECT_EQ(readsOf({"three", "two"}).error, "three, record 3: it has no mate: two has 2 records");
  EXPECT_EQ(readsOf({"two", "three"}).error, "three, record 3: it has no mate: two has 2 records");
  EXPECT_EQ(readsOf({"two", write("none", "")}).error,
            "two, record 1: it has no mate: none has 0 records");
}

TEST_F(InputErrors, OddNumberOfMatesInTurn) {
  write("both", ">a\nAC\n>a\nGT\n>b\nAC\n");
  const Records records = readsOf({"both", "", true}, 1);
  EXPECT_EQ(records.reads.size(), 2u);
  EXPECT_EQ(records.error, "both, record 3: it has no mate: the file ends with it");
}

TEST_F(InputErrors, OtherNamesInTurn) {
  write("both", ">a/1\nAC\n>a/2\nGT\n>b/1\nAC\n>c/2\nGT\n");
  EXPECT_EQ(readsOf({"both", "", true}).error,
            "both, record 3: its name is \"b/1\", and the next one is named \"c/2\"");
}

TEST_F(InputErrors, DamageOfTheSecondFileIsToldByItsName) {
  write("bad", ">a\nGT\n>b\nG!\n");
  EXPECT_EQ(readsOf({"three", "bad"}).error, "bad, record 2: '!' in its sequence");
}

// The mates agree up to the damage, and the other file ends there.
TEST_F(InputErrors, DamageBehindTheLastRecord) {
  std::string file = gzipped(">a\nGT\n>b\nGT\n");
  file.back() = '\x7f';  // the length
  write("bad", file);
  EXPECT_EQ(readsOf({"two", "bad"}, 1).error,
            "bad, record 2: damaged gzip data: incorrect length check");
  EXPECT_EQ(readsOf({"bad", "two"}, 1).error,
            "bad, record 2: damaged gzip data: incorrect length check");
}

TEST_F(InputErrors, FileThatShrinksOrGrowsWhileItIsRead) {
  std::string text;
  for (int i = 0; i < 50000; ++i) text += "@n\nACGT\n+\nIIII\n";
  for (const int change : {-300000, 150}) {
    write("in", text);
    const auto source = reads::openRecords("in", reads::Helpers::kNone);
    reads::RecordView view;
    ASSERT_TRUE(source->next(view));
    const auto size = static_cast<int64_t>(text.size()) + change;
    if (change < 0) {
      ASSERT_EQ(truncate("in", size), 0);
    } else {
      std::ofstream("in", std::ios::app) << text.substr(0, 150);
    }
    uint64_t records = 1;
    try {
      while (source->next(view)) ++records;
      ADD_FAILURE() << "no error";
    } catch (const reads::InputError& error) {
      EXPECT_EQ(records, static_cast<uint64_t>(size) / 15);
      EXPECT_EQ(error.what(), "in, record " + std::to_string(records + 1) +
                                  ": its size changed while it was read");
    }
  }
}

}  // namespace
}  // namespace velk::test
