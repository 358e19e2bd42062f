// The records of a BAM file, as they were sequenced: unaligned, or grouped by name.
//
// Secondary and supplementary records are left out. Of two records of a pair that follow each other
// the first mate comes first. A file sorted by coordinate is refused. It is inflated in place:
// htslib's threads wait for each other forever where the file is cut short.
#pragma once

#include <htslib/sam.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "reads/recordSource.h"
#include "reads/storedFile.h"

namespace velk::reads {

class BamRecords final : public RecordSource {
 public:
  /// Takes `file` over. Throws InputError.
  explicit BamRecords(StoredFile& file);

  bool next(RecordView& record) override;
  Fixes fixes() const override { return {}; }
  uint64_t bytesRead() const override { return bytesRead_.load(std::memory_order_relaxed); }
  uint64_t bytes() const override { return bytes_; }
  std::string_view mateAdvice() const override;

 private:
  struct Free {
    void operator()(htsFile* file) const { hts_close(file); }
    void operator()(sam_hdr_t* header) const { sam_hdr_destroy(header); }
    void operator()(bam1_t* record) const { bam_destroy1(record); }
  };
  using Alignment = std::unique_ptr<bam1_t, Free>;

  void readHeader();
  bool find();
  bool readPrimary(bam1_t& alignment);
  void endFile();
  void describe(const bam1_t& alignment, RecordView& record);
  [[noreturn]] void refuse(const std::string& fault) const;

  std::string name_;
  uint64_t bytes_;
  std::atomic<uint64_t> bytesRead_ = 0;
  std::unique_ptr<htsFile, Free> file_;
  std::unique_ptr<sam_hdr_t, Free> header_;
  Alignment current_;
  Alignment held_;            // behind the current one, where it had to be looked at
  bool isHeld_ = false;       // whether there is a held one
  bool isExchanged_ = false;  // whether it stood in front of the current one
  uint64_t records_ = 0;      // read, all of the file's
  std::string bases_;
  std::string quality_;
};

}  // namespace velk::reads
