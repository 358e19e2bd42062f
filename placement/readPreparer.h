// Preparation of reads: what the fast engine computes before the walk.
//
//   1. pack: the letters become packed bases, unless some are non-ACGT.
//   2. align: the seed of the read's first window is looked up, then that of its last. If one is
//      indexed, the read is compared with the text along that diagonal.
//   3. filter: the seeds of all windows that do not agree with the text are looked up. A seed that
//      is not indexed rules all its windows out, on both strands. If it is indexed, the bases
//      around its places are compared. A match may also align the read.
// Each step takes a group of reads: the memory that it prefetches for one read arrives while it
// works on the others. Preparation only saves look-ups. The hits are the same without it.
#pragma once

#include <array>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "kmer/seedIndex.h"
#include "placement/alignment.h"

namespace velk {

/// The steps by which the fast engine saves look-ups. velk takes all of them. Tests leave one out:
/// the hits stay the same.
struct FastSteps {
  bool groups = true;     // groups have several reads, else one
  bool leads = true;      // a pair is deferred when the first window of its lead is a hit
  bool align = true;      // step 2 is taken; without it, step 3 and the walk align reads
  bool filter = true;     // step 3 makes its look-ups
  bool reversed = true;   // windows are ruled out on the strand opposite a match
  bool diagonals = true;  // the diagonal of a refused hit is skipped
};

/// A read, and what is known of it. Its windows are numbered as the read was sequenced; each has
/// the length of a window of the text.
struct PreparedRead {
  const std::string* bases = nullptr;

  std::size_t windows = 0;  // 0: the read is not packed, and nothing of it is known
  PackedBases packed{};
  Alignment alignment{};               // valid if isThere()
  bool isFiltered = false;             // whether all steps are done
  bool isDeferred = false;             // whether its steps wait until the walk needs them
  std::array<WindowSet, 2> skipped{};  // windows to skip: [0] as sequenced, [1] reverse complement

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

  /// Packs a group, and takes all steps with those of its reads that are not deferred. A pair is
  /// deferred once the first window of its lead is known to be a hit, because it usually needs no
  /// other try. Single reads are never deferred. REQUIRES: others are the leads' mates, or none.
  void prepare(std::span<PreparedRead> leads, std::span<PreparedRead> others, bool isReversedFirst);

  /// Finishes the preparation of a deferred read. REQUIRES: it is packed.
  void complete(PreparedRead& read);

  // The steps.

  /// Packs the reads to which `bases` points, and discards what was known of the previous ones.
  void pack(std::span<PreparedRead> reads);

  // The following leave out reads that are deferred or not packed.

  /// Aligns the reads that are not aligned.
  void align(std::span<PreparedRead> reads);

  /// Finds the windows of the reads that cannot be hits. Aligns a read that is not aligned if one
  /// of its seeds has a matching place.
  void filter(std::span<PreparedRead> reads);

 private:
  enum class Part { kFirst, kLast, kAll };
  void lookUpSeeds(std::span<PreparedRead> reads, Part part);
  bool beginsWithHit(const PreparedRead& read, bool isReversed) const;

  const SeedIndex& index_;
  int kmer_;
  FastSteps steps_;
  // Scratch memory, reused by later calls.
  std::vector<std::pair<PreparedRead*, SeedRun>> seeds_;  // being looked up
  std::vector<std::pair<PreparedRead*, SeedIndex::SeedVerdict>> found_;
};

}  // namespace velk
