#include "run/bam.h"

#include <htslib/hts.h>
#include <htslib/hts_log.h>
#include <htslib/sam.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "run/failure.h"

namespace velk::run {
namespace {

constexpr std::size_t kLongestName = 254;
constexpr char kFirstQuality = '!';                          // Phred 0
constexpr uint64_t kLongestOfBai = (uint64_t{1} << 29) - 1;  // bases
constexpr int kSmallestBinOfCsi = 14;                        // as a power of 2, the same as in BAI

// In front of a record's data.
struct RecordHead {
  bam1_core_t core;
  uint32_t library;
  uint32_t unused = 0;  // in place of padding: the bytes of shares are the same each time
};

bam1_t* workspace() {
  thread_local const HtsHandle<bam1_t> record(bam_init1());
  if (record == nullptr) throw std::bad_alloc();
  return record.get();
}

void requireName(const std::string& name) {
  if (name.size() <= kLongestName) return;
  throw Failure(Status::kFailed,
                "read " + name.substr(0, 40) +
                    "...: its name has more than 254 letters, which BAM can't hold");
}

void require(int result) {
  if (result < 0) throw std::bad_alloc();
}

void addNumber(bam1_t* record, const char* tag, int64_t value) {
  const auto number = static_cast<int32_t>(value);
  uint8_t bytes[sizeof number];
  std::memcpy(bytes, &number, sizeof number);
  require(bam_aux_append(record, tag, 'i', sizeof number, bytes));
}

void addLetter(bam1_t* record, const char* tag, char value) {
  const auto byte = static_cast<uint8_t>(value);
  require(bam_aux_append(record, tag, 'A', 1, &byte));
}

void addTags(bam1_t* bam, const OutRecord& record, const std::string& readGroup) {
  require(bam_aux_append(bam, "RG", 'Z', static_cast<int>(readGroup.size()) + 1,
                         reinterpret_cast<const uint8_t*>(readGroup.c_str())));
  if (!record.cigar.empty()) addNumber(bam, "NM", record.differences);
  if (record.gap >= 0) addNumber(bam, "zg", record.gap);
  if (record.isFound) addNumber(bam, "zp", record.gapPosition);
  addLetter(bam, "zk", record.kind);
  addLetter(bam, "zx", static_cast<char>(record.certainty));
}

// From text to numbers.
std::string phred(const std::string& quality) {
  std::string numbers(quality.size(), '\0');
  std::transform(quality.begin(), quality.end(), numbers.begin(),
                 [](char letter) { return static_cast<char>(letter - kFirstQuality); });
  return numbers;
}

}  // namespace

std::string encodeBam(const OutRecord& record, const std::string& readGroup) {
  requireName(record.name);
  bam1_t* const bam = workspace();
  const std::string quality = phred(record.quality);
  require(bam_set1(bam, record.name.size(), record.name.c_str(), record.flag,
                   static_cast<int32_t>(record.scaffold), record.position,
                   static_cast<uint8_t>(record.mapq), record.cigar.size(), record.cigar.data(),
                   static_cast<int32_t>(record.mateScaffold), record.matePosition,
                   record.templateLength, record.bases.size(), record.bases.data(),
                   quality.empty() ? nullptr : quality.data(), 0));
  addTags(bam, record, readGroup);
  const RecordHead head{bam->core, record.library};
  std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
  bytes.append(reinterpret_cast<const char*>(bam->data), static_cast<std::size_t>(bam->l_data));
  return bytes;
}

BamName bamNameOf(std::string_view bytes) {
  RecordHead head;
  std::memcpy(&head, bytes.data(), sizeof head);
  // Behind the name stand the zeros that end it.
  const std::size_t length = head.core.l_qname - head.core.l_extranul - 1U;
  return {head.library, bytes.substr(sizeof head, length)};
}

void decodeBam(std::string_view bytes, std::string_view namePrefix, bam1_t* record) {
  std::memcpy(&record->core, bytes.data(), sizeof record->core);
  bytes.remove_prefix(sizeof(RecordHead));
  if (record->m_data < bytes.size()) {
    void* const grown = std::realloc(record->data, bytes.size());
    if (grown == nullptr) throw std::bad_alloc();
    record->data = static_cast<uint8_t*>(grown);
    record->m_data = static_cast<uint32_t>(bytes.size());
  }
  std::memcpy(record->data, bytes.data(), bytes.size());
  record->l_data = static_cast<int>(bytes.size());
  if (namePrefix.empty()) return;
  const std::string name = std::string(namePrefix) + bam_get_qname(record);
  requireName(name);
  require(bam_set_qname(record, name.c_str()));
}

struct BamWriter::Handles {
  Handles() : record(bam_init1()) {}
  ~Handles() {
    if (output != nullptr) sam_close(output);
    sam_hdr_destroy(header);
    bam_destroy1(record);
  }
  Handles(const Handles&) = delete;
  Handles& operator=(const Handles&) = delete;

  htsFile* output = nullptr;
  sam_hdr_t* header = nullptr;
  bam1_t* record;
};

std::string bamHeader(const Assembly& assembly, const std::vector<Library>& libraries,
                      const RunNames& names) {
  std::string text = "@HD\tVN:1.6\tSO:coordinate\n";
  for (const Scaffold& scaffold : assembly.scaffolds()) {
    text += "@SQ\tSN:" + scaffold.name + "\tLN:" + std::to_string(scaffold.length) + "\n";
  }
  for (const Library& library : libraries) {
    text += "@RG\tID:" + library.name + "\tLB:" + library.name + "\tSM:" + names.sample;
    if (!names.platform.empty()) text += "\tPL:" + names.platform;
    if (library.arePairs()) text += "\tPI:" + std::to_string(std::llround(library.insert));
    text += "\n";
  }
  return text + "@PG\tID:velk-run\tPN:velk-run\tVN:" + names.version + "\n";
}

bool needsLongIndex(const Assembly& assembly) {
  const auto& scaffolds = assembly.scaffolds();
  return std::any_of(scaffolds.begin(), scaffolds.end(),
                     [](const Scaffold& scaffold) { return scaffold.length > kLongestOfBai; });
}

BamWriter::BamWriter(const std::string& file, const std::string& indexFile,
                     const std::string& header, bool hasLongIndex, int helpers)
    : file_(file), indexFile_(indexFile), handles_(std::make_unique<Handles>()) {
  hts_set_log_level(HTS_LOG_OFF);  // failures are reported here
  handles_->output = sam_open(file_.c_str(), "wb1");
  if (handles_->output == nullptr) fail(file_);
  if (helpers > 0 && hts_set_threads(handles_->output, helpers) != 0) fail(file_);
  handles_->header = sam_hdr_parse(header.size(), header.c_str());
  if (handles_->header == nullptr) fail(file_);
  if (sam_hdr_write(handles_->output, handles_->header) != 0) fail(file_);
  const int smallest = hasLongIndex ? kSmallestBinOfCsi : 0;
  if (sam_idx_init(handles_->output, handles_->header, smallest, indexFile_.c_str()) != 0) {
    fail(indexFile_);
  }
}

BamWriter::~BamWriter() = default;

void BamWriter::fail(const std::string& file) const {
  const char* const why = errno != 0 ? std::strerror(errno) : "no reason is known";
  throw Failure(Status::kFailed, file + " can't be written: " + why);
}

void BamWriter::write(std::string_view record, std::string_view namePrefix) {
  errno = 0;  // what fails in a helper's thread leaves none here
  decodeBam(record, namePrefix, handles_->record);
  if (sam_write1(handles_->output, handles_->header, handles_->record) < 0) fail(file_);
}

void BamWriter::close() {
  errno = 0;
  if (sam_idx_save(handles_->output) != 0) fail(indexFile_);
  const int result = sam_close(handles_->output);
  handles_->output = nullptr;
  if (result != 0) fail(file_);
}

}  // namespace velk::run
