// The records of a FASTQ or FASTA file, and its text, unpacked, block by block.
//
// One thread at a time; a helper thread may unpack ahead. bytesRead() may be asked by any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "reads/byteSource.h"
#include "reads/recordParser.h"
#include "reads/recordSource.h"
#include "reads/storedFile.h"
#include "streaming/decodedInput.h"
#include "streaming/decoder.h"

namespace velk::reads {

/// The text: FASTQ, FASTA, or what else is text.
class TextBlocks final : public ByteSource {
 public:
  /// Reads `file`, which was not read before, and is packed as its first bytes say.
  TextBlocks(std::unique_ptr<StoredFile> file, Helpers helpers);

  const std::string& name() const { return file_->name(); }

  std::string_view next() override;

  /// The same, but where the file cannot be read on there are no bytes, and fault() says why.
  std::string_view read();

  /// What is wrong with the file, empty as long as nothing was met.
  const std::string& fault() const { return fault_; }

  /// The same, once some of what follows was read, too: text out of a packed file that makes no
  /// sense is mostly damage, which shows later. Ends the reading.
  const std::string& faultAhead();

  uint64_t bytesRead() const override { return file_->bytesRead(); }
  uint64_t bytes() const { return file_->bytes(); }

 private:
  using Stored = std::shared_ptr<StoredFile>;
  using Decoding = std::shared_ptr<Decoder>;

  void noteFault();

  Stored file_;  // a helper that is left behind at a pipe has these two as well
  Packing packing_;
  Decoding decoder_;                     // null: the file is not packed
  std::unique_ptr<DecodedInput> input_;  // its bytes
  std::string fault_;
};

/// The records.
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
