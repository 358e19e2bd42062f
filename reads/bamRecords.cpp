#include "reads/bamRecords.h"

#include <htslib/bgzf.h>
#include <htslib/hfile.h>
#include <htslib/hts_log.h>
#include <htslib/kstring.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

#include "reads/letters.h"

namespace velk::reads {
namespace {

constexpr std::string_view kDamage = "damaged BAM data";
constexpr uint8_t kNoQualities = 0xff;  // in place of the first one
constexpr uint8_t kMostQuality = '~' - '!';

bool isFirstMate(const bam1_t& alignment) {
  return (alignment.core.flag & (BAM_FREAD1 | BAM_FREAD2)) == BAM_FREAD1;
}

bool isSecondMate(const bam1_t& alignment) {
  return (alignment.core.flag & (BAM_FREAD1 | BAM_FREAD2)) == BAM_FREAD2;
}

std::string_view nameOf(const bam1_t& alignment) {
  return bam_get_qname(&alignment);
}

// Codes of bases have a bit for each of A, C, G and T, which are each other's complements from
// both ends.
constexpr auto kComplements = [] {
  std::array<uint8_t, 16> complements{};
  for (unsigned code = 0; code < 16; ++code) {
    complements[code] =
        static_cast<uint8_t>((code & 1) << 3 | (code & 2) << 1 | (code & 4) >> 1 | code >> 3);
  }
  return complements;
}();

}  // namespace

BamRecords::BamRecords(StoredFile& file)
    : name_(file.name()), bytes_(file.bytes()), current_(bam_init1()), held_(bam_init1()) {
  if (current_ == nullptr || held_ == nullptr) throw std::bad_alloc();
  hts_set_log_level(HTS_LOG_OFF);  // what it would say is said by InputErrors
  hFILE* const stored = file.release();
  file_.reset(hts_hopen(stored, name_.c_str(), "r"));
  if (file_ == nullptr) {
    hclose_abruptly(stored);
    refuse(std::string(kDamage));
  }
  readHeader();
}

void BamRecords::readHeader() {
  header_.reset(sam_hdr_read(file_.get()));
  if (header_ == nullptr) throw InputError(name_, 0, std::string(kDamage));
  kstring_t order = KS_INITIALIZE;
  const bool isSorted = sam_hdr_find_tag_hd(header_.get(), "SO", &order) == 0 &&
                        std::string_view(order.s, order.l) == "coordinate";
  ks_free(&order);
  if (!isSorted) return;
  throw InputError(name_, 0, "is sorted by coordinate; `samtools collate` puts mates together");
}

bool BamRecords::next(RecordView& record) {
  if (!find()) return false;
  try {
    describe(*current_, record);
  } catch (const RecordFault& fault) {
    refuse(fault.what());
  }
  return true;
}

std::string_view BamRecords::mateAdvice() const {
  return "; `samtools collate` puts mates together";
}

// Finds the next record to be handed out, the current one from then on.
bool BamRecords::find() {
  if (isHeld_) {
    std::swap(current_, held_);
    isHeld_ = false;
    if (std::exchange(isExchanged_, false)) return true;
  } else if (!readPrimary(*current_)) {
    return false;
  }
  if (!isSecondMate(*current_)) return true;
  isHeld_ = readPrimary(*held_);
  isExchanged_ = isHeld_ && isFirstMate(*held_) && nameOf(*held_) == nameOf(*current_);
  if (isExchanged_) std::swap(current_, held_);
  return true;
}

// Reads the next record that is neither secondary nor supplementary. Returns false at the end.
bool BamRecords::readPrimary(bam1_t& alignment) {
  do {
    const int result = sam_read1(file_.get(), header_.get(), &alignment);
    if (result == -1) {
      endFile();
      return false;
    }
    ++records_;
    if (result < -1) refuse(std::string(kDamage));
  } while ((alignment.core.flag & (BAM_FSECONDARY | BAM_FSUPPLEMENTARY)) != 0);
  constexpr int kWithinBlock = 16;  // low bits of an offset in BGZF
  bytesRead_.store(static_cast<uint64_t>(bgzf_tell(file_->fp.bgzf)) >> kWithinBlock,
                   std::memory_order_relaxed);
  return true;
}

// Makes sure that the end of the records is the end of the file, and the one that was written.
void BamRecords::endFile() {
  const BGZF& packed = *file_->fp.bgzf;
  const auto read = static_cast<uint64_t>(htell(packed.fp));
  bytesRead_.store(read, std::memory_order_relaxed);
  ++records_;
  if (const std::string fault = sizeFault(bytes_, read); !fault.empty()) refuse(fault);
  if (packed.no_eof_block != 0) refuse(std::string(kDamage) + ": its end is missing");
  --records_;
}

// Fills `record` with the read as it was sequenced: a reversed one is reversed back.
void BamRecords::describe(const bam1_t& alignment, RecordView& record) {
  const auto length = static_cast<std::size_t>(alignment.core.l_qseq);
  const uint8_t* const codes = bam_get_seq(&alignment);
  const uint8_t* const qualities = bam_get_qual(&alignment);
  const bool hasQualities = length > 0 && qualities[0] != kNoQualities;
  bases_.resize(length);
  quality_.resize(hasQualities ? length : 0);
  const bool isReversed = bam_is_rev(&alignment);
  for (std::size_t i = 0; i < length; ++i) {
    const auto code = static_cast<uint8_t>(bam_seqi(codes, i));
    bases_[isReversed ? length - 1 - i : i] = seq_nt16_str[isReversed ? kComplements[code] : code];
  }
  for (std::size_t i = 0; i < quality_.size(); ++i) {
    if (qualities[i] > kMostQuality) {
      throw RecordFault("it has a quality of " + std::to_string(qualities[i]));
    }
    quality_[isReversed ? length - 1 - i : i] = static_cast<char>('!' + qualities[i]);
  }
  if (!areUpperCase(bases_)) throw RecordFault("'=' in its sequence");
  record = {nameIn(nameOf(alignment)), bases_, quality_};
}

void BamRecords::refuse(const std::string& fault) const {
  throw InputError(name_, records_, fault);
}

// A pipe may never go on: its helper is not waited for.
BamAhead::BamAhead(std::shared_ptr<BamRecords> records) : records_(std::move(records)) {
  const bool mayBePipe = records_->bytes() == 0;
  ring_ = std::make_unique<AheadRing<Block>>(
      Filling{records_}, mayBePipe ? HelperAtEnd::kIsLeft : HelperAtEnd::kIsAwaited);
  if (!ring_->start("inflate")) ring_.reset();
}

bool BamAhead::next(RecordView& record) {
  if (ring_ == nullptr) {
    const bool isThere = records_->next(record);
    bytesRead_.store(records_->bytesRead(), std::memory_order_relaxed);
    return isThere;
  }
  if ((block_ == nullptr || given_ == block_->records.size()) && !nextBlock()) return false;
  const Lengths& lengths = block_->records[given_++];
  const auto take = [&](std::size_t length) {
    const std::string_view text = std::string_view(block_->texts).substr(position_, length);
    position_ += length;
    return text;
  };
  record.name = take(lengths.name);
  record.bases = take(lengths.bases);
  record.quality = take(lengths.quality);
  return true;
}

// Gets the next block. Returns false when there is none.
bool BamAhead::nextBlock() {
  block_ = nullptr;
  block_ = ring_->next();
  given_ = position_ = 0;
  bytesRead_.store(block_ == nullptr ? records_->bytesRead() : block_->bytesRead,
                   std::memory_order_relaxed);
  return block_ != nullptr;
}

bool BamAhead::Filling::operator()(Block& block) {
  constexpr std::size_t kBytes = 256 << 10;  // of texts, but for the last record
  if (failure) std::rethrow_exception(failure);
  if (block.texts.capacity() > 2 * kBytes) block.texts = {};
  block.texts.clear();
  block.records.clear();
  RecordView record;
  try {
    while (block.texts.size() < kBytes && records->next(record)) {
      block.records.push_back({record.name.size(), record.bases.size(), record.quality.size()});
      block.texts.append(record.name).append(record.bases).append(record.quality);
    }
  } catch (...) {
    if (block.records.empty()) throw;
    failure = std::current_exception();
  }
  block.bytesRead = records->bytesRead();
  return !block.records.empty();
}

}  // namespace velk::reads
