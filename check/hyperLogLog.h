// An estimate of how many different values a stream holds, in 256 KiB whatever their number.
//
// P. Flajolet et al., HyperLogLog (2007), with the estimator of O. Ertl, arXiv:1702.01284 (2017),
// which holds from 0 on and needs no correction tables.
#pragma once

#include <cstdint>
#include <vector>

namespace velk::check {

class HyperLogLog {
 public:
  static constexpr int kBits = 18;  // of a hash choose the register; the error is 0.2 %

  /// The relative standard error of estimate().
  static constexpr double kError = 0.00203;

  /// Takes in a value by its hash, 64 evenly spread bits.
  void add(uint64_t hash) {
    const uint64_t rest = hash << kBits | (uint64_t{1} << (kBits - 1));
    const auto rank = static_cast<uint8_t>(__builtin_clzll(rest) + 1);
    uint8_t& kept = registers_[hash >> (64 - kBits)];
    if (rank > kept) kept = rank;
  }

  /// The number of different values taken in.
  double estimate() const;

 private:
  std::vector<uint8_t> registers_ = std::vector<uint8_t>(std::size_t{1} << kBits);
};

}  // namespace velk::check
