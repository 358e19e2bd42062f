// An ungapped alignment of a read with the text of the seed index: the windows that agree.
//
// Windows and bases are numbered as the read was sequenced, also if its reverse complement lies on
// the contig. A window is as long as in the text. A window that agrees is a k-mer of the contig or
// the reverse complement of one, so two marks replace its look-up.
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
  static constexpr std::size_t kNone = ~std::size_t{0};  // -1: CandidateWindows::next relies on it

  /// Makes it the empty set of `windows` windows.
  void reset(std::size_t windows) {
    size_ = windows;
    words_.assign(windows / 64 + 2, 0);  // one more than needed, which insertMask may touch
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

  /// Inserts the marked windows of another set. marksAt(w): the marks of the 64 windows from w on,
  /// the first in the lowest bit. REQUIRES: the sets have the same size.
  template <class MarksAt>
  void insertMarked(const WindowSet& other, MarksAt marksAt) {
    assert(size_ == other.size_);
    for (std::size_t n = 0; n < words_.size(); ++n) {
      if (other.words_[n] != 0) words_[n] |= other.words_[n] & marksAt(64 * n);
    }
  }

  /// Inserts all windows of another set. REQUIRES: the sets have the same size.
  void insertAll(const WindowSet& other) {
    assert(size_ == other.size_);
    for (std::size_t n = 0; n < words_.size(); ++n) words_[n] |= other.words_[n];
  }

  /// The first window from `from` on that is not in the set; size() if there is none.
  std::size_t firstMissing(std::size_t from) const { return first(from, ~uint64_t{0}); }

  /// The first window from `from` on that is in the set; size() if there is none.
  std::size_t firstContained(std::size_t from) const { return first(from, 0); }

  /// The last window before `end` that is not in the set; kNone if there is none.
  /// REQUIRES: end <= size().
  std::size_t lastMissing(std::size_t end) const {
    assert(end <= size_);
    for (; end > 0; end = (end - 1) / 64 * 64) {
      const uint64_t missing = ~words_[(end - 1) / 64] << (63 - (end - 1) % 64);
      if (missing != 0) return end - 1 - static_cast<std::size_t>(std::countl_zero(missing));
    }
    return kNone;
  }

 private:
  // flip = 0: the first window from `from` on that is in the set; ~0: that is not in it.
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
  /// Clears the alignment for a read of `windows` windows.
  void reset(std::size_t windows) {
    isThere_ = false;
    matches_.reset(windows);
  }

  /// Aligns the read with these bases along a diagonal. REQUIRES: reset() with the read's windows;
  /// the diagonal puts `window` on an indexed window.
  void align(const ContigText& text, const PackedBases& bases, const Diagonal& diagonal,
             std::size_t window);

  bool isThere() const { return isThere_; }
  const Diagonal& diagonal() const { return diagonal_; }

  /// The windows that equal an indexed window on the diagonal.
  const WindowSet& matches() const { return matches_; }

  /// Whether this window agrees with the text on this strand.
  bool agreesAt(std::size_t window, bool isReversed) const {
    return diagonal_.isReversed == isReversed && matches_.contains(window);
  }

  /// Adds the matches whose reverse complements are not indexed. REQUIRES: isThere().
  void addNotReversed(const ContigText& text, WindowSet& windows) const;

 private:
  bool isThere_ = false;
  Diagonal diagonal_;
  WindowSet matches_;
};

}  // namespace velk
