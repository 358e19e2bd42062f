// The records of a FASTQ or FASTA file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "reads/recordParser.h"
#include "reads/recordSource.h"
#include "reads/textBlocks.h"

namespace velk::reads {

class TextRecords final : public RecordSource {
 public:
  explicit TextRecords(std::unique_ptr<TextBlocks> blocks) : blocks_(std::move(blocks)) {}

  bool next(RecordView& record) override;
  Fixes fixes() const override { return parser_ ? parser_->fixes() : Fixes(); }
  uint64_t bytesRead() const override { return blocks_->bytesRead(); }
  uint64_t bytes() const override { return blocks_->bytes(); }

 private:
  bool findRecord();
  bool refill();
  void takeAcross(RecordView& record);
  [[noreturn]] void refuse(const std::string& fault) const;

  std::unique_ptr<TextBlocks> blocks_;
  std::string_view rest_;               // of the current block, not yet read
  std::string carry_;                   // a record that begins in a block before it
  std::optional<RecordParser> parser_;  // once the first record was found
  uint64_t records_ = 0;
};

}  // namespace velk::reads
