// The records of a BAM file, as they were sequenced: unaligned, or grouped by name.
//
// Secondary and supplementary records are left out. Of two records of a pair that follow each other
// the first mate comes first. A file sorted by coordinate is refused. A helper thread of ours may
// read the records ahead; those of htslib are not used, as they wait for each other forever where
// the file is cut short.
#pragma once

#include <htslib/sam.h>

#include <atomic>
#include <cstdint>
#include <exception>
#include <memory>
#include <string>
#include <vector>

#include "reads/recordSource.h"
#include "reads/storedFile.h"
#include "streaming/aheadRing.h"

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

/// The same, by a helper thread that reads ahead where the system gives one. What it has not handed
/// out counts as not read.
class BamAhead final : public RecordSource {
 public:
  explicit BamAhead(std::shared_ptr<BamRecords> records);

  bool next(RecordView& record) override;
  Fixes fixes() const override { return {}; }
  uint64_t bytesRead() const override { return bytesRead_.load(std::memory_order_relaxed); }
  uint64_t bytes() const override { return records_->bytes(); }
  std::string_view mateAdvice() const override { return records_->mateAdvice(); }

 private:
  struct Lengths {  // of a record's texts, which follow each other
    std::size_t name;
    std::size_t bases;
    std::size_t quality;
  };
  struct Block {
    std::string texts;
    std::vector<Lengths> records;
    uint64_t bytesRead = 0;  // behind its last record
  };
  // Fills blocks; what ends the records in one is thrown at the next.
  struct Filling {
    bool operator()(Block& block);

    std::shared_ptr<BamRecords> records;
    std::exception_ptr failure{};
  };

  bool nextBlock();

  std::shared_ptr<BamRecords> records_;
  std::unique_ptr<AheadRing<Block>> ring_;  // null: they are read in place
  const Block* block_ = nullptr;            // the one that is handed out
  std::size_t given_ = 0;                   // records of it
  std::size_t position_ = 0;                // of the next one's texts
  std::atomic<uint64_t> bytesRead_ = 0;
};

}  // namespace velk::reads
