#include "kmer/tableSize.h"

#include <algorithm>
#include <cmath>

namespace velk {
namespace {

constexpr float kSmallestLoadFactor = 0.25F;       // stands for 0 and below
constexpr float kLargestLoadFactor = 0.75F;        // stands for 1 and above, and for no number
constexpr uint64_t kLargestDoubling = 0x3FFFFFFF;  // slots; from here on a table grows by this many

}  // namespace

bool is_prime(uint64_t num) {
  if (num < 4) return true;
  if (num % 2 == 0) return false;
  const auto limit = static_cast<uint64_t>(std::sqrt(static_cast<float>(num)));
  // KEPT: strictly below the limit, so 9, 15, 25 and 35 count as prime (HashSet.PrimeQuirk)
  for (uint64_t divisor = 3; divisor < limit; divisor += 2) {
    if (num % divisor == 0) return false;
  }
  return true;
}

uint64_t find_next_prime(uint64_t num) {
  uint64_t candidate = num | 1U;
  while (!is_prime(candidate)) candidate += 2;
  return candidate;
}

float clampedLoadFactor(float load_factor) {
  if (load_factor <= 0) return kSmallestLoadFactor;
  if (load_factor >= 1 || std::isnan(load_factor)) return kLargestLoadFactor;
  return load_factor;
}

uint64_t slotsFor(uint64_t init_size) {
  if (init_size > kMaxSlots) return kMaxSlots + 1;
  return std::min(init_size > 2 ? find_next_prime(init_size) : 3, kMaxSlots + 1);
}

// Of both limits: a load factor just below 1 would round up to a table without an empty slot.

uint64_t mostOfNew(uint64_t size, float load_factor) {
  return std::min(static_cast<uint64_t>(static_cast<float>(size) * load_factor), size - 1);
}

uint64_t mostOfGrown(uint64_t size, float load_factor) {
  // KEPT: rounded to nearest here, cut off in mostOfNew (HashSet.GrowthRoundsMaxToNearest)
  const double most = static_cast<double>(static_cast<float>(size) * load_factor) + 0.5;
  return std::min(static_cast<uint64_t>(most), size - 1);
}

uint64_t grownSize(uint64_t size, uint64_t needed, float load_factor) {
  const double neededSlots = static_cast<double>(needed) / static_cast<double>(load_factor);
  if (neededSlots > static_cast<double>(kMaxSlots)) return kMaxSlots + 1;
  do {
    size = find_next_prime(size < kLargestDoubling ? size * 2 : size + kLargestDoubling);
  } while (size <= kMaxSlots &&
           static_cast<float>(needed) > static_cast<float>(size) * load_factor);
  return size;
}

TableCourse courseOfTable(uint64_t init_size, float load_factor, uint64_t keys) {
  const float factor = clampedLoadFactor(load_factor);
  TableCourse course;
  uint64_t size = slotsFor(init_size);
  if (size > kMaxSlots) {
    course.isTooLarge = true;
    return course;
  }
  course.sizes.push_back(size);
  course.most = mostOfNew(size, factor);
  while (course.most < keys) {
    size = grownSize(size, course.most + 1, factor);
    course.isTooLarge = size > kMaxSlots;
    if (course.isTooLarge) break;
    course.sizes.push_back(size);
    course.most = mostOfGrown(size, factor);
  }
  return course;
}

}  // namespace velk
