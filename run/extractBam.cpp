// The reads of chosen gaps out of the BAM file of a run.
#include "run/extract.h"

#include <htslib/hts_log.h>
#include <htslib/sam.h>

#include <algorithm>
#include <memory>
#include <set>
#include <string>
#include <tuple>

#include "run/bam.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

int64_t gapOf(const bam1_t* record) {
  const uint8_t* const tag = bam_aux_get(record, "zg");
  return tag == nullptr ? -1 : bam_aux2i(tag);
}

class BamExtract {
 public:
  BamExtract(const std::string& bam, const std::string& bamIndex) : file_(bam) {
    hts_set_log_level(HTS_LOG_OFF);  // failures are reported here
    input_.reset(sam_open(bam.c_str(), "rb"));
    if (input_ == nullptr) failFile(file_, "opened");
    header_.reset(sam_hdr_read(input_.get()));
    index_.reset(sam_index_load2(input_.get(), bam.c_str(), bamIndex.c_str()));
    if (header_ == nullptr || index_ == nullptr) fail();
  }

  // Keeps the records of a gap that lie within `reach` of it: those found there, and others of the
  // same name on whose account they are there.
  void add(uint64_t gap, const GapEntry& place, uint64_t reach) {
    const uint64_t from = place.start - std::min(place.start, reach);
    std::vector<HtsHandle<bam1_t>> around = recordsIn(place.scaffold, from, place.end + reach);
    std::set<std::string> names;
    for (const auto& record : around) {
      const bool isFound = bam_aux_get(record.get(), "zp") != nullptr;
      if (isFound && gapOf(record.get()) == static_cast<int64_t>(gap)) {
        names.insert(bam_get_qname(record));
      }
    }
    for (auto& record : around) {
      const bool isFound = bam_aux_get(record.get(), "zp") != nullptr;
      const bool isOfGap = gapOf(record.get()) == static_cast<int64_t>(gap);
      if (isOfGap || (!isFound && names.contains(bam_get_qname(record)))) {
        kept_.push_back(std::move(record));
      }
    }
  }

  void write(const std::string& output) {
    std::sort(kept_.begin(), kept_.end(),
              [](const auto& one, const auto& other) { return keyOf(*one) < keyOf(*other); });
    kept_.erase(std::unique(kept_.begin(), kept_.end(),
                            [](const auto& one, const auto& other) {
                              return keyOf(*one) == keyOf(*other);
                            }),
                kept_.end());
    if (output == "-") return writeTo(output, "standard output");
    writeWhole(output, [&](int, const std::string& made) { writeTo(made, output); });
  }

 private:
  // Messages call the file `name`.
  void writeTo(const std::string& made, const std::string& name) const {
    HtsHandle<htsFile> target(sam_open(made.c_str(), "wb"));
    if (target == nullptr) failFile(name, "opened");
    bool isGood = sam_hdr_write(target.get(), header_.get()) == 0;
    for (const auto& record : kept_) {
      isGood = isGood && sam_write1(target.get(), header_.get(), record.get()) >= 0;
    }
    if (sam_close(target.release()) != 0 || !isGood) {
      failFile(name, "written");
    }
  }

  // Records of one file that are equal in this are one.
  using Key = std::tuple<int32_t, hts_pos_t, std::string, uint16_t, int64_t>;
  static Key keyOf(const bam1_t& record) {
    return {record.core.tid, record.core.pos, bam_get_qname(&record), record.core.flag,
            gapOf(&record)};
  }

  [[noreturn]] void fail() const {
    throw Failure(Status::kFailed, file_ + " or its index can't be read, or is damaged");
  }

  std::vector<HtsHandle<bam1_t>> recordsIn(uint64_t scaffold, uint64_t from, uint64_t to) {
    const HtsHandle<hts_itr_t> iterator(sam_itr_queryi(index_.get(), static_cast<int>(scaffold),
                                                       static_cast<hts_pos_t>(from),
                                                       static_cast<hts_pos_t>(to)));
    if (iterator == nullptr) fail();
    std::vector<HtsHandle<bam1_t>> records;
    for (;;) {
      HtsHandle<bam1_t> record(bam_init1());
      const int result = sam_itr_next(input_.get(), iterator.get(), record.get());
      if (result < -1) fail();
      if (result < 0) return records;
      records.push_back(std::move(record));
    }
  }

  std::string file_;
  HtsHandle<htsFile> input_;
  HtsHandle<sam_hdr_t> header_;
  HtsHandle<hts_idx_t> index_;
  std::vector<HtsHandle<bam1_t>> kept_;
};

}  // namespace

void extractBam(const std::string& bam, const std::string& bamIndex, const GapIndex& index,
                const std::vector<uint64_t>& gaps, const std::string& output) {
  BamExtract extract(bam, bamIndex);
  for (const uint64_t gap : gaps) extract.add(gap, index.entriesOf(gap)[0], index.reach());
  extract.write(output);
}

}  // namespace velk::run
