#include "reads/textRecords.h"

#include <algorithm>
#include <utility>

#include "reads/archiveDecoder.h"
#include "reads/letters.h"
#include "streaming/gzipDecoder.h"

namespace velk::reads {
namespace {

constexpr std::size_t kLeastCarried = 4096;  // bytes of a block put behind the ones before it

}  // namespace

bool TextRecords::next(RecordView& record) {
  if (!findRecord()) return false;
  try {
    const std::size_t used = parser_->take(rest_, false, record);
    rest_.remove_prefix(used);
    if (used == 0) takeAcross(record);
  } catch (const RecordFault& fault) {
    const std::string& damage = blocks_->faultAhead();
    refuse(damage.empty() ? fault.what() : damage);
  }
  ++records_;
  return true;
}

// Goes to the next character that is no line end. Returns false when there is none.
bool TextRecords::findRecord() {
  for (;;) {
    while (!rest_.empty() && (rest_.front() == '\n' || rest_.front() == '\r')) {
      rest_.remove_prefix(1);
    }
    if (!rest_.empty()) break;
    if (!refill()) return false;
  }
  if (parser_) return true;
  if (rest_.starts_with("@HD\t") || rest_.starts_with("@SQ\t")) {
    throw InputError(blocks_->name(), 0, "is SAM; `samtools collate` makes BAM of it");
  }
  if (rest_.front() != '@' && rest_.front() != '>') {
    if (const std::string& damage = blocks_->faultAhead(); !damage.empty()) refuse(damage);
    throw InputError(blocks_->name(), 0, "is neither FASTQ nor FASTA nor BAM");
  }
  parser_.emplace(rest_.front() == '@' ? TextFormat::kFastq : TextFormat::kFasta);
  return true;
}

// Gets the next block. Returns false when there is none.
bool TextRecords::refill() {
  rest_ = blocks_->read();
  if (rest_.empty() && !blocks_->fault().empty()) refuse(blocks_->fault());
  return !rest_.empty();
}

// Takes a record that goes on behind the current block. As much is carried over as there was, so
// that the record ends in the piece carried last, and a long one is not looked at too often.
void TextRecords::takeAcross(RecordView& record) {
  carry_ = rest_;
  rest_ = {};
  for (;;) {
    const bool isAll = rest_.empty() && !refill();
    const std::size_t before = carry_.size();
    const std::string_view piece = rest_.substr(0, std::max(kLeastCarried, before));
    carry_ += piece;
    const std::size_t used = parser_->take(carry_, isAll, record);
    if (used != 0) {
      rest_.remove_prefix(used - before);
      return;
    }
    rest_.remove_prefix(piece.size());
  }
}

void TextRecords::refuse(const std::string& fault) const {
  throw InputError(blocks_->name(), records_ + 1, fault);
}

namespace {

constexpr std::size_t kReadAhead = 64 << 20;  // bytes of text

std::shared_ptr<Decoder> gzipDecoderOf(StoredFile& file, Helpers helpers) {
  auto decoder = std::make_shared<GzipDecoder>(file);
  if (helpers == Helpers::kInflateByTwo) decoder->inflateBy(2);
  return decoder;
}

std::shared_ptr<Decoder> decoderOf(StoredFile& file, Packing packing, Helpers helpers) {
  switch (packing) {
    case Packing::kNone:
      return nullptr;
    case Packing::kGzip:
      return gzipDecoderOf(file, helpers);
    case Packing::kZstd:
    case Packing::kXz:
    case Packing::kBzip2:
      return std::make_shared<ArchiveDecoder>(file, packing);
  }
  return nullptr;
}

}  // namespace

TextBlocks::TextBlocks(std::unique_ptr<StoredFile> file, Helpers helpers)
    : file_(std::move(file)),
      packing_(packingOf(file_->start())),
      decoder_(decoderOf(*file_, packing_, helpers)) {
  if (decoder_ == nullptr) return;
  input_ = std::make_unique<DecodedInput>(*decoder_);
  if (helpers == Helpers::kNone) return;
  const bool mayBePipe = file_->bytes() == 0;
  input_->decodeAhead(mayBePipe ? std::make_shared<std::pair<Stored, Decoding>>(file_, decoder_)
                                : nullptr);
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
