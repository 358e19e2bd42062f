// Preparation of reads: what the fast engine computes before the walk.
//
//   1. pack: the letters become packed bases, if they are bases alone.
//   2. align: the seed of the read's first window is looked up, then that of its last; where one
//      lies, the read is compared with the text along that diagonal.
//   3. sift: the seeds of all windows that do not agree with the text are looked up. A seed that is
//      not in the index rules all its windows out, on both strands. If it is, the bases around its
//      places are compared. A match may also align the read.
// Each step takes a group of reads, so that the memory which it prefetches for one read arrives
// while the others take theirs. Preparation only saves look-ups. The hits are the same without it.
#pragma once

#include <array>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "kmer/seedIndex.h"
#include "placement/alignment.h"

namespace velk {

/// The steps by which the fast engine saves look-ups. Each can be left out; what is found stays the
/// same. velk has all of them.
struct FastSteps {
  bool groups = true;     // groups have several reads, else one
  bool leads = true;      // a pair is deferred when the first window of its lead is a hit
  bool align = true;      // step 2 is taken; without it, step 3 and the walk align reads
  bool sift = true;       // the look-ups of step 3 are made
  bool reversed = true;   // windows are ruled out on the strand opposite a match
  bool diagonals = true;  // the diagonal of a refused hit is skipped
};

/// A read, and what is known of it. Windows are those of the index, numbered as the read was
/// sequenced.
struct PreparedRead {
  const std::string* bases = nullptr;

  std::size_t windows = 0;  // 0: the read is not packed, and nothing of it is known
  PackedBases packed{};
  Alignment alignment{};               // valid if isThere()
  bool isSifted = false;               // whether all has been found out
  bool isDeferred = false;             // whether its steps wait until it is walked over
  std::array<WindowSet, 2> skipped{};  // windows to skip: as sequenced, reverse complement

  bool isPacked() const { return windows != 0; }
};

class ReadPreparer {
 public:
  /// `index` outlives the preparer.
  ReadPreparer(const SeedIndex& index, int kmer, const FastSteps& steps = {})
      : index_(index), kmer_(kmer), steps_(steps) {}

  const SeedIndex& index() const { return index_; }
  int kmer() const { return kmer_; }
  const FastSteps& steps() const { return steps_; }
  std::size_t group() const { return steps_.groups ? 16 : 1; }

  /// Packs a group, and takes all steps with most of its reads: the steps of a pair are deferred
  /// once the first window of its lead is a known hit, as it mostly needs no other try. Single
  /// reads are never deferred. REQUIRES: others are the leads' mates, or none.
  void prepare(std::span<PreparedRead> leads, std::span<PreparedRead> others, bool isReversedFirst);

  /// Finishes the preparation of a deferred read. REQUIRES: it is packed.
  void complete(PreparedRead& read);

  // The steps.

  /// Packs the reads to which `bases` points, and forgets what was known of those before.
  void pack(std::span<PreparedRead> reads);

  // Each of the following leaves out reads that are deferred, or not packed.

  /// Aligns the reads that are not aligned.
  void align(std::span<PreparedRead> reads);

  /// Finds out which windows of the reads cannot be hits; aligns a read that is not aligned where a
  /// seed shows how.
  void sift(std::span<PreparedRead> reads);

 private:
  enum class Part { kFirst, kLast, kAll };
  void lookUpSeeds(std::span<PreparedRead> reads, Part part);
  bool isHitFirst(const PreparedRead& read, bool isReversed) const;

  const SeedIndex& index_;
  int kmer_;
  FastSteps steps_;
  // Scratch memory, reused by later calls.
  std::vector<std::pair<PreparedRead*, SeedRun>> seeds_;  // being looked up
  std::vector<std::pair<PreparedRead*, SeedIndex::SeedVerdict>> found_;
};

}  // namespace velk
