// An ungapped alignment of a read with the text of the seed index: on which windows they agree.
//
// Windows and bases are those of the packed read as it was sequenced, also where its reverse
// complement is what lies on the contig; a window is as long as in the text. All windows that agree
// are k-mers of the contig, or their reverse complements: what the index knows of these, two marks
// tell without a look-up.
#pragma once

#include <cstdint>

#include "kmer/packedBases.h"
#include "kmer/seedIndex.h"
#include "placement/windowSet.h"

namespace velk {

/// A diagonal of a packed read and the text.
struct Diagonal {
  bool isReversed = false;  // whether the read's reverse complement lies along the text
  uint64_t origin = 0;      // text position of the read's window 0, modulo 2^64

  /// The diagonal on which `window` of the read, or its reverse complement, lies at `position`.
  static Diagonal through(uint64_t position, std::size_t window, bool isReversed) {
    return {isReversed, isReversed ? position + window : position - window};
  }

  uint64_t positionOf(std::size_t window) const {
    return isReversed ? origin - window : origin + window;
  }

  friend bool operator==(const Diagonal&, const Diagonal&) = default;
};

class Alignment {
 public:
  /// Prefetches what align() compares, and the contig's letters there: the base checks read them.
  /// length: bases of the read; window: one of it that lies on a window of the text.
  static void prefetch(const ContigText& text, const Diagonal& diagonal, std::size_t length,
                       std::size_t window);

  /// Aligns a read of `length` bases on a diagonal that runs through `window`, one of the index.
  void align(const ContigText& text, const PackedBases& bases, std::size_t length,
             const Diagonal& diagonal, std::size_t window);

  void clear() { isThere_ = false; }
  bool isThere() const { return isThere_; }
  const Diagonal& diagonal() const { return diagonal_; }

  /// The windows that agree with a window of the index.
  const WindowSet& matches() const { return matches_; }

  /// Those of the matches whose k-mer is repeated in the index.
  void addRepeated(const ContigText& text, WindowSet& windows) const;

  /// Those of the matches whose reverse complement is not in the index.
  void addNotReversed(const ContigText& text, WindowSet& windows) const;

  /// The place of a window among the matches.
  KmerPlace placeOf(const ContigText& text, std::size_t window) const {
    const TextContig& contig = text.contigs()[contig_];
    return {contig.scaffold, contig.contig, diagonal_.positionOf(window) - contig.firstWindow};
  }

 private:
  template <class MarksAt>
  void addMarked(WindowSet& windows, MarksAt marksAt) const;

  bool isThere_ = false;
  Diagonal diagonal_;
  std::size_t contig_ = 0;  // number in the text
  WindowSet matches_;
};

}  // namespace velk
