#include "run/bamRecord.h"

#include <htslib/sam.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

#include "run/failure.h"

namespace velk::run {
namespace {

constexpr std::size_t kLongestName = 254;
constexpr char kFirstQuality = '!';  // Phred 0

// In front of a record's data.
struct Head {
  bam1_core_t core;
  uint32_t library;
  uint32_t unused = 0;  // in place of padding: the bytes of shares are the same each time
};

struct BamDeleter {
  void operator()(bam1_t* record) const { bam_destroy1(record); }
};

bam1_t* workspace() {
  thread_local const std::unique_ptr<bam1_t, BamDeleter> record(bam_init1());
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
  const Head head{bam->core, record.library};
  std::string bytes(reinterpret_cast<const char*>(&head), sizeof head);
  bytes.append(reinterpret_cast<const char*>(bam->data), static_cast<std::size_t>(bam->l_data));
  return bytes;
}

BamName bamNameOf(std::string_view bytes) {
  Head head;
  std::memcpy(&head, bytes.data(), sizeof head);
  // Behind the name stand the zeros that end it.
  const std::size_t length = head.core.l_qname - head.core.l_extranul - 1U;
  return {head.library, bytes.substr(sizeof head, length)};
}

void decodeBam(std::string_view bytes, std::string_view namePrefix, bam1_t* record) {
  std::memcpy(&record->core, bytes.data(), sizeof record->core);
  bytes.remove_prefix(sizeof(Head));
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

}  // namespace velk::run
