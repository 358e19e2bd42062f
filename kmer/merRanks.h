// The order of m-mers by which seeds are chosen (kmer/seeds.h): the ranks of many at once, and the
// least of a few, on processors that have AVX2 by registers full. Others take them one by one; both
// give the same.
#pragma once

#include <cstddef>
#include <cstdint>

namespace velk {

inline constexpr int kLongestMer = 25;           // bases; more do not fit the registers' lanes
inline constexpr std::size_t kRanksPerStep = 8;  // ranks are written, and read, by so many

/// The rank of a kind of m-mer: a multiplicative hash of 32 bits. Kinds with equal ranks tie: of up
/// to 16 bases only equal ones, of more bases others, too.
inline uint32_t rankOf(uint64_t kind) {
  return static_cast<uint32_t>(kind ^ kind >> 27) * 0x9E3779B1U ^ 0x5BD1E995U;
}

/// Writes the ranks of the kinds of `count` m-mers, rounded up to a multiple of kRanksPerStep, to
/// `ranks`. words: packed bases, the first m-mer begins at base `into` of the first word; as many
/// as DATA_LEN bases from the last m-mer on must be readable. REQUIRES: m is at most kLongestMer.
void rankMers(const uint64_t* words, std::size_t into, std::size_t count, int m, uint32_t* ranks);

struct LeastRank {
  uint32_t rank;
  unsigned offset;  // of the first rank that is least
  bool isTied;      // whether there is another
};

/// The least of `count` ranks, 1 to 32. Reads as many as kRanksPerStep asks for.
LeastRank leastRank(const uint32_t* ranks, unsigned count);

/// As these, without what only some processors have.
void rankMersPlainly(const uint64_t* words, std::size_t into, std::size_t count, int m,
                     uint32_t* ranks);
LeastRank leastRankPlainly(const uint32_t* ranks, unsigned count);

}  // namespace velk
