// The preparing of reads: what the fast engine finds out of them before they are walked over.
//
//   1. pack: the letters become packed bases, if they are bases alone.
//   2. align: the seed of the read's first window is looked up; where it lies, the read is compared
//      with the text along that diagonal.
//   3. sift: the seeds of all windows that do not agree with the text are looked up. A seed that is
//      not in the index rules all its windows out, on both strands; for one that is, the bases
//      around its places decide. One of these may align the read, too.
// Each step takes a group of reads, so that the memory which it prefetches for one read arrives
// while the others take theirs. All of it can be found out again by look-ups: no answer depends on
// what is known.
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
  bool groups = true;     // reads are prepared in groups, and prefetch
  bool leads = true;      // mates of a read that hits at once are only packed
  bool align = true;      // windows that agree with the text are not looked up
  bool sift = true;       // windows are ruled out by their seeds
  bool reversed = true;   // windows are ruled out on the strand opposite a match
  bool diagonals = true;  // the diagonal of a refused hit is skipped
};

/// A read, and what is known of it. Windows are those of the index, numbered as the read was
/// sequenced.
struct PreparedRead {
  const std::string* bases = nullptr;

  std::size_t windows = 0;  // 0: the read is not packed, and nothing of it is known
  PackedBases packed{};
  Alignment alignment{};               // if it is there
  bool isSifted = false;               // whether all has been found out
  bool isLeft = false;                 // whether it is left as it is until it is walked over
  std::array<WindowSet, 2> skipped{};  // need not be tried: as sequenced, reverse complement

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

  /// Packs a group, and takes all steps with most of its reads: not with a lead whose first window
  /// is a known hit, nor with its mate, as such a pair mostly needs no other try.
  void prepare(std::span<PreparedRead> leads, std::span<PreparedRead> others, bool isReversedFirst);

  /// Takes the steps that a packed read has been left without.
  void complete(PreparedRead& read);

  // The steps.

  /// Packs the reads to which `bases` points, and forgets what was known of those before.
  void pack(std::span<PreparedRead> reads);

  // Each leaves out the reads that are left, or not packed.

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
  // What one call uses, kept for the next one's sake.
  std::vector<std::pair<PreparedRead*, SeedRun>> seeds_;  // being looked up
  std::vector<std::pair<PreparedRead*, SeedIndex::SeedVerdict>> found_;
};

}  // namespace velk
