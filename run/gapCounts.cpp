#include "run/gapCounts.h"

#include <cmath>

namespace velk::run {
namespace {

ReadKind kindOf(const GapRead& read) {
  if (!read.isFound) return ReadKind::kAnchor;
  if (read.certainty == Certainty::kExact) return ReadKind::kExact;
  return read.certainty == Certainty::kEstimate ? ReadKind::kEstimate : ReadKind::kContained;
}

}  // namespace

GapCounts::GapCounts(uint64_t gaps, uint64_t libraries)
    : libraries_(libraries),
      counts_(std::make_unique<std::atomic<uint32_t>[]>(gaps * libraries * kReadKinds)),
      spans_(std::make_unique<std::atomic<uint32_t>[]>(gaps)),
      lengths_(std::make_unique<std::atomic<int64_t>[]>(gaps)) {}

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

}  // namespace velk::run
