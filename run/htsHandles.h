// Handles of htslib that are released by themselves.
#pragma once

#include <htslib/hts.h>
#include <htslib/sam.h>

#include <memory>

namespace velk::run {

struct HtsCloser {
  void operator()(htsFile* file) const { sam_close(file); }
  void operator()(sam_hdr_t* header) const { sam_hdr_destroy(header); }
  void operator()(bam1_t* record) const { bam_destroy1(record); }
  void operator()(hts_idx_t* index) const { hts_idx_destroy(index); }
  void operator()(hts_itr_t* iterator) const { hts_itr_destroy(iterator); }
};

template <class T>
using HtsHandle = std::unique_ptr<T, HtsCloser>;

}  // namespace velk::run
