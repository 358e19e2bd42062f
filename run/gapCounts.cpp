#include "run/gapCounts.h"

#include <array>
#include <cmath>
#include <cstring>

#include "run/failure.h"

namespace velk::run {
namespace {

ReadKind kindOf(const GapRead& read) {
  if (!read.isFound) return ReadKind::kAnchor;
  if (read.certainty == Certainty::kExact) return ReadKind::kExact;
  return read.certainty == Certainty::kEstimate ? ReadKind::kEstimate : ReadKind::kContained;
}

// The counts of a gap and a library, as they are encoded. Gaps without any are left out.
struct OfGap {
  uint64_t gap;
  int64_t lengths;
  std::array<uint32_t, kReadKinds> counts;
  uint32_t spans;
  uint32_t records;
};

}  // namespace

GapCounts::GapCounts(uint64_t gaps, uint64_t libraries)
    : gaps_(gaps),
      libraries_(libraries),
      counts_(std::make_unique<std::atomic<uint32_t>[]>(gaps * libraries * kReadKinds)),
      spans_(std::make_unique<std::atomic<uint32_t>[]>(gaps)),
      lengths_(std::make_unique<std::atomic<int64_t>[]>(gaps)),
      records_(std::make_unique<std::atomic<uint32_t>[]>(gaps)) {}

void GapCounts::add(const GapRead& read, uint32_t library) {
  const std::size_t index = indexOf(static_cast<uint64_t>(read.gap), library, kindOf(read));
  counts_[index].fetch_add(1, std::memory_order_relaxed);
}

void GapCounts::addSpan(uint64_t gap, int64_t length) {
  spans_[gap].fetch_add(1, std::memory_order_relaxed);
  lengths_[gap].fetch_add(length, std::memory_order_relaxed);
}

uint64_t GapCounts::belonging(uint64_t gap) const {
  uint64_t sum = 0;
  for (uint64_t library = 0; library < libraries_; ++library) {
    sum += count(gap, library, ReadKind::kExact);
    sum += count(gap, library, ReadKind::kEstimate);
  }
  return sum;
}

std::optional<int64_t> GapCounts::impliedLength(uint64_t gap) const {
  const uint32_t pairs = spans_[gap];
  if (pairs < kLeastSpans) return std::nullopt;
  return std::llround(static_cast<double>(lengths_[gap]) / pairs);
}

std::string GapCounts::encoded(uint64_t library) const {
  std::string bytes;
  for (uint64_t gap = 0; gap < gaps_; ++gap) {
    OfGap of{gap, lengths_[gap], {}, spans_[gap], records_[gap]};
    bool isAny = of.spans != 0 || of.records != 0;
    for (std::size_t kind = 0; kind < kReadKinds; ++kind) {
      of.counts[kind] = counts_[indexOf(gap, library, static_cast<ReadKind>(kind))];
      isAny |= of.counts[kind] != 0;
    }
    if (isAny) bytes.append(reinterpret_cast<const char*>(&of), sizeof of);
  }
  return bytes;
}

void GapCounts::addEncoded(std::string_view bytes, uint64_t library, const std::string& file) {
  for (OfGap of; !bytes.empty(); bytes.remove_prefix(sizeof of)) {
    if (bytes.size() >= sizeof of) std::memcpy(&of, bytes.data(), sizeof of);
    if (bytes.size() < sizeof of || of.gap >= gaps_) {
      throw Failure(Status::kFailed, file + " has counts of other gaps than the assembly");
    }
    for (std::size_t kind = 0; kind < kReadKinds; ++kind) {
      counts_[indexOf(of.gap, library, static_cast<ReadKind>(kind))] += of.counts[kind];
    }
    spans_[of.gap] += of.spans;
    lengths_[of.gap] += of.lengths;
    records_[of.gap] += of.records;
  }
}

}  // namespace velk::run
