#include "reads/textBlocks.h"

#include <algorithm>

#include "reads/archiveDecoder.h"
#include "streaming/gzipDecoder.h"

namespace velk::reads {
namespace {

constexpr std::size_t kReadAhead = 64 << 20;  // bytes of text

std::unique_ptr<Decoder> decoderOf(StoredFile& file, Packing packing) {
  switch (packing) {
    case Packing::kNone:
      return nullptr;
    case Packing::kGzip:
      return std::make_unique<GzipDecoder>(file);
    case Packing::kZstd:
    case Packing::kXz:
    case Packing::kBzip2:
      return std::make_unique<ArchiveDecoder>(file, packing);
  }
  return nullptr;
}

}  // namespace

TextBlocks::TextBlocks(std::unique_ptr<StoredFile> file, Helpers helpers)
    : file_(std::move(file)),
      packing_(packingOf(file_->start())),
      decoder_(decoderOf(*file_, packing_)) {
  if (decoder_ == nullptr) return;
  input_ = std::make_unique<DecodedInput>(*decoder_);
  if (helpers == Helpers::kInflateAhead) input_->decodeAhead();
}

std::string_view TextBlocks::next() {
  const std::string_view block = read();
  if (!fault_.empty()) throw InputError(name(), 0, fault_);
  return block;
}

std::string_view TextBlocks::read() {
  const std::string_view block = input_ == nullptr ? file_->next() : input_->next();
  if (block.empty()) noteFault();
  return block;
}

const std::string& TextBlocks::faultAhead() {
  for (std::size_t left = input_ == nullptr ? 0 : kReadAhead; left > 0;) {
    const std::size_t got = read().size();
    left = got == 0 ? 0 : left - std::min(left, got);
  }
  return fault_;
}

// What is wrong with the file as it is stored comes first: what is packed is then cut, too.
void TextBlocks::noteFault() {
  if (!file_->fault().empty()) {
    fault_ = file_->fault();
  } else if (input_ != nullptr && !input_->damage().empty()) {
    fault_ = "damaged " + std::string(nameOf(packing_)) + " data: " + input_->damage();
  }
}

std::unique_ptr<ByteSource> openBytes(const std::string& file, Helpers helpers) {
  return std::make_unique<TextBlocks>(std::make_unique<StoredFile>(file), helpers);
}

}  // namespace velk::reads
