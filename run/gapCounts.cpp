#include "run/gapCounts.h"

#include <array>
#include <cmath>
#include <cstring>

#include "run/failure.h"
#include "run/spans.h"

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
  uint64_t bases;
  std::array<uint32_t, kReadKinds> counts;
  uint32_t spans;
  uint32_t records;
};

}  // namespace

GapCounts::GapCounts(uint64_t gaps, uint64_t libraries)
    : gaps_(gaps),
      libraries_(libraries),
      counts_(std::make_unique<std::atomic<uint32_t>[]>(gaps * libraries * kReadKinds)),
      spans_(std::make_unique<std::atomic<uint32_t>[]>(gaps * libraries)),
      lengths_(std::make_unique<std::atomic<int64_t>[]>(gaps * libraries)),
      bases_(std::make_unique<std::atomic<uint64_t>[]>(gaps * libraries)),
      records_(std::make_unique<std::atomic<uint32_t>[]>(gaps)) {}

void GapCounts::add(const GapRead& read, uint32_t library) {
  const std::size_t index = indexOf(static_cast<uint64_t>(read.gap), library, kindOf(read));
  counts_[index].fetch_add(1, std::memory_order_relaxed);
}

void GapCounts::addSpan(const Span& span, uint32_t library) {
  const std::size_t index = span.gap * libraries_ + library;
  spans_[index].fetch_add(1, std::memory_order_relaxed);
  lengths_[index].fetch_add(span.length, std::memory_order_relaxed);
  bases_[index].fetch_add(static_cast<uint64_t>(span.bases), std::memory_order_relaxed);
}

uint64_t GapCounts::belonging(uint64_t gap) const {
  uint64_t sum = 0;
  for (uint64_t library = 0; library < libraries_; ++library) {
    sum += count(gap, library, ReadKind::kExact);
    sum += count(gap, library, ReadKind::kEstimate);
  }
  return sum;
}

uint32_t GapCounts::spans(uint64_t gap) const {
  uint32_t sum = 0;
  for (uint64_t library = 0; library < libraries_; ++library) {
    sum += spans_[gap * libraries_ + library];
  }
  return sum;
}

std::optional<int64_t> GapCounts::impliedLength(uint64_t gap,
                                                const std::vector<Library>& libraries) const {
  if (spans(gap) < kLeastSpans) return std::nullopt;
  std::vector<SpanningPairs> pairs;
  for (uint64_t library = 0; library < libraries_; ++library) {
    const std::size_t index = gap * libraries_ + library;
    const double number = spans_[index];
    if (number == 0) continue;
    pairs.push_back({number, static_cast<double>(lengths_[index]) / number,
                     static_cast<double>(bases_[index]) / number, libraries[library].insert,
                     libraries[library].spread});
  }
  return std::llround(likeliestLength(pairs));
}

std::string GapCounts::encoded(uint64_t library) const {
  std::string bytes;
  for (uint64_t gap = 0; gap < gaps_; ++gap) {
    const std::size_t index = gap * libraries_ + library;
    OfGap of{gap, lengths_[index], bases_[index], {}, spans_[index], records_[gap]};
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
    const std::size_t index = of.gap * libraries_ + library;
    spans_[index] += of.spans;
    lengths_[index] += of.lengths;
    bases_[index] += of.bases;
    records_[of.gap] += of.records;
  }
}

}  // namespace velk::run
