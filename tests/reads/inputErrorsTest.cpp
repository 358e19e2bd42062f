// Files that cannot be read, cut ones and archives among them: each message to the letter.
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <thread>

#include "tests/reads/plainRecords.h"

namespace velk::test {
namespace {

using reads::Helpers;
using reads::Packing;

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

// Small files cut at every byte: what is read is the beginning of what was there, and where records
// are missing the file is refused, unless it is a whole file, too.

const std::vector<Read> kReads{{"a", "ACGTACGTAA", "@>+!~IIII#"},
                               {"bb", "", ""},
                               {"c", "GGTTNACCA", "IIIIIIIII"},
                               {"d", "TTTTTTTTTTTTT", "FFFFFFFFFFFFF"}};

class Truncation : public ReadsTest {
 protected:
  // Reads every beginning of a file, and requires what holds of all. Returns how many of these,
  // but for the empty file and the whole one, were taken for whole.
  int wholeOnes(const std::string& file) const {
    const Records all = recordsOf(write("in", file));
    EXPECT_EQ(all.error, "");
    int whole = 0;
    for (std::size_t size = 1; size < file.size(); ++size) {
      const Records part = recordsOf(write("in", file.substr(0, size)));
      EXPECT_LE(part.reads.size(), all.reads.size());
      EXPECT_TRUE(std::equal(part.reads.begin(), part.reads.end(), all.reads.begin()))
          << size << ": " << ::testing::PrintToString(part);
      if (part.error.empty()) ++whole;
    }
    return whole;
  }
};

// A cut between two records cannot be seen, nor one of line ends behind the last character. The
// sums have a number for each record.
TEST_F(Truncation, Fastq) {
  EXPECT_EQ(wholeOnes(written(kReads, {})), 2 + 3 + 2 + 1);
}

TEST_F(Truncation, WrappedFastq) {
  EXPECT_EQ(wholeOnes(written(kReads, {.width = 4})), 2 + 3 + 2 + 1);
}

TEST_F(Truncation, FastqWithCarriageReturns) {
  EXPECT_EQ(wholeOnes(written(kReads, {.lineEnd = "\r\n"})), 3 + 5 + 3 + 2);
}

TEST_F(Truncation, PackedFiles) {
  for (const reads::Packing packing : {reads::Packing::kGzip, reads::Packing::kZstd,
                                       reads::Packing::kXz, reads::Packing::kBzip2}) {
    EXPECT_EQ(wholeOnes(packed(written(kReads, {}), packing)), 0) << nameOf(packing);
  }
}

TEST_F(Truncation, Bgzip) {
  EXPECT_EQ(wholeOnes(bgzipped(written({kReads[0], kReads[3]}, {}), 1000)), 1);  // the empty block
}

TEST_F(Truncation, Bam) {
  const std::string sam =
      "@HD\tVN:1.6\n"
      "a\t77\t*\t0\t0\t*\t*\t0\t0\tACGT\tIIII\na\t141\t*\t0\t0\t*\t*\t0\t0\tGG\t##\n"
      "b\t4\t*\t0\t0\t*\t*\t0\t0\tCCCCC\t*\n";
  EXPECT_EQ(wholeOnes(bamOf(sam)), 0);
}

// FASTA does not say how long a sequence is: what is read is the beginning of what was there.
TEST_F(Truncation, Fasta) {
  const std::vector<Read> reads{{"a", "ACGTACGTAA", ""}, {"c", "GGTTNACCA", ""}};
  for (const std::size_t width : {0u, 4u}) {
    const std::string file = written(reads, {.isFastq = false, .width = width});
    for (std::size_t size = 1; size < file.size(); ++size) {
      const std::string part = file.substr(0, size);
      const Records got = recordsOf(write("in", part));
      const bool isInHeader = part.rfind('\n') == std::string::npos ||
                              part.find('\n', part.rfind('>')) == std::string::npos ||
                              part.find('\n', part.rfind('>')) == size - 1;
      EXPECT_EQ(got.error.empty(), !isInHeader) << size;
      if (isInHeader) continue;
      EXPECT_EQ(got.reads, plainRecords(part)) << size;
    }
  }
}

// Packed files that are damaged, and what may stand behind the data.

class Archive : public ReadsTest {
 protected:
  Archive() {
    for (unsigned i = 0; i < 5000; ++i) {
      reads_.push_back({"r" + std::to_string(i), randomBases(40, i), std::string(40, 'F')});
    }
    text_ = written(reads_, {});
  }

  // The error of a file, the same with a helper; what is read before it must be right.
  std::string errorOf(const std::string& file) const {
    write("in", file);
    const Records records = recordsOf("in");
    EXPECT_TRUE(records == recordsOf("in", Helpers::kInflateAhead));
    EXPECT_TRUE(records == recordsOf("in", Helpers::kInflateByTwo));
    EXPECT_LE(records.reads.size(), reads_.size());
    EXPECT_TRUE(std::equal(records.reads.begin(), records.reads.end(), reads_.begin()));
    records_ = records.reads.size();
    return records.error;
  }

  std::string whereAndWhat(const std::string& what) const {
    return "in, record " + std::to_string(records_ + 1) + ": damaged " + what;
  }

  std::vector<Read> reads_;
  std::string text_;
  mutable std::size_t records_ = 0;
};

TEST_F(Archive, CutInHalf) {
  for (const auto& [packing, name] : {std::pair{Packing::kGzip, "gzip"},
                                      {Packing::kZstd, "zstd"},
                                      {Packing::kXz, "xz"},
                                      {Packing::kBzip2, "bzip2"}}) {
    const std::size_t half = text_.size() / 2;
    std::string file = packed(text_.substr(0, half), packing) + packed(text_.substr(half), packing);
    file.resize(file.size() / 4 * 3);
    const std::string error = errorOf(file);
    EXPECT_EQ(error, whereAndWhat(name + std::string(" data: unexpected end of file")));
    EXPECT_GT(records_, 1000u) << name;
  }
}

TEST_F(Archive, FlippedBit) {
  for (const auto& [packing, what] :
       {std::pair{Packing::kXz, "xz data: Lzma library error: Corrupted input data"},
        {Packing::kBzip2, "bzip2 data: bzip decompression failed"}}) {
    std::string file = packed(text_, packing);
    file[file.size() / 2] ^= 16;
    const std::string error = errorOf(file);
    EXPECT_EQ(error, whereAndWhat(what));
  }
}

TEST_F(Archive, BytesBehindTheLastStream) {
  EXPECT_EQ(errorOf(packed(text_, Packing::kBzip2) + "more"),
            "in, record 5001: damaged bzip2 data: trailing bytes after the last stream");
  EXPECT_EQ(errorOf(packed(text_, Packing::kXz) + std::string(8, '\0')), "");  // xz's own padding
}

// A stream that is not known for one ends the file for libarchive.
TEST_F(Archive, LaterStreamWithDamagedBeginning) {
  for (const auto& [packing, name] :
       {std::pair{Packing::kZstd, "zstd"}, {Packing::kXz, "xz"}, {Packing::kBzip2, "bzip2"}}) {
    const std::string stream = packed(text_, packing);
    std::string file = stream + stream;
    file[stream.size()] ^= 1;
    EXPECT_NE(errorOf(file).find(std::string("damaged ") + name + " data: "), std::string::npos);
  }
}

TEST_F(Archive, BeginningThatIsCutShort) {
  write("in", "BZh91AY");
  EXPECT_EQ(recordsOf("in").error, "in, record 1: damaged bzip2 data: invalid header");
}

TEST_F(Archive, ZstdFileThatBeginsWithAFrameToBeSkipped) {
  const std::string frame("\x5a\x2a\x4d\x18\3\0\0\0abc", 11);
  EXPECT_EQ(errorOf(frame + packed(text_, Packing::kZstd)), "");
  EXPECT_EQ(records_, reads_.size());
}

TEST_F(Archive, Bgzip) {
  const std::string file = bgzipped(text_, 5000);
  EXPECT_EQ(errorOf(file), "");
  EXPECT_EQ(records_, reads_.size());
  const std::string error = errorOf(file.substr(0, file.size() / 2));
  EXPECT_EQ(error, whereAndWhat("gzip data: unexpected end of file"));
}

// The byte of the file "in" that is read next, where this process has opened it.
std::size_t positionInFile() {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;  // the one that lists them is gone by now
    if (std::filesystem::read_symlink(entry, error).filename() != "in") continue;
    std::ifstream facts("/proc/self/fdinfo/" + entry.path().filename().string());
    std::string word;
    std::size_t position = 0;
    facts >> word >> position;
    return position;
  }
  return 0;
}

// So are the files that come later in a run, while those in front of them are searched.
TEST_F(Archive, FilesAreUnpackedFromTheirOpeningOn) {
  std::vector<Read> reads;  // half as many as the ring of a helper holds
  std::string sam;
  for (unsigned i = 0; i < 5000; ++i) {
    reads.push_back({"r" + std::to_string(i), randomBases(100, i), std::string(100, 'F')});
    sam += reads[i].name + "\t4\t*\t0\t0\t*\t*\t0\t0\t" + reads[i].bases + "\t*\n";
  }
  const std::string text = written(reads, {});
  for (const std::string& file :
       {packed(text, Packing::kGzip), packed(text, Packing::kZstd), packed(text, Packing::kXz),
        packed(text, Packing::kBzip2), bgzipped(text, 5000), bamOf(sam)}) {
    ASSERT_GT(file.size(), 80000u) << "more than is looked at in place";
    write("in", file);
    {
      const auto inPlace = reads::openRecords("in", Helpers::kNone);
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      EXPECT_LT(positionInFile(), file.size());
    }
    const auto ahead = reads::openRecords("in", Helpers::kInflateByTwo);
    for (int i = 0; i < 1000 && positionInFile() != file.size(); ++i) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    EXPECT_EQ(positionInFile(), file.size());
  }
}

TEST_F(Archive, HelperThatIsLeftEarly) {
  for (const Packing packing : kPackings) {
    write("in", packed(text_ + text_ + text_ + text_, packing));
    const auto source = reads::openRecords("in", Helpers::kInflateAhead);
    reads::RecordView view;
    EXPECT_TRUE(source->next(view));
    EXPECT_EQ(kept(view), reads_[0]);
  }
}

}  // namespace

}  // namespace velk::test
