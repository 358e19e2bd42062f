#include "tests/run/bamFile.h"

#include <gtest/gtest.h>
#include <htslib/bgzf.h>
#include <htslib/sam.h>

#include "tests/run/world.h"

namespace velk::test {
namespace {

struct Closer {
  void operator()(htsFile* file) const { sam_close(file); }
  void operator()(sam_hdr_t* header) const { sam_hdr_destroy(header); }
  void operator()(bam1_t* record) const { bam_destroy1(record); }
  void operator()(hts_idx_t* index) const { hts_idx_destroy(index); }
  void operator()(hts_itr_t* iterator) const { hts_itr_destroy(iterator); }
  void operator()(BGZF* file) const { bgzf_close(file); }
};

template <class T>
using Held = std::unique_ptr<T, Closer>;

std::map<std::string, std::string> tagsOf(const bam1_t* bam) {
  std::map<std::string, std::string> tags;
  for (const char* name : {"RG", "NM", "zg", "zp", "zk", "zx"}) {
    const uint8_t* const tag = bam_aux_get(bam, name);
    if (tag == nullptr) continue;
    if (*tag == 'Z') {
      tags[name] = bam_aux2Z(tag);
    } else if (*tag == 'A') {
      tags[name] = bam_aux2A(tag);
    } else {
      tags[name] = std::to_string(bam_aux2i(tag));
    }
  }
  return tags;
}

BamRecord recordOf(bam1_t* bam) {
  BamRecord record;
  record.name = bam_get_qname(bam);
  record.flag = bam->core.flag;
  record.scaffold = bam->core.tid;
  record.position = bam->core.pos;
  record.mapq = bam->core.qual;
  record.cigar = cigarText({bam_get_cigar(bam), bam_get_cigar(bam) + bam->core.n_cigar});
  record.mateScaffold = bam->core.mtid;
  record.matePosition = bam->core.mpos;
  record.templateLength = bam->core.isize;
  for (int i = 0; i < bam->core.l_qseq; ++i) {
    record.bases += seq_nt16_str[bam_seqi(bam_get_seq(bam), i)];
    record.quality += static_cast<char>(bam_get_qual(bam)[i] + '!');
  }
  if (bam_get_qual(bam)[0] == 0xff) record.quality = "*";
  record.tags = tagsOf(bam);
  return record;
}

}  // namespace

BamFile readBam(const std::string& file) {
  const Held<htsFile> input(sam_open(file.c_str(), "rb"));
  const Held<sam_hdr_t> header(sam_hdr_read(input.get()));
  const Held<bam1_t> bam(bam_init1());
  BamFile content{sam_hdr_str(header.get()), {}};
  while (sam_read1(input.get(), header.get(), bam.get()) >= 0) {
    content.records.push_back(recordOf(bam.get()));
  }
  return content;
}

std::vector<BamRecord> readBamRegion(const std::string& file, const std::string& index,
                                     int scaffold, int64_t from, int64_t to) {
  const Held<htsFile> input(sam_open(file.c_str(), "rb"));
  const Held<sam_hdr_t> header(sam_hdr_read(input.get()));
  const Held<hts_idx_t> loaded(sam_index_load2(input.get(), file.c_str(), index.c_str()));
  const Held<bam1_t> bam(bam_init1());
  std::vector<BamRecord> records;
  EXPECT_NE(loaded, nullptr);
  if (loaded == nullptr) return records;
  const Held<hts_itr_t> iterator(sam_itr_queryi(loaded.get(), scaffold, from, to));
  while (sam_itr_next(input.get(), iterator.get(), bam.get()) >= 0) {
    records.push_back(recordOf(bam.get()));
  }
  return records;
}

std::string readBgzip(const std::string& file) {
  const Held<BGZF> input(bgzf_open(file.c_str(), "r"));
  EXPECT_EQ(bgzf_compression(input.get()), 2) << "not made by bgzip";
  EXPECT_EQ(bgzf_check_EOF(input.get()), 1);
  std::string text;
  for (int letter = bgzf_getc(input.get()); letter >= 0; letter = bgzf_getc(input.get())) {
    text += static_cast<char>(letter);
  }
  return text;
}

std::string readBgzipPart(const std::string& file, uint64_t from, uint64_t bytes) {
  const Held<BGZF> input(bgzf_open(file.c_str(), "r"));
  EXPECT_EQ(bgzf_index_load(input.get(), file.c_str(), ".gzi"), 0);
  EXPECT_EQ(bgzf_useek(input.get(), static_cast<off_t>(from), SEEK_SET), 0);
  std::string text(bytes, '\0');
  const ssize_t got = bgzf_read(input.get(), text.data(), bytes);
  EXPECT_EQ(got, static_cast<ssize_t>(bytes));
  return text;
}

}  // namespace velk::test
