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

#include "kmer/packedBases.h"

namespace velk {

inline constexpr int kShortestMer = 9;        // bases, unless k-mers are as short
inline constexpr int kLongestMer = 25;        // a word holds eight of them
inline constexpr int kLongestInjective = 16;  // of m-mers whose ranks tell all kinds apart
inline constexpr std::size_t kMostOffsets = DATA_LEN - kShortestMer + 1;  // of a seed in a window

/// The rank of a kind of m-mer: a multiplicative hash of 32 bits.
inline uint32_t rankOf(uint64_t kind) {
  return static_cast<uint32_t>(kind ^ kind >> 27) * 0x9E3779B1U ^ 0x5BD1E995U;
}

/// Writes the ranks of the m-mers that begin at the bases [from, to) of a word to ranks[from] and
/// on, and may write all of ranks[0, DATA_LEN). behind: the word of bases that follows.
void rankMers(uint64_t word, uint64_t behind, uint64_t from, uint64_t to, int m, uint32_t* ranks);

struct LeastRank {
  uint32_t rank;
  unsigned offset;  // of the first rank that is least
  bool isTied;      // whether there is another
};

/// The least of `count` ranks, 1 to kMostOffsets. Reads kMostOffsets of them.
LeastRank leastRank(const uint32_t* ranks, unsigned count);

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
    std::array<uint32_t, DATA_LEN> ranks;
    const auto count = static_cast<unsigned>(offsets());
    rankMers(key << (64 - LEN_TO_BITLEN * k_), 0, 0, count, m_, ranks.data());
    return static_cast<int>(leastRank(ranks.data(), count).offset);
  }

  /// The m-mer at `offset` of a packed window.
  uint64_t merAt(uint64_t key, int offset) const {
    const uint64_t mask = ~uint64_t{0} >> (64 - LEN_TO_BITLEN * m_);
    return key >> (LEN_TO_BITLEN * (offsets() - 1 - offset)) & mask;
  }

  /// Calls onRun(const SeedRun&) for the seeds of the windows [from, to) of packed bases, in order.
  /// words: as those of packedAt. REQUIRES: from < to.
  template <class Words, class OnRun>
  void forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const;

 private:
  static constexpr uint64_t kChunk = 128;  // windows whose m-mers are ranked together

  // Windows a random m-mer must be matched against before one is expected to be found.
  static constexpr uint64_t kRarity = 8;

  static int seedLength(int k, uint64_t windows) {
    int m = kShortestMer;
    while (m < kLongestMer && uint64_t{1} << (LEN_TO_BITLEN * m) < kRarity * windows) m += 2;
    return std::min(m, k % 2 == 0 ? k - 1 : k);
  }

  int k_;
  int m_;
};

template <class Words, class OnRun>
void Seeds::forEachRun(const Words& words, uint64_t from, uint64_t to, OnRun onRun) const {
  const auto width = static_cast<uint64_t>(offsets());
  std::array<uint32_t, kChunk + uint64_t{4} * DATA_LEN> ranks;  // of the m-mers from `start` on
  uint64_t start = 0;
  SeedRun run{};
  uint32_t least = 0;                         // the rank of run.at
  const auto choose = [&](uint64_t window) {  // the seed of a window, of all its m-mers
    const LeastRank chosen = leastRank(&ranks[window - start], static_cast<unsigned>(width));
    run = {window + chosen.offset, 0, window, window, chosen.isTied};
    least = chosen.rank;
  };
  const auto end = [&](uint64_t window) {  // `window` is the first with another seed
    run.kind = kindOf(packedAt(words, run.at, m_));
    run.last = window - 1;
    onRun(std::as_const(run));
  };
  for (uint64_t window = from; window < to;) {
    const uint64_t stop = std::min(to, window + kChunk);
    const uint64_t merEnd = stop + width - 1;
    start = window / DATA_LEN * DATA_LEN;
    for (uint64_t at = start; at < merEnd; at += DATA_LEN) {
      rankMers(words.wordAt(at / DATA_LEN), words.wordAt(at / DATA_LEN + 1),
               std::max(at, window) - at, std::min<uint64_t>(merEnd - at, DATA_LEN), m_,
               &ranks[at - start]);
    }
    if (window == from) choose(window++);
    while (window < stop) {
      const uint64_t holdsSeed = std::min(stop, run.at + 1);  // the windows before do
      uint32_t rank = 0;                                      // of the m-mer that a window adds
      for (; window < holdsSeed; ++window) {
        rank = ranks[window - start + width - 1];
        if (rank > least) continue;
        if (rank < least) break;
        run.isTied = true;
      }
      if (window == stop) break;
      end(window);
      if (window < holdsSeed) {
        run = {window + width - 1, 0, window, window, false};
        least = rank;
      } else {
        choose(window);
      }
      ++window;
    }
  }
  end(to);
}

}  // namespace velk
