// The text of a file, unpacked, block by block: FASTQ, FASTA, or what else is text.
//
// One thread at a time; a helper thread may unpack ahead. bytesRead() may be asked by any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "reads/byteSource.h"
#include "reads/packing.h"
#include "reads/recordSource.h"
#include "reads/storedFile.h"
#include "streaming/decodedInput.h"
#include "streaming/decoder.h"

namespace velk::reads {

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
  void noteFault();

  std::unique_ptr<StoredFile> file_;
  Packing packing_;
  std::unique_ptr<Decoder> decoder_;     // null: the file is not packed
  std::unique_ptr<DecodedInput> input_;  // its bytes
  std::string fault_;
};

}  // namespace velk::reads
