#include "run/insertHistogram.h"

#include <algorithm>
#include <bit>

namespace velk::run {
namespace {

constexpr uint64_t kBinsOfOctave = 64;
constexpr int kBits = 7;  // of a length whose bin is its own

}  // namespace

std::size_t InsertHistogram::binOf(uint64_t insert) {
  const int shift = std::max(0, static_cast<int>(std::bit_width(insert)) - kBits);
  return kBinsOfOctave * static_cast<uint64_t>(shift) + (insert >> shift);
}

uint64_t InsertHistogram::startOf(std::size_t bin) {
  if (bin < 2 * kBinsOfOctave) return bin;
  const uint64_t shift = bin / kBinsOfOctave - 1;
  return (bin - kBinsOfOctave * shift) << shift;
}

void InsertHistogram::add(uint64_t insert, uint64_t pairs) {
  const std::size_t bin = binOf(insert);
  if (bin >= bins_.size()) bins_.resize(bin + 1);
  bins_[bin] += pairs;
}

InsertHistogram& InsertHistogram::operator+=(const InsertHistogram& other) {
  if (bins_.size() < other.bins_.size()) bins_.resize(other.bins_.size());
  for (std::size_t bin = 0; bin < other.bins_.size(); ++bin) bins_[bin] += other.bins_[bin];
  return *this;
}

}  // namespace velk::run
