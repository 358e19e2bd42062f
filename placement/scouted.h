// What is known of a read before it is walked: what the scout finds, and the walk takes over.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>

#include "kmer/packedBases.h"

namespace velk {

/// Windows of a stretch for which memory is fetched ahead; of more, the first have gone from the
/// cache when they are asked for.
inline constexpr std::size_t kMostForeseen = 1000;

/// A place in the model at which one of its k-mers lays a read, or its reverse complement.
struct Hit {
  uint64_t scaffold;  // index in scaffoldInfo
  uint64_t contig;    // index in the scaffold
  int64_t offset;     // contig position of the first base of what is laid there, may be negative
};

/// A read, or its reverse complement, laid along a contig of the index.
class Run {
 public:
  static constexpr std::size_t kMostDifferences = 12;  // with more, it is none

  bool isReversed;  // whether it is the reverse complement that runs
  Hit hit;
  std::size_t contigLength;

  /// Forgets all differences.
  void clear() { count_ = 0; }

  /// Notes that what runs differs from the contig at this position of its own; in ascending order.
  /// Returns false when there are too many.
  bool addDifference(std::size_t position) {
    if (count_ == kMostDifferences) return false;
    differences_[count_++] = position;
    return true;
  }

  /// Calls onStretch(from, to) for every stretch of windows, of what runs, that are the contig's.
  /// length: bases of the read.
  template <class OnStretch>
  void forEachStretch(std::size_t length, std::size_t kmer, OnStretch onStretch) const {
    const auto stretch = [&](std::size_t from, std::size_t to) {
      if (from + kmer <= to) onStretch(from, to - kmer + 1);
    };
    auto from = static_cast<std::size_t>(std::max<int64_t>(-hit.offset, 0));
    for (std::size_t i = 0; i < count_; ++i) {
      stretch(from, differences_[i]);
      from = differences_[i] + 1;
    }
    stretch(from, std::min(length, reach()));
  }

  /// Calls onSpoiled(from, to) for the windows, of what runs, that one difference or one end of the
  /// contig keeps from being the contig's: every other window than the stretches' is in one of them
  /// or in several. length: bases of the read. REQUIRES: length >= kmer.
  template <class OnSpoiled>
  void forEachSpoiled(std::size_t length, std::size_t kmer, OnSpoiled onSpoiled) const {
    const std::size_t windows = length - kmer + 1;
    const auto spoiled = [&](std::size_t first, std::size_t end) {
      onSpoiled(first < kmer ? 0 : first - kmer + 1, std::min(end, windows));
    };
    if (hit.offset < 0) spoiled(0, static_cast<std::size_t>(-hit.offset));
    for (std::size_t i = 0; i < count_; ++i) spoiled(differences_[i], differences_[i] + 1);
    if (reach() < length) spoiled(reach(), windows);
  }

 private:
  // Bases of what runs up to the end of the contig.
  std::size_t reach() const {
    return static_cast<std::size_t>(static_cast<int64_t>(contigLength) - hit.offset);
  }

  std::array<std::size_t, kMostDifferences> differences_;
  std::size_t count_ = 0;
};

/// What is known of one read.
struct Scouted {
  // Whether it has bases alone, and a k-mer of them; false without a side index, and of reads that
  // are not scouted. Of others nothing is known but `turned`.
  bool hasBasesAlone = false;
  PackedBases packed;      // the read
  uint64_t firstSlot = 0;  // of its first k-mer, as get_hashset answers
  bool hasRun = false;     // whether `run` is known
  Run run{};
  bool hasTurned = false;  // whether `turned` is known
  std::string turned;      // the read's reverse complement
};

/// A string that a walk may be given, and the read that it is, or is the reverse complement of.
struct Strand {
  const std::string* bases = nullptr;
  const Scouted* scouted = nullptr;  // of bases alone
  bool isTurned = false;             // whether it is the reverse complement of that read
};

}  // namespace velk
