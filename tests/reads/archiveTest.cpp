// Packed files that are damaged, and what may stand behind the data.
#include "tests/reads/plainRecords.h"

namespace velk::test {
namespace {

using reads::Helpers;
using reads::Packing;

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
