// An ungapped alignment of a read with the text of the seed index: on which windows they agree.
//
// Windows and bases are those of the packed read as it was sequenced, also where its reverse
// complement is what lies on the contig; a window is as long as in the text. All windows that agree
// are k-mers of the contig, or their reverse complements: what the index knows of these, two marks
// say without a look-up.
#pragma once

#include <cstdint>

#include "kmer/contigText.h"
#include "kmer/packedBases.h"
#include "placement/windowSet.h"

namespace velk {

class Alignment {
 public:
  /// Makes it one of a read of `windows` windows, and forgets on which it agrees.
  void reset(std::size_t windows) {
    isThere_ = false;
    matches_.reset(windows);
  }

  /// Aligns the read with the packed bases on a diagonal that runs through `window`, one of the
  /// index. REQUIRES: reset.
  void align(const ContigText& text, const PackedBases& bases, const Diagonal& diagonal,
             std::size_t window);

  bool isThere() const { return isThere_; }
  const Diagonal& diagonal() const { return diagonal_; }

  /// The windows that agree with a window of the index.
  const WindowSet& matches() const { return matches_; }

  /// Whether the windows from, ..., to lie on windows of the contig along the diagonal.
  bool covers(std::size_t from, std::size_t to) const {
    return isThere_ && first_ <= from && to < end_;
  }

  /// Whether a window, or its reverse complement, agrees with the text.
  bool agreesAt(std::size_t window, bool isReversed) const {
    return diagonal_.isReversed == isReversed && matches_.contains(window);
  }

  /// Adds those of the matches whose k-mer occurs again in the index.
  void addRepeated(const ContigText& text, WindowSet& windows) const;

  /// Adds those of the matches whose reverse complement is not in the index.
  void addNotReversed(const ContigText& text, WindowSet& windows) const;

 private:
  bool isThere_ = false;
  Diagonal diagonal_;
  std::size_t first_ = 0;  // of the windows that lie on windows of the contig
  std::size_t end_ = 0;    // behind the last of these
  WindowSet matches_;
};

}  // namespace velk
