// The sizes of the k-mer hash set: how many slots a new one has, when it grows, and how far.
//
// The hash set follows these rules while it is filled (kmer/hashSet.h). From the number of
// different k-mers alone, TableCourse works out the sizes that it takes on the way. Whoever holds
// the k-mers in another form learns by it what the run says of its hash set. Pure functions; any
// thread may call them.
#pragma once

#include <cstdint>
#include <vector>

namespace velk {

/// Most slots that a table may have (16 TiB of them): beyond it memory is taken to have run out,
/// before the search for a prime number of slots can take long.
inline constexpr uint64_t kMaxSlots = uint64_t{1} << 40;

/// Returns whether `num` counts as prime: odd divisors are tried below the whole part of the square
/// root only, so 9, 15, 25 and 35 pass, and so does every number below 4.
bool is_prime(uint64_t num);

/// Returns the first odd number from `num` on that is_prime accepts.
uint64_t find_next_prime(uint64_t num);

/// The load factor that a set takes for `load_factor`: 0.25 for 0 and below, 0.75 for 1 and above
/// and for no number. All others stay; the functions below REQUIRE a load factor from here.
float clampedLoadFactor(float load_factor);

/// The slots of a new set that is asked for with `init_size`; kMaxSlots + 1 when there are too
/// many.
uint64_t slotsFor(uint64_t init_size);

/// The most entities that a new set of `size` slots holds before it grows.
uint64_t mostOfNew(uint64_t size, float load_factor);

/// The same of a set that has grown to `size` slots.
uint64_t mostOfGrown(uint64_t size, float load_factor);

/// The size to which a set of `size` slots grows for `needed` entities; above kMaxSlots when there
/// is none.
uint64_t grownSize(uint64_t size, uint64_t needed, float load_factor);

/// The sizes of a set from its making on, while a number of different keys is added one by one.
struct TableCourse {
  std::vector<uint64_t> sizes;  // slots of the new set, then after each growth
  bool isTooLarge = false;      // the next size would be above kMaxSlots; the run ends there
  uint64_t most = 0;            // entities that the last set holds before it grows
};

/// The course of the set that init_hashset(init_size, load_factor) makes. No sizes at all when even
/// the new set is too large.
TableCourse courseOfTable(uint64_t init_size, float load_factor, uint64_t keys);

}  // namespace velk
