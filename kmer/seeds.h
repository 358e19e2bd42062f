// Seeds: every window of k bases has one, and windows that follow each other mostly share it.
//
// The seed of a window is its least m-mer by a fixed pseudorandom order, the first one where equal
// m-mers tie in it: a minimizer (Schleimer, Wilkerson and Aiken, "Winnowing", 2003; Roberts et al.,
// "Reducing storage requirements for biological sequence comparison", 2004). Equal windows have the
// same seed at the same offset. An m-mer and its reverse complement are of one kind and stand for
// each other in the order, so a window and its reverse complement have seeds of one kind; in
// windows without a tie both are the same bases. Up to 16 bases only equal kinds tie. Longer ones
// are ranked by a hash, so others may: then a window and its reverse complement may differ.
// Pure functions of the bases; any thread may call them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "kmer/merRanks.h"
#include "kmer/packedBases.h"

namespace velk {

/// A longest stretch of windows that share a seed.
struct SeedRun {
  uint64_t at;     // position of the seed's first base
  uint64_t kind;   // the seed or its reverse complement, the lesser number
  uint64_t first;  // position of the first window
  uint64_t last;   // position of the last window
  bool isTied;     // whether some of the windows may hold a second m-mer of the seed's rank
};

/// The lengths of windows and seeds, and what follows from them.
class Seeds {
 public:
  /// Windows of `k` bases. The seeds are so long that a random one is rare among `windows` windows.
  /// REQUIRES: 1 <= k <= DATA_LEN.
  Seeds(int k, uint64_t windows) : k_(k), m_(seedLength(k, windows)) {}

  int windowLength() const { return k_; }
  int length() const { return m_; }  // of a seed, bases; odd, so no seed is its own complement
  int offsets() const { return k_ - m_ + 1; }  // places that a seed may have in a window

  /// The kind of a packed m-mer.
  uint64_t kindOf(uint64_t mer) const { return std::min(mer, reversedKey(mer, m_)); }

  /// The offset of the seed in a packed window.
  int offsetIn(uint64_t key) const {
    const std::array<uint64_t, 3> words = {key << (64 - LEN_TO_BITLEN * k_), 0, 0};
    std::array<uint32_t, DATA_LEN> ranks;
    const auto count = static_cast<unsigned>(offsets());
    rankMers(words.data(), 0, count, m_, ranks.data());
    return static_cast<int>(leastRank(ranks.data(), count).offset);
  }

  /// The m-mer at `offset` of a packed window.
  uint64_t merAt(uint64_t key, int offset) const {
    return key >> (LEN_TO_BITLEN * (offsets() - 1 - offset)) & mask();
  }

  /// Calls onRun(const SeedRun&) for the seeds of the windows [from, to) of packed bases, in order.
  /// words.wordAt(n): the bases from 32 n on, the first in the highest bits; one word behind the
  /// last base must be readable. REQUIRES: from < to.
  template <class Words, class OnRun>
  void forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const;

 private:
  static constexpr std::size_t kChunk = 128;  // windows whose m-mers are ranked together

  // Windows a random m-mer must be matched against before one is expected to be found.
  static constexpr uint64_t kRarity = 8;
  static constexpr int kShortest = 9;

  static int seedLength(int k, uint64_t windows) {
    int m = kShortest;
    while (m < kLongestMer && uint64_t{1} << (LEN_TO_BITLEN * m) < kRarity * windows) m += 2;
    return std::min(m, k % 2 == 0 ? k - 1 : k);
  }

  uint64_t mask() const { return ~uint64_t{0} >> (64 - LEN_TO_BITLEN * m_); }

  int k_;
  int m_;
};

/// The `count` bases from position p on of packed words. REQUIRES: 1 <= count <= DATA_LEN.
template <class Words>
uint64_t packedAt(const Words& words, uint64_t p, int count) {
  const unsigned into = LEN_TO_BITLEN * static_cast<unsigned>(p % DATA_LEN);
  const uint64_t n = p / DATA_LEN;
  const uint64_t bits = words.wordAt(n) << into | words.wordAt(n + 1) >> 1 >> (63 - into);
  return bits >> (64 - LEN_TO_BITLEN * count);
}

template <class Words, class OnRun>
void Seeds::forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const {
  const auto width = static_cast<uint64_t>(offsets());
  std::array<uint64_t, kChunk / DATA_LEN + 6> chunk;              // of the words
  std::array<uint32_t, kChunk + DATA_LEN + kRanksPerStep> ranks;  // of the m-mers from `start` on
  uint64_t start = from;
  SeedRun run{};
  uint32_t least = 0;                         // the rank of run.at
  const auto choose = [&](uint64_t window) {  // the seed of a window, of all its m-mers
    const LeastRank chosen =
        leastRank(ranks.data() + (window - start), static_cast<unsigned>(width));
    run = {window + chosen.offset, 0, window, window, chosen.isTied};
    least = chosen.rank;
  };
  const auto end = [&](uint64_t window) {  // `window` is the first with another seed
    run.kind = kindOf(packedAt(words, run.at, m_));
    run.last = window - 1;
    onRun(std::as_const(run));
  };
  for (uint64_t window = from; window < to;) {
    const uint64_t stop = std::min(to, start + kChunk);
    const uint64_t mers = stop - start + width - 1;
    const uint64_t last = (start + mers + static_cast<uint64_t>(m_) - 2) / DATA_LEN;
    std::size_t count = 0;
    for (uint64_t n = start / DATA_LEN; n <= last; ++n) chunk[count++] = words.wordAt(n);
    chunk[count] = chunk[count + 1] = 0;
    rankMers(chunk.data(), start % DATA_LEN, mers, m_, ranks.data());
    if (window == from) choose(window++);
    for (; window < stop; ++window) {
      const uint32_t rank = ranks[window - start + width - 1];
      if (run.at < window) {
        end(window);
        choose(window);
      } else if (rank < least) {
        end(window);
        run = {window + width - 1, 0, window, window, false};
        least = rank;
      } else if (rank == least) {
        run.isTied = true;
      }
    }
    start = stop;
  }
  end(to);
}

}  // namespace velk
