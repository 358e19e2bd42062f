// A read laid along a contig without gaps: where the two agree and where they differ.
#pragma once

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace velk {

static_assert(std::endian::native == std::endian::little, "the lowest byte that differs is first");

/// Returns the first i in [from, to) with one[i] != other[i]; `to` when there is none.
inline std::size_t firstDifference(const char* one, const char* other, std::size_t from,
                                   std::size_t to) {
  std::size_t i = from;
  for (; i + 8 <= to; i += 8) {
    uint64_t a = 0;
    uint64_t b = 0;
    std::memcpy(&a, one + i, 8);
    std::memcpy(&b, other + i, 8);
    if (a != b) return i + static_cast<std::size_t>(std::countr_zero(a ^ b)) / 8;
  }
  while (i < to && one[i] == other[i]) ++i;
  return i;
}

/// The bases of a read that lie on a contig, and those of the contig under them.
struct Overlap {
  std::size_t first;  // in the read, of its bases on the contig
  std::size_t length;
  const char* read;
  const char* contig;

  /// offset: contig position of the read's first base, may be negative.
  Overlap(std::string_view wholeContig, std::string_view wholeRead, int64_t offset)
      : first(std::min(static_cast<std::size_t>(std::max<int64_t>(-offset, 0)), wholeRead.size())) {
    const auto contigFirst =
        std::min(static_cast<std::size_t>(std::max<int64_t>(offset, 0)), wholeContig.size());
    length = std::min(wholeRead.size() - first, wholeContig.size() - contigFirst);
    read = wholeRead.data() + first;
    contig = wholeContig.data() + contigFirst;
  }
};

/// Calls onStretch(from, to) for every longest stretch of windows of `read` whose bases are those
/// of `contig` when the read's first base lies at contig position `offset`.
template <class OnStretch>
void forEachStretch(std::string_view contig, std::string_view read, int64_t offset,
                    std::size_t kmer, OnStretch onStretch) {
  const Overlap overlap(contig, read, offset);
  for (std::size_t start = 0; start + kmer <= overlap.length;) {
    const std::size_t end = firstDifference(overlap.read, overlap.contig, start, overlap.length);
    if (end >= start + kmer) onStretch(overlap.first + start, overlap.first + end - kmer + 1);
    start = end + 1;
  }
}

/// Calls onDifference(i) for every base i of the read that lies on the contig and differs from it.
template <class OnDifference>
void forEachDifference(std::string_view contig, std::string_view read, int64_t offset,
                       OnDifference onDifference) {
  const Overlap overlap(contig, read, offset);
  for (std::size_t at = 0; at < overlap.length; ++at) {
    at = firstDifference(overlap.read, overlap.contig, at, overlap.length);
    if (at < overlap.length) onDifference(overlap.first + at);
  }
}

}  // namespace velk
