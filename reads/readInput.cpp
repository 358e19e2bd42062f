#include "reads/readInput.h"

#include <algorithm>
#include <limits>

#include "reads/mateNames.h"
#include "reads/storedFile.h"

namespace velk::reads {
namespace {

constexpr std::size_t kMostBytes = 8 << 20;  // characters of a batch, but for its last entry

std::string quoted(std::string_view name) {
  return '"' + std::string(name) + '"';
}

std::size_t sizeOf(const RecordView& read) {
  return read.name.size() + read.bases.size() + read.quality.size();
}

}  // namespace

ReadInput::ReadInput(InputFiles files, uint32_t number, Helpers helpers)
    : files_(std::move(files)), number_(number) {
  // Both are opened before either is read: one program may write to both.
  auto first = std::make_unique<StoredFile>(files_.first);
  std::unique_ptr<StoredFile> second;
  if (!files_.second.empty()) second = std::make_unique<StoredFile>(files_.second);
  first_ = openRecords(std::move(first), helpers);
  if (second != nullptr) second_ = openRecords(std::move(second), helpers);
}

const Sample& ReadInput::takeSample(std::size_t most, std::size_t mostBytes) {
  RecordView first;
  RecordView second;
  try {
    for (std::size_t size = 0; sample_.first.size() < most && size < mostBytes;) {
      if (!read(first, second)) {
        sample_.isAll = true;
        break;
      }
      sample_.first.emplace_back(first);
      if (files_.arePairs()) sample_.second.emplace_back(second);
      size += sizeOf(first) + sizeOf(second);
    }
  } catch (const InputError& error) {
    failure_ = error;
    throw;
  }
  return sample_;
}

bool ReadInput::fill(ReadBatch& batch, std::size_t most) {
  batch.clear(number_, records_, files_.arePairs());
  RecordView first;
  RecordView second;
  while (batch.entries() < most && batch.bytes() < kMostBytes && next(first, second)) {
    files_.arePairs() ? batch.add(first, second) : batch.add(first);
  }
  records_ += batch.entries();
  return batch.entries() != 0;
}

// Gives the next read or pair, of the sample first.
bool ReadInput::next(RecordView& first, RecordView& second) {
  if (sampleGiven_ < sample_.first.size()) {
    first = sample_.first[sampleGiven_].view();
    if (files_.arePairs()) second = sample_.second[sampleGiven_].view();
    ++sampleGiven_;
    return true;
  }
  if (failure_) throw InputError(*failure_);
  return !sample_.isAll && read(first, second);
}

bool ReadInput::read(RecordView& first, RecordView& second) {
  if (!first_->next(first)) {
    if (second_ != nullptr && second_->next(second)) {
      throw InputError(
          files_.second, read_ + 1,
          "it has no mate: " + files_.first + " has " + std::to_string(read_) + " records");
    }
    return false;
  }
  if (files_.arePairs()) readMate(first, second);
  ++read_;
  return true;
}

// Reads the mate of `first`, and makes one name of theirs.
void ReadInput::readMate(RecordView& first, RecordView& second) {
  if (second_ == nullptr) {
    held_.emplace(first);
    first = held_->view();
  }
  RecordSource& mates = second_ == nullptr ? *first_ : *second_;
  const uint64_t record = second_ == nullptr ? 2 * read_ + 1 : read_ + 1;
  if (!mates.next(second)) {
    throw InputError(files_.first, record,
                     second_ == nullptr ? "it has no mate: the file ends with it"
                                        : "it has no mate: " + files_.second + " has " +
                                              std::to_string(read_) + " records");
  }
  if (haveOneName(first.name, second.name)) return;
  const std::string where = second_ == nullptr ? "the next one" : "the one in " + files_.second;
  std::string text = "its name is " + quoted(first.name) + ", and " + where + " is named " +
                     quoted(second.name) + std::string(mates.mateAdvice());
  if (haveOneName(second.name, first.name)) text += "; the second mate comes first";
  throw InputError(files_.first, record, text);
}

Fixes ReadInput::fixes() const {
  Fixes fixes = first_->fixes();
  if (second_ != nullptr) fixes += second_->fixes();
  return fixes;
}

uint64_t ReadInput::bytesRead() const {
  return first_->bytesRead() + (second_ == nullptr ? 0 : second_->bytesRead());
}

uint64_t ReadInput::bytes() const {
  if (second_ == nullptr) return first_->bytes();
  const bool areKnown = first_->bytes() != 0 && second_->bytes() != 0;
  return areKnown ? first_->bytes() + second_->bytes() : 0;
}

namespace {

// Phred+64 begins at ';' (-5, on its oldest form) and goes up to 'i' or so (41); of real reads the
// best lie beyond 'Z' (26), which Phred+33 has for 57.
constexpr char kLowest = ';';
constexpr char kLeastBest = 'Z';
constexpr char kMostBest = 'j';

}  // namespace

bool looksLikePhred64(const Sample& sample) {
  char lowest = std::numeric_limits<char>::max();
  char best = 0;
  for (const std::vector<KeptRead>* reads : {&sample.first, &sample.second}) {
    for (const KeptRead& read : *reads) {
      for (const char quality : read.quality) {
        lowest = std::min(lowest, quality);
        best = std::max(best, quality);
      }
    }
  }
  return lowest >= kLowest && best >= kLeastBest && best <= kMostBest;
}

}  // namespace velk::reads
