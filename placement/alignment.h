// An ungapped alignment of a read with the text of the seed index: on which windows they agree.
//
// Windows and bases are those of the packed read as it was sequenced, also where its reverse
// complement is what lies on the contig; a window is as long as in the text. All windows that agree
// are k-mers of the contig, or their reverse complements: what the index knows of these, two marks
// say without a look-up.
#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kmer/contigText.h"
#include "kmer/packedBases.h"

namespace velk {

/// A set of the windows (k-mer offsets) of one read.
class WindowSet {
 public:
  static constexpr std::size_t kNone = ~std::size_t{0};  // -1: users add 1 to it

  /// Makes it the empty set of `windows` windows.
  void reset(std::size_t windows) {
    size_ = windows;
    words_.assign(windows / 64 + 2, 0);  // one more, which insertMask may touch
  }

  /// The number of windows of the read.
  std::size_t size() const { return size_; }

  bool contains(std::size_t window) const { return words_[window / 64] >> window % 64 & 1U; }
  void erase(std::size_t window) { words_[window / 64] &= ~(uint64_t{1} << window % 64); }

  /// Inserts window from + i for each bit i of `mask`. REQUIRES: each is less than size().
  void insertMask(std::size_t from, uint64_t mask) {
    assert(mask == 0 || from + static_cast<std::size_t>(std::bit_width(mask)) <= size_);
    words_[from / 64] |= mask << from % 64;
    words_[from / 64 + 1] |= mask >> 1 >> (63 - from % 64);
  }

  /// Inserts the windows [from, to).
  void insertRange(std::size_t from, std::size_t to) {
    for (; from < to; from += 64) {
      insertMask(from, ~uint64_t{0} >> (64 - std::min<std::size_t>(64, to - from)));
    }
  }

  /// Inserts the windows of a set of the same size that are marked. marksAt(w): the marks of the 64
  /// windows from w on, the first in the lowest bit.
  template <class MarksAt>
  void insertMarked(const WindowSet& other, MarksAt marksAt) {
    for (std::size_t n = 0; n < words_.size(); ++n) {
      if (other.words_[n] != 0) words_[n] |= other.words_[n] & marksAt(64 * n);
    }
  }

  /// Inserts all windows of a set of the same size.
  void insertAll(const WindowSet& other) {
    for (std::size_t n = 0; n < words_.size(); ++n) words_[n] |= other.words_[n];
  }

  /// The first window from `from` on that is not in the set; size() without one.
  std::size_t firstMissing(std::size_t from) const { return first(from, ~uint64_t{0}); }

  /// The first window from `from` on that is in the set; size() without one.
  std::size_t firstContained(std::size_t from) const { return first(from, 0); }

  /// The last window in front of `end` that is not in the set; kNone without one.
  std::size_t lastMissing(std::size_t end) const {
    for (; end > 0; end = (end - 1) / 64 * 64) {
      const uint64_t missing = ~words_[(end - 1) / 64] << (63 - (end - 1) % 64);
      if (missing != 0) return end - 1 - static_cast<std::size_t>(std::countl_zero(missing));
    }
    return kNone;
  }

 private:
  // The first window from `from` on that is in the set (flip 0), or missing (flip all ones).
  std::size_t first(std::size_t from, uint64_t flip) const {
    for (std::size_t at = from; at < size_; at = (at / 64 + 1) * 64) {
      const uint64_t found = (words_[at / 64] ^ flip) >> at % 64;
      if (found != 0) {
        return std::min(size_, at + static_cast<std::size_t>(std::countr_zero(found)));
      }
    }
    return size_;
  }

  std::size_t size_ = 0;
  std::vector<uint64_t> words_;
};

class Alignment {
 public:
  /// Clears the alignment, for a read of `windows` windows.
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

  /// Whether a window, or its reverse complement, agrees with the text.
  bool agreesAt(std::size_t window, bool isReversed) const {
    return diagonal_.isReversed == isReversed && matches_.contains(window);
  }

  /// Adds those of the matches whose reverse complement is not in the index.
  void addNotReversed(const ContigText& text, WindowSet& windows) const;

 private:
  bool isThere_ = false;
  Diagonal diagonal_;
  WindowSet matches_;
};

}  // namespace velk
