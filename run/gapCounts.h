// What is counted at each gap while records are made: distinct reads by library and kind, and
// what pairs around it say of its length. Any thread may add.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "run/alignmentRecords.h"
#include "run/library.h"
#include "run/spans.h"

namespace velk::run {

enum class ReadKind { kExact, kEstimate, kContained, kAnchor };
constexpr std::size_t kReadKinds = 4;

class GapCounts {
 public:
  GapCounts(uint64_t gaps, uint64_t libraries);

  void add(const GapRead& read, uint32_t library);

  /// A pair of the library has a read in either flank.
  void addSpan(const Span& span, uint32_t library);

  /// A record of the search.
  void addRecord(uint64_t gap) { records_[gap].fetch_add(1, std::memory_order_relaxed); }

  uint32_t count(uint64_t gap, uint64_t library, ReadKind kind) const {
    return counts_[indexOf(gap, library, kind)];
  }

  /// Reads of all libraries that belong to the gap: exact ones and estimates.
  uint64_t belonging(uint64_t gap) const;

  /// Pairs with a read in either flank; and the length that is likeliest by them, rounded, none of
  /// fewer pairs than kLeastSpans. See run/spans.h.
  uint32_t spans(uint64_t gap) const;
  std::optional<int64_t> impliedLength(uint64_t gap, const std::vector<Library>& libraries) const;

  static constexpr uint32_t kLeastSpans = 5;

  uint32_t records(uint64_t gap) const { return records_[gap]; }

  /// The bytes of all counts, of which only those of `library` are not 0; and adds such bytes.
  /// Throws Failure, which names `file`, where the bytes are none of as many gaps.
  std::string encoded(uint64_t library) const;
  void addEncoded(std::string_view bytes, uint64_t library, const std::string& file);

 private:
  std::size_t indexOf(uint64_t gap, uint64_t library, ReadKind kind) const {
    return (gap * libraries_ + library) * kReadKinds + static_cast<std::size_t>(kind);
  }

  uint64_t gaps_;
  uint64_t libraries_;
  std::unique_ptr<std::atomic<uint32_t>[]> counts_;  // by gap, library, kind
  std::unique_ptr<std::atomic<uint32_t>[]> spans_;   // by gap, library
  std::unique_ptr<std::atomic<int64_t>[]> lengths_;  // likewise: sum of what they leave for the gap
  std::unique_ptr<std::atomic<uint64_t>[]> bases_;   // likewise: sum of their reads' bases
  std::unique_ptr<std::atomic<uint32_t>[]> records_;  // by gap
};

}  // namespace velk::run
