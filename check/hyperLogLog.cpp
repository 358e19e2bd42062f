#include "check/hyperLogLog.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numbers>

namespace velk::check {
namespace {

// The two sums of Ertl's estimator, for the registers at the lowest and at the highest value.
double sigma(double x) {
  if (x == 1) return std::numeric_limits<double>::infinity();
  double weight = 1;
  double sum = x;
  for (double before = -1; before != sum;) {
    before = sum;
    x *= x;
    sum += x * weight;
    weight *= 2;
  }
  return sum;
}

double tau(double x) {
  if (x == 0 || x == 1) return 0;
  double weight = 1;
  double sum = 1 - x;
  for (double before = -1; before != sum;) {
    before = sum;
    x = std::sqrt(x);
    weight /= 2;
    sum -= (1 - x) * (1 - x) * weight;
  }
  return sum / 3;
}

}  // namespace

double HyperLogLog::estimate() const {
  constexpr int kRanks = 64 - kBits + 1;  // the highest value of a register
  std::array<double, kRanks + 1> counts{};
  for (const uint8_t rank : registers_) counts[rank] += 1;
  const auto registers = static_cast<double>(registers_.size());
  double sum = registers * tau(1 - counts[kRanks] / registers);
  for (int rank = kRanks - 1; rank >= 1; --rank) {
    sum = (sum + counts[static_cast<std::size_t>(rank)]) / 2;
  }
  sum += registers * sigma(counts[0] / registers);
  return registers * registers / (2 * std::numbers::ln2 * sum);
}

}  // namespace velk::check
