#include "report/gapReads.h"

#include <htslib/hts_log.h>
#include <htslib/sam.h>

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "run/bam.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/tables.h"

namespace velk::report {
namespace {

// The same for equal names, on every machine.
uint64_t hashOf(std::string_view name) {
  uint64_t hash = 0xCBF29CE484222325U;
  for (const char c : name) hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  return hash ^ hash >> 29;
}

char letterOf(const bam1_t* record, const char* tag) {
  const uint8_t* const found = bam_aux_get(record, tag);
  return found == nullptr ? '\0' : bam_aux2A(found);
}

// A record, as far as it is needed.
struct Seen {
  GapRead read;
  int64_t gap;
  bool isFound;
  bool isMapped;
};

// Those of reads.bam.
class Records : public GapReadSource {
 public:
  Records(const std::string& folder, const RunData& data)
      : file_(folder + "/reads.bam"), index_(folder + "/gaps.idx") {
    hts_set_log_level(HTS_LOG_OFF);  // failures are reported here
    input_.reset(sam_open(file_.c_str(), "rb"));
    if (input_ == nullptr) run::failFile(file_, "opened");
    header_.reset(sam_hdr_read(input_.get()));
    const std::string shortIndex = file_ + ".bai";
    const std::string bamIndex = run::exists(shortIndex) ? shortIndex : file_ + ".csi";
    bamIndex_.reset(sam_index_load2(input_.get(), file_.c_str(), bamIndex.c_str()));
    if (header_ == nullptr || bamIndex_ == nullptr || index_.gaps() != data.gaps.size()) fail();
    record_.reset(bam_init1());
    for (uint32_t l = 0; l < data.libraries.size(); ++l) libraries_[data.libraries[l].name] = l;
  }

  // A pair's other read may have the number of another gap at which the pair was found first.
  GapReads readsOf(std::size_t gap) override {
    const std::vector<Seen> seen = around(gap);
    const auto number = static_cast<int64_t>(gap);
    std::unordered_set<uint64_t> fragments;
    for (const Seen& one : seen) {
      if (one.isFound && one.gap == number) fragments.insert(one.read.fragment);
    }
    GapReads reads;
    for (const Seen& one : seen) {
      const bool isOfGap = one.gap == number;
      if (!isOfGap && (one.isFound || !fragments.contains(one.read.fragment))) continue;
      if (one.isMapped) {
        reads.reads.push_back(one.read);
      } else {
        ++reads.withoutPlace;
      }
    }
    return reads;
  }

 private:
  // All records around a gap.
  std::vector<Seen> around(std::size_t gap) {
    const run::GapEntry entry = index_.entriesOf(gap)[0];
    const uint64_t reach = index_.reach();
    const run::HtsHandle<hts_itr_t> records(
        sam_itr_queryi(bamIndex_.get(), static_cast<int>(entry.scaffold),
                       static_cast<hts_pos_t>(entry.start - std::min(entry.start, reach)),
                       static_cast<hts_pos_t>(entry.end + reach)));
    if (records == nullptr) fail();
    std::vector<Seen> seen;
    for (;;) {
      const int result = sam_itr_next(input_.get(), records.get(), record_.get());
      if (result < -1) fail();
      if (result < 0) return seen;
      seen.push_back(seenOf(record_.get()));
    }
  }

  [[noreturn]] void fail() const {
    throw run::Failure(run::Status::kFailed, file_ + " or its index can't be read, or is damaged");
  }

  Seen seenOf(const bam1_t* record) const {
    const uint8_t* const gap = bam_aux_get(record, "zg");
    const uint8_t* const group = bam_aux_get(record, "RG");
    const auto library = libraries_.find(group == nullptr ? "" : bam_aux2Z(group));
    if (gap == nullptr || library == libraries_.end()) fail();
    const bool isFound = bam_aux_get(record, "zp") != nullptr;
    const char certainty = letterOf(record, "zx");
    ReadKind kind = ReadKind::kAnchor;
    if (isFound) {
      kind = certainty == 'X'   ? ReadKind::kExact
             : certainty == 'C' ? ReadKind::kContained
                                : ReadKind::kEstimate;
    }
    return {{hashOf(bam_get_qname(record)), record->core.pos, bam_endpos(record), library->second,
             kind},
            bam_aux2i(gap),
            isFound,
            (record->core.flag & BAM_FUNMAP) == 0};
  }

  std::string file_;
  run::GapIndex index_;
  run::HtsHandle<htsFile> input_;
  run::HtsHandle<sam_hdr_t> header_;
  run::HtsHandle<hts_idx_t> bamIndex_;
  run::HtsHandle<bam1_t> record_;
  std::unordered_map<std::string, uint32_t> libraries_;
};

}  // namespace

std::unique_ptr<GapReadSource> openRecords(const std::string& folder, const RunData& data) {
  return std::make_unique<Records>(folder, data);
}

}  // namespace velk::report
