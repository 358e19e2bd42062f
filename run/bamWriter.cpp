#include "run/bamWriter.h"

#include <htslib/hts.h>
#include <htslib/hts_log.h>
#include <htslib/sam.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include "run/bamRecord.h"
#include "run/failure.h"

namespace velk::run {
namespace {

constexpr uint64_t kLongestOfBai = (uint64_t{1} << 29) - 1;  // bases
constexpr int kSmallestBinOfCsi = 14;                        // as a power of 2, the same as in BAI

}  // namespace

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
