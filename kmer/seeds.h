// Seeds: every window of k bases has one, and neighbouring windows often share it.
//
// The seed of a window is its least m-mer in a fixed pseudorandom order, the first one if several
// tie: a minimizer (Schleimer, Wilkerson and Aiken, "Winnowing", 2003; Roberts et al., "Reducing
// storage requirements for biological sequence comparison", 2004). Equal windows have the same seed
// at the same offset.
// The order ranks an m-mer by its canonical m-mer: the lesser of the m-mer and its reverse
// complement. Without a tie, a window and its reverse complement have the same seed, read on
// opposite strands. With a tie their seeds may be different m-mers. These have the same canonical
// m-mer if m is at most kLongestInjective, because then different canonical m-mers have different
// ranks. Longer ones may share a rank.
// Pure functions of the bases; any thread may call them.
#pragma once

#include <algorithm>
#include <array>
#include <cassert>
#include <cstdint>

#include "kmer/packedBases.h"

namespace velk {

inline constexpr int kShortestMer = 9;        // bases, unless k-mers are as short
inline constexpr int kLongestMer = 25;        // eight in a row lie in a word
inline constexpr int kLongestInjective = 16;  // different canonical m-mers have different ranks
inline constexpr std::size_t kMostOffsets = DATA_LEN - kShortestMer + 1;  // of a seed in a window

/// The rank of a canonical m-mer: a multiplicative hash of 32 bits.
inline uint32_t rankOf(uint64_t canonical) {
  return static_cast<uint32_t>(canonical ^ canonical >> 27) * 0x9E3779B1U ^ 0x5BD1E995U;
}

/// Writes the ranks of the m-mers that begin at the bases of a word. next: the word after it.
/// REQUIRES: 1 <= m <= kLongestMer.
void rankMers(uint64_t word, uint64_t next, int m, uint32_t* ranks);

struct LeastRank {
  uint32_t rank;
  unsigned offset;  // of its first occurrence
  bool isTied;      // whether there is a second one
};

/// The least of `count` ranks, 1 to kMostOffsets. Reads kMostOffsets of them.
LeastRank leastRank(const uint32_t* ranks, unsigned count);

/// A maximal run of windows with one seed, within the range asked for.
struct SeedRun {
  uint64_t at;     // position of the seed's first base
  uint64_t hash;   // of its canonical m-mer
  uint64_t first;  // position of the first window
  uint64_t last;   // position of the last window
  bool isTied;     // whether some of the windows may hold a second m-mer of the seed's rank

  /// A bit for each window, the first lowest.
  uint64_t windowMask() const { return (uint64_t{2} << (last - first)) - 1; }
};

/// The lengths of windows and seeds, and what follows from them.
class Seeds {
 public:
  /// Windows of `k` bases. m grows with the number of windows, so that a random m-mer is rarely a
  /// seed of one of them.
  /// REQUIRES: 1 <= k <= DATA_LEN.
  Seeds(int k, uint64_t windows) : k_(k), m_(seedLength(k, windows)) {}

  int windowLength() const { return k_; }
  int length() const { return m_; }  // m: an odd number, so no m-mer is its own reverse complement
  int offsets() const { return k_ - m_ + 1; }  // places that a seed may have in a window

  /// The hash of the canonical m-mer of a packed m-mer.
  uint64_t hashOf(uint64_t mer) const { return mixed(std::min(mer, reversedKey(mer, m_))); }

  /// The seed of a k-mer by its key.
  struct KeySeed {
    uint64_t hash;  // of its canonical m-mer
    int offset;     // in the k-mer
  };
  KeySeed seedOf(uint64_t key) const {
    // A non-ACGT letter may set a bit above those of the k-mer. No seed is so large a number.
    if (k_ < DATA_LEN && key >> LEN_TO_BITLEN * k_ != 0) return {mixed(key), 0};
    std::array<uint32_t, DATA_LEN> ranks;
    const auto count = static_cast<unsigned>(offsets());
    rankMers(key << (64 - LEN_TO_BITLEN * k_), 0, m_, ranks.data());
    const auto offset = static_cast<int>(leastRank(ranks.data(), count).offset);
    const uint64_t mask = ~uint64_t{0} >> (64 - LEN_TO_BITLEN * m_);
    return {hashOf(key >> LEN_TO_BITLEN * (offsets() - 1 - offset) & mask), offset};
  }

  /// Calls onRun(const SeedRun&) for the seeds of the windows [from, to) of packed bases, in order.
  /// words: as those of packedAt. REQUIRES: from < to.
  template <class Words, class OnRun>
  void forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const;

 private:
  static constexpr uint64_t kChunk = 256;  // m-mers that are ranked together, of whole words

  // The m-mers are at least this many times as many as the windows, unless m is at its limit.
  static constexpr uint64_t kRarity = 8;

  static int seedLength(int k, uint64_t windows) {
    assert(1 <= k && k <= DATA_LEN);
    int m = kShortestMer;
    while (m < kLongestMer && uint64_t{1} << (LEN_TO_BITLEN * m) < kRarity * windows) m += 2;
    return std::min(m, k % 2 == 0 ? k - 1 : k);
  }

  int k_;
  int m_;
};

template <class Words, class OnRun>
void Seeds::forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const {
  assert(from < to);
  const auto width = static_cast<uint64_t>(offsets());
  std::array<uint32_t, kChunk + kMostOffsets> ranks;
  for (uint64_t window = from; window < to;) {
    const uint64_t start = window / DATA_LEN * DATA_LEN;  // of the m-mers that are ranked
    const uint64_t stop = std::min(to, start + kChunk - width + 1);
    for (uint64_t at = start; at < stop + width - 1; at += DATA_LEN) {
      rankMers(words.wordAt(at / DATA_LEN), words.wordAt(at / DATA_LEN + 1), m_,
               &ranks[at - start]);
    }
    LeastRank least{};  // of the window's m-mers
    for (bool isKnown = false; window < stop;) {
      if (!isKnown) least = leastRank(&ranks[window - start], static_cast<unsigned>(width));
      const uint64_t seed = window + least.offset;
      bool isTied = least.isTied;
      // The next windows share the seed as long as they hold it and add no lesser m-mer.
      uint64_t next = window + 1;
      isKnown = false;
      for (const uint64_t end = std::min(stop, seed + 1); next < end; ++next) {
        const uint32_t added = ranks[next - start + width - 1];
        if (added > least.rank) continue;
        isKnown = added < least.rank;
        if (isKnown) break;
        isTied = true;
      }
      if (next == stop && stop < to) break;  // the next chunk redoes it, as it may go on
      onRun(SeedRun{seed, hashOf(packedAt(words, seed, m_)), window, next - 1, isTied});
      if (isKnown)
        least = {ranks[next - start + width - 1], static_cast<unsigned>(width) - 1, false};
      window = next;
    }
  }
}

}  // namespace velk
