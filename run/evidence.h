// What a run keeps of each gap beside the counts of gaps.tsv, so that velk-report can say why a gap
// has the reads that it has: evidence.tsv (doc/run.md).
//
// A table of numbers, a row a gap. While reads are searched any thread may add; tables of shares of
// a run can be added up, in any order.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "placement/verdict.h"

namespace velk::run {

/// Either side of a gap: the contig in front of it, and the one behind.
enum class Side : uint8_t { kFront, kBehind };

class Evidence {
 public:
  /// A read lies in the flank of a gap where it begins within so many bases of the gap.
  static constexpr int64_t kFlankBases = 500;

  /// `libraries`: their names.
  Evidence(uint64_t gaps, std::vector<std::string> libraries);

  /// Reads the text of such a table. Throws Failure, which names it `file`.
  static Evidence parse(std::string_view text, const std::string& file);

  /// A read, or pair, that came to nothing: at this gap it was refused. REQUIRES: `why` is
  /// kSmallGap, kShortOverlap or kUnlike.
  void addRefused(uint64_t gap, uint32_t library, Refusal why);

  /// A read, or pair, that lies in a flank of the gap.
  void addFlankRead(uint64_t gap);

  /// An exact read over the contig on this side reaches `bases` into the gap.
  void addReach(uint64_t gap, Side side, uint64_t bases);

  /// The k-mers of a flank, and how many of them occur again and so place no read. Once.
  void setKmers(uint64_t gap, Side side, uint64_t kmers, uint64_t repeated);

  uint64_t gaps() const { return gaps_; }
  const std::vector<std::string>& libraries() const { return libraries_; }
  uint32_t refused(uint64_t gap, std::size_t library, Refusal why) const;
  uint32_t flankReads(uint64_t gap) const;
  uint32_t reach(uint64_t gap, Side side) const;
  uint32_t kmers(uint64_t gap, Side side) const;
  uint32_t repeatedKmers(uint64_t gap, Side side) const;

  /// Adds what another share of the run has seen. REQUIRES: the same gaps and libraries.
  Evidence& operator+=(const Evidence& other);

  /// A line of names, then a line a gap.
  std::string text() const;

 private:
  uint64_t columns() const;
  uint32_t& at(uint64_t gap, uint64_t column) { return numbers_[gap * columns() + column]; }
  uint32_t at(uint64_t gap, uint64_t column) const { return numbers_[gap * columns() + column]; }

  uint64_t gaps_;
  std::vector<std::string> libraries_;
  std::vector<uint32_t> numbers_;  // by gap and column
};

}  // namespace velk::run
