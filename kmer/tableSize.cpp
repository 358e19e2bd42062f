// The numbers of the k-mer hash set: the slots of a new one, when it grows, and to what size.
#include <algorithm>
#include <cmath>

#include "driver/fatal.h"
#include "kmer/hashSet.h"

namespace velk {

constexpr float kSmallestLoadFactor = 0.25F;       // used for 0 and below
constexpr float kLargestLoadFactor = 0.75F;        // used for 1 and above, and for NaN
constexpr uint64_t kLargestDoubling = 0x3FFFFFFF;  // slots; from here on a table grows by this many

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

HashSet numbersOfNew(uint64_t init_size, float load_factor) {
  HashSet set{};
  set.e_size = sizeof(Entity);
  set.load_factor = clampedLoadFactor(load_factor);
  set.size = init_size > 2 ? find_next_prime(std::min(init_size, kMaxSlots)) : 3;
  // Of both limits: a load factor just below 1 would round up to a table without an empty slot.
  const float most = static_cast<float>(set.size) * set.load_factor;
  set.max = std::min(static_cast<uint64_t>(most), set.size - 1);
  return set;
}

HashSet* newNumbers(uint64_t init_size, float load_factor) {
  const AllocationSite site{__LINE__, "init_hashset", kUserError};
  const HashSet numbers = numbersOfNew(init_size, load_factor);
  if (numbers.size > kMaxSlots) outOfMemory(site);
  auto* set = allocateArray<HashSet>(1, site);
  *set = numbers;
  return set;
}

bool growNumbers(HashSet& set, uint64_t needed) {
  const double neededSlots = static_cast<double>(needed) / static_cast<double>(set.load_factor);
  if (neededSlots > static_cast<double>(kMaxSlots)) return false;
  do {
    set.size += std::min(set.size, kLargestDoubling);
    set.size = find_next_prime(set.size);
  } while (set.size <= kMaxSlots &&
           static_cast<float>(needed) > static_cast<float>(set.size) * set.load_factor);
  // KEPT: rounded to nearest here, cut off in numbersOfNew (HashSet.GrowthRoundsMaxToNearest)
  const double most = static_cast<double>(static_cast<float>(set.size) * set.load_factor) + 0.5;
  set.max = std::min(static_cast<uint64_t>(most), set.size - 1);
  return set.size <= kMaxSlots;
}

}  // namespace velk
