// Small files cut at every byte: what is read is the beginning of what was there, and where records
// are missing the file is refused, unless it is a whole file, too.
#include "tests/reads/plainRecords.h"

namespace velk::test {
namespace {

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

}  // namespace
}  // namespace velk::test
