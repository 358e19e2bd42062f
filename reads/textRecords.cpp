#include "reads/textRecords.h"

#include <algorithm>

#include "reads/letters.h"

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

}  // namespace velk::reads
