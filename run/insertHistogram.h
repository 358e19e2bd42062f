// Pairs by the length of their fragment: counts in bins whose bounds never change, so that those of
// several samples can be added up. A bin is one base wide up to 127 bases, and beyond that less
// than a sixty-fourth of its lengths.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace velk::run {

class InsertHistogram {
 public:
  /// The bin of a length, and the first length of a bin.
  static std::size_t binOf(uint64_t insert);
  static uint64_t startOf(std::size_t bin);

  void add(uint64_t insert, uint64_t pairs = 1);
  InsertHistogram& operator+=(const InsertHistogram& other);

  /// Pairs of each bin, up to the last that has any.
  const std::vector<uint64_t>& bins() const { return bins_; }

 private:
  std::vector<uint64_t> bins_;
};

}  // namespace velk::run
