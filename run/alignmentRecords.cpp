#include "run/alignmentRecords.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "run/alignment.h"
#include "run/layReads.h"

namespace velk::run {
namespace {

// Bits of a record's flag.
constexpr int kPaired = 0x1;
constexpr int kProperPair = 0x2;
constexpr int kUnmapped = 0x4;
constexpr int kMateUnmapped = 0x8;
constexpr int kReversed = 0x10;
constexpr int kMateReversed = 0x20;
constexpr int kFirstRead = 0x40;
constexpr int kSecondRead = 0x80;
constexpr int kSecondary = 0x100;

constexpr int kSureMapq = 60;

class Description {
 public:
  Description(const FoundEntry& entry, const Library& library, const Assembly& assembly,
              double mapCut)
      : entry_(entry),
        library_(library),
        assembly_(assembly),
        laid_(layReads(entry, library, assembly, mapCut)) {}

  std::vector<OutRecord> make() const {
    std::vector<OutRecord> records;
    for (const std::vector<Laid>& reads : laid_) {
      for (const Laid& laid : reads) records.push_back(recordOf(laid, &laid == &reads.front()));
    }
    return records;
  }

 private:
  const reads::RecordView& textOf(int mate) const {
    return entry_.texts[static_cast<std::size_t>(mate)];
  }

  const Laid* primaryOf(int mate) const {
    const std::vector<Laid>& reads = laid_[static_cast<std::size_t>(mate)];
    return reads.empty() ? nullptr : &reads.front();
  }

  OutRecord recordOf(const Laid& laid, bool isPrimary) const;
  void setText(const Laid& laid, OutRecord& record) const;
  void setPlace(const Laid& laid, OutRecord& record) const;
  void setMate(const Laid& laid, const Laid& mate, bool isPrimary, OutRecord& record) const;
  int64_t templateLength(const Laid& laid, const Laid& mate) const;
  bool isProper(const Laid& laid, const Laid& mate) const;
  std::pair<int64_t, int64_t> placeOf(const Laid& laid) const;

  const FoundEntry& entry_;
  const Library& library_;
  const Assembly& assembly_;
  LaidReads laid_;
};

// A read that is not aligned stands where the other one does.
std::pair<int64_t, int64_t> Description::placeOf(const Laid& laid) const {
  if (laid.isMapped()) return {laid.scaffold, laid.alignment.aligned.start};
  const Laid* mate = primaryOf(1 - laid.mate);
  if (mate == nullptr || !mate->isMapped()) return {-1, -1};
  return {mate->scaffold, mate->alignment.aligned.start};
}

void Description::setText(const Laid& laid, OutRecord& record) const {
  const reads::RecordView& text = textOf(laid.mate);
  const bool isReversed = laid.isMapped() && laid.isReversed;
  record.name = text.name;
  record.bases = isReversed ? reverseComplementOf(text.bases) : std::string(text.bases);
  record.quality = isReversed ? reversedQuality(text.quality) : std::string(text.quality);
}

void Description::setPlace(const Laid& laid, OutRecord& record) const {
  std::tie(record.scaffold, record.position) = placeOf(laid);
  if (!laid.isMapped()) return;
  record.mapq = laid.certainty == Certainty::kEstimate ? 0 : kSureMapq;
  record.cigar = laid.alignment.cigar;
  record.differences = differences({assembly_, static_cast<uint64_t>(laid.scaffold)}, laid.start,
                                   record.bases, laid.alignment);
}

// From the first aligned base of both reads to the last; negative for the read that ends it.
int64_t Description::templateLength(const Laid& laid, const Laid& mate) const {
  const auto isSure = [](const Laid& one) {
    return one.isMapped() && one.certainty != Certainty::kEstimate;
  };
  if (!isSure(laid) || !isSure(mate) || laid.scaffold != mate.scaffold) return 0;
  const Stretch& one = laid.alignment.aligned;
  const Stretch& other = mate.alignment.aligned;
  const int64_t length = std::max(one.end, other.end) - std::min(one.start, other.start);
  const bool isFirst = std::tie(one.start, laid.mate) < std::tie(other.start, mate.mate);
  return isFirst ? length : -length;
}

// Both exact, on the strands that the library has, and as far apart as its inserts are.
bool Description::isProper(const Laid& laid, const Laid& mate) const {
  if (laid.certainty != Certainty::kExact || mate.certainty != Certainty::kExact) return false;
  if (laid.scaffold != mate.scaffold || laid.isReversed == mate.isReversed) return false;
  const Laid& reversed = laid.isReversed ? laid : mate;
  const Laid& forward = laid.isReversed ? mate : laid;
  const bool isInward = library_.orientation == Orientation::kInward;
  const Laid& left = isInward ? forward : reversed;
  const Laid& right = isInward ? reversed : forward;
  const auto rightLength = static_cast<int64_t>(textOf(right.mate).bases.size());
  const auto fragment = static_cast<double>(right.start + rightLength - left.start);
  return std::abs(fragment - library_.insert) <= kDeviations * library_.spread;
}

void Description::setMate(const Laid& laid, const Laid& mate, bool isPrimary,
                          OutRecord& record) const {
  int flag = record.flag | kPaired | (laid.mate == 0 ? kFirstRead : kSecondRead);
  if (!mate.isMapped()) flag |= kMateUnmapped;
  if (mate.isMapped() && mate.isReversed) flag |= kMateReversed;
  std::tie(record.mateScaffold, record.matePosition) = placeOf(mate);
  if (isPrimary) {
    record.templateLength = templateLength(laid, mate);
    if (isProper(laid, mate)) flag |= kProperPair;
  }
  record.flag = static_cast<uint16_t>(flag);
}

OutRecord Description::recordOf(const Laid& laid, bool isPrimary) const {
  OutRecord record{};
  record.library = entry_.library;
  record.input = entry_.input;
  record.record = entry_.record;
  record.mate = laid.mate;
  record.gap = laid.gap;
  record.gapPosition = laid.gapPosition;
  record.kind = laid.kind;
  record.isFound = laid.isFound;
  record.certainty = laid.certainty;
  const int strand = laid.isMapped() ? (laid.isReversed ? kReversed : 0) : kUnmapped;
  record.flag = static_cast<uint16_t>(strand | (isPrimary ? 0 : kSecondary));
  setText(laid, record);
  setPlace(laid, record);
  record.mateScaffold = -1;
  record.matePosition = -1;
  if (const Laid* mate = entry_.reads == 2 ? primaryOf(1 - laid.mate) : nullptr) {
    setMate(laid, *mate, isPrimary, record);
  }
  return record;
}

}  // namespace

std::vector<OutRecord> alignmentRecords(const FoundEntry& entry, const Library& library,
                                        const Assembly& assembly, double mapCut) {
  return Description(entry, library, assembly, mapCut).make();
}

std::vector<GapRead> readsOfGaps(const std::vector<OutRecord>& records) {
  std::vector<GapRead> reads;
  for (const OutRecord& record : records) {
    if (record.isFound) reads.push_back({record.gap, record.mate, true, record.certainty});
  }
  const auto isAt = [&](int64_t gap, int mate) {
    return std::any_of(reads.begin(), reads.end(),
                       [&](const GapRead& read) { return read.gap == gap && read.mate == mate; });
  };
  const std::size_t found = reads.size();
  for (const OutRecord& record : records) {
    for (std::size_t i = 0; i < found; ++i) {
      const int64_t gap = reads[i].gap;
      if (!isAt(gap, record.mate)) reads.push_back({gap, record.mate, false, Certainty::kExact});
    }
  }
  std::sort(reads.begin(), reads.end(), [](const GapRead& one, const GapRead& other) {
    return std::tie(one.gap, one.mate) < std::tie(other.gap, other.mate);
  });
  return reads;
}

}  // namespace velk::run
