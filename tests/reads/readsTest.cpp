#include "tests/reads/readsTest.h"

#include <htslib/bgzf.h>
#include <htslib/sam.h>

#include <cstdlib>

namespace velk::test {
namespace {

using reads::Packing;

// Written by the packing's own tool, so with its checksums.
std::string packedByTool(const std::string& text, const std::string& tool) {
  const TemporaryFolder folder;
  const std::string file = folder.path("out");
  EXPECT_EQ(std::system((tool + " -qc <" + folder.write("in", text) + " >" + file).c_str()), 0);
  return contentOf(file);
}

}  // namespace

void PrintTo(const Read& read, std::ostream* out) {
  *out << "{" << ::testing::PrintToString(read.name) << ", " << ::testing::PrintToString(read.bases)
       << ", " << ::testing::PrintToString(read.quality) << "}";
}

void PrintTo(const Records& records, std::ostream* out) {
  *out << ::testing::PrintToString(records.reads) << ", error \"" << records.error << "\"";
}

Read kept(const reads::RecordView& view) {
  return {std::string(view.name), std::string(view.bases), std::string(view.quality)};
}

Records recordsOf(const std::string& file, reads::Helpers helpers) {
  Records records;
  try {
    const auto source = reads::openRecords(file, helpers);
    reads::RecordView view;
    while (source->next(view)) records.reads.push_back(kept(view));
    EXPECT_FALSE(source->next(view)) << "a record behind the end";
  } catch (const reads::InputError& error) {
    records.error = error.what();
  }
  return records;
}

Records readsOf(const reads::InputFiles& files, std::size_t most) {
  Records records;
  try {
    reads::ReadInput input(files, 0, reads::Helpers::kNone);
    reads::ReadBatch batch;
    while (input.fill(batch, most)) {
      for (std::size_t i = 0; i < batch.entries(); ++i) {
        records.reads.push_back(kept(batch.read(i, 0)));
        if (batch.arePairs()) records.reads.push_back(kept(batch.read(i, 1)));
      }
    }
  } catch (const reads::InputError& error) {
    records.error = error.what();
  }
  return records;
}

std::string packed(const std::string& text, Packing packing) {
  switch (packing) {
    case Packing::kNone:
      return text;
    case Packing::kGzip:
      return gzipped(text);
    case Packing::kZstd:
      return packedByTool(text, "zstd");
    case Packing::kXz:
      return packedByTool(text, "xz");
    case Packing::kBzip2:
      return packedByTool(text, "bzip2");
  }
  return text;
}

std::string bamOf(const std::string& sam) {
  const TemporaryFolder folder;
  const std::string bam = folder.path("out.bam");
  htsFile* const in = hts_open(folder.write("in.sam", sam).c_str(), "r");
  htsFile* const out = hts_open(bam.c_str(), "wb");
  sam_hdr_t* const header = sam_hdr_read(in);
  bam1_t* const record = bam_init1();
  EXPECT_EQ(sam_hdr_write(out, header), 0);
  int result = 0;
  while ((result = sam_read1(in, header, record)) >= 0) {
    EXPECT_GE(sam_write1(out, header, record), 0);
  }
  EXPECT_EQ(result, -1) << "a fault in the SAM text";
  bam_destroy1(record);
  sam_hdr_destroy(header);
  EXPECT_EQ(hts_close(in), 0);
  EXPECT_EQ(hts_close(out), 0);
  return contentOf(bam);
}

std::string bgzipped(const std::string& text, std::size_t size) {
  const TemporaryFolder folder;
  const std::string file = folder.path("out.gz");
  BGZF* const out = bgzf_open(file.c_str(), "w");
  for (std::size_t at = 0; at < text.size(); at += size) {
    const std::string part = text.substr(at, size);
    EXPECT_EQ(bgzf_write(out, part.data(), part.size()), static_cast<ssize_t>(part.size()));
    EXPECT_EQ(bgzf_flush(out), 0);
  }
  EXPECT_EQ(bgzf_close(out), 0);
  return contentOf(file);
}

}  // namespace velk::test
