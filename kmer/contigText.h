// The text of the seed index: the bases of all indexed contigs, packed, with two marks a window.
//
// A contig takes a stretch of positions; positions between contigs belong to none. 128 bases and
// the marks of the 128 windows that begin at them share a cache line, so a comparison with the text
// also fetches the marks. A letter other than A, C, G and T is stored as an A; a window that holds
// one is a *non-ACGT window*.
//
// SeedIndexBuilder fills it with several threads. It is read-only afterwards, for any thread.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <string_view>

#include "contig/contig.h"
#include "kmer/contigWindows.h"
#include "kmer/machine.h"
#include "kmer/packedBases.h"

namespace velk {

/// An indexed contig in the text. For k > 32 a window is the last 32 bases of its k-mer, so the
/// first one begins k - 32 bases after the contig's first base.
struct TextContig {
  uint64_t start;        // position of its first base
  uint64_t firstWindow;  // position of the first window
  uint32_t windows;      // number of windows
  uint32_t scaffold;     // index in the model
  uint32_t contig;       // index in the scaffold
  uint32_t hasNonAcgt;   // whether it has a non-ACGT letter

  uint64_t endWindow() const { return firstWindow + windows; }
  bool hasWindow(uint64_t p) const { return firstWindow <= p && p < endWindow(); }
};

/// A diagonal of a packed read and the text: the read, or its reverse complement, laid along the
/// text without gaps.
struct Diagonal {
  bool isReversed = false;  // whether it is the reverse complement
  uint64_t origin = 0;      // text position of the read's window 0, modulo 2^64

  /// The diagonal on which `window` of the read, or its reverse complement, lies at `position`.
  static Diagonal through(uint64_t position, uint64_t window, bool isReversed) {
    return {isReversed, isReversed ? position + window : position - window};
  }
  uint64_t positionOf(uint64_t window) const {
    return isReversed ? origin - window : origin + window;
  }
  friend bool operator==(const Diagonal&, const Diagonal&) = default;
};

class ContigText {
 public:
  static constexpr uint64_t kPad = 128;  // positions before the first contig, and after the last

  /// Lays out these contigs, without letters. kmer: bases of a k-mer. A window of the text is the
  /// last DATA_LEN of them, or all if they are fewer. Throws std::bad_alloc without memory.
  /// REQUIRES: kmer == Kmer; the model stays as it is while the text is used.
  void lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer);

  /// Allocates the text that is laid out: all letters are A, and no window is marked.
  void make();

  /// The memory of a text beside its layout; it may view that of another text instead.
  auto& lines() { return lines_; }
  const auto& lines() const { return lines_; }

  /// The lines of a text whose positions end at `end`.
  static uint64_t linesFor(uint64_t end) { return (end + kPad) / kBasesOfLine + 1; }

  /// Calls onPosition(p) for the positions at which no window begins. They are marked repeated.
  template <class OnPosition>
  void forEachNoWindow(OnPosition onPosition) const {
    uint64_t p = 0;
    for (const TextContig& contig : contigs_) {
      for (; p < contig.firstWindow; ++p) onPosition(p);
      p = contig.endWindow();
    }
    for (; p < lines_.size() * kBasesOfLine; ++p) onPosition(p);
  }

  int windowLength() const { return windowLength_; }
  uint64_t windows() const { return windows_; }
  uint64_t end() const { return end_; }  // after the last contig
  const Array<TextContig>& contigs() const { return contigs_; }

  /// Calls f(const Array<T>&) for each array of the layout.
  template <class F>
  void forEachLaid(F f) const {
    f(contigs_);
    f(numbers_);
  }

  /// The letters of a contig in the model.
  std::string_view letters(std::size_t n) const {
    return scaffoldInfo_[contigs_[n].scaffold].contigsInfo[contigs_[n].contig].bases();
  }

  /// Packs the letters at the positions [from, to), and marks non-ACGT windows repeated. Several
  /// threads may pack positions of their own. REQUIRES: multiples of DATA_LEN.
  void pack(uint64_t from, uint64_t to);

  /// The n-th word of the text: the bases from DATA_LEN n on, the first in the highest bits.
  uint64_t wordAt(uint64_t n) const { return lines_[n / 4].bases[n % 4]; }

  /// The `count` packed bases from position p on. REQUIRES: 1 <= count <= DATA_LEN.
  uint64_t basesAt(uint64_t p, int count) const { return packedAt(*this, p, count); }

  /// The text bases aligned to `count` read bases from `base` on, on the read's strand.
  uint64_t basesUnder(const Diagonal& diagonal, uint64_t base, int count) const {
    const uint64_t position = diagonal.positionOf(base);
    if (!diagonal.isReversed) return basesAt(position, count);
    return reversedKey(basesAt(position + static_cast<uint64_t>(windowLength_ - count), count),
                       count);
  }

  /// The marks of the 64 positions from p on, the first in the lowest bit.
  /// Repeated: the window's k-mer occurs again in the index, or it is a non-ACGT window, or no
  /// window begins there. Reversed: the index holds the reverse complement of the window, too, or
  /// may hold it; of a non-ACGT window: its key occurs again.
  uint64_t repeatedMarksFrom(uint64_t p) const { return marksFrom(&Line::repeated, p); }
  uint64_t reversedMarksFrom(uint64_t p) const { return marksFrom(&Line::reversed, p); }
  bool isMarkedRepeated(uint64_t p) const {
    return (load(lines_[p / kBasesOfLine].repeated[p / 64 % 2]) >> p % 64 & 1U) != 0;
  }

  /// Set a mark. Several threads may do so at the same time.
  void markRepeated(uint64_t p) { mark(&Line::repeated, p); }
  void markReversed(uint64_t p) { mark(&Line::reversed, p); }

  /// The number of the contig at p or, if there is none, of the last one before p; 0 before the
  /// first.
  std::size_t contigOf(uint64_t p) const;

  /// Whether an ACGT window begins at p. REQUIRES: non-ACGT windows are marked repeated.
  bool isWindow(uint64_t p) const { return !isMarkedRepeated(p) || isMarkedWindow(p); }

  /// The key of the window at p, also of a non-ACGT one.
  uint64_t keyAt(uint64_t p) const { return isWindow(p) ? basesAt(p, windowLength_) : rawKeyAt(p); }

  /// The same, packed from the contig's letters.
  uint64_t rawKeyAt(uint64_t p) const;

  /// Whether the key of the window at p occurs once. REQUIRES: it is the key's first occurrence.
  bool isUnique(uint64_t p) const {
    return !isMarkedRepeated(p) || (!isMarkedWindow(p) && (reversedMarksFrom(p) & 1U) == 0);
  }

  /// Whether an indexed window, non-ACGT or not, begins at p.
  bool isOfContig(uint64_t p) const { return contigs_[contigOf(p)].hasWindow(p); }

  /// The place of the window at p in the model. REQUIRES: a window begins there.
  KmerPlace placeOf(uint64_t p) const {
    const TextContig& contig = contigs_[contigOf(p)];
    assert(contig.hasWindow(p));
    return {contig.scaffold, contig.contig, p - contig.firstWindow};
  }

  /// Prefetches the positions [from, to), clipped to the end of the text.
  void prefetchRange(uint64_t from, uint64_t to) const {
    const uint64_t last = std::min(to, end_) / kBasesOfLine;
    for (uint64_t n = from / kBasesOfLine; n <= last; ++n) prefetchLine(&lines_[n]);
  }

 private:
  static constexpr uint64_t kBasesOfLine = 128;
  static constexpr uint64_t kNumbered = 1024;  // positions for each contig number that is kept

  struct alignas(64) Line {
    std::array<uint64_t, 4> bases;
    std::array<uint64_t, 2> repeated;
    std::array<uint64_t, 2> reversed;
  };
  using Marks = std::array<uint64_t, 2> Line::*;

  uint64_t marksFrom(Marks marks, uint64_t p) const {
    const auto word = [&](uint64_t n) { return load((lines_[n / 2].*marks)[n % 2]); };
    return word(p / 64) >> p % 64 | word(p / 64 + 1) << 1 << (63 - p % 64);
  }
  void mark(Marks marks, uint64_t p) {
    uint64_t& word = (lines_[p / kBasesOfLine].*marks)[p / 64 % 2];
    const uint64_t bit = uint64_t{1} << p % 64;
    if ((load(word) & bit) == 0) __atomic_fetch_or(&word, bit, __ATOMIC_RELAXED);
  }
  static uint64_t load(const uint64_t& word) { return __atomic_load_n(&word, __ATOMIC_RELAXED); }
  void markNonAcgtWindows(std::size_t n, uint64_t from, std::string_view letters);
  bool isMarkedWindow(uint64_t p) const;

  const ScaffoldInfo* scaffoldInfo_ = nullptr;
  int windowLength_ = 0;
  uint64_t windows_ = 0;
  uint64_t end_ = 0;
  Array<Line> lines_;
  Array<TextContig> contigs_;
  Array<uint32_t> numbers_;  // of the contig at every kNumbered-th position
};

}  // namespace velk
