// The text of the seed index: the bases of all indexed contigs, packed, with two marks a window.
//
// A contig is a stretch of positions; positions between contigs belong to none. 128 bases and the
// marks of the 128 windows that begin at them lie in one cache line, so that a comparison brings
// the marks along. A letter that is no base stands as an A; the windows that hold it are marked as
// repeated, and `isWindow` tells them from those that are.
// Filled by SeedIndexBuilder, with several threads; read-only, for any thread, afterwards.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/kmerPlace.h"
#include "kmer/prefetch.h"
#include "kmer/tableMemory.h"

namespace velk {

/// An indexed contig in the text. For k > 32 a window is the last 32 bases of its k-mer, so the
/// first one begins k - 32 bases behind the contig's first base.
struct TextContig {
  uint64_t start;         // position of its first base
  uint64_t firstWindow;   // position of the first window
  uint64_t windows;       // number of windows
  uint32_t scaffold;      // index in scaffoldInfo
  uint32_t contig;        // index in the scaffold
  uint8_t hasOddLetters;  // whether a letter of it is no base

  uint64_t endWindow() const { return firstWindow + windows; }
};

class ContigText {
 public:
  static constexpr uint64_t kPad = 128;  // positions before the first contig, and behind all
  static constexpr uint64_t kBasesOfLine = 128;
  static constexpr uint64_t kMarks = 64;  // of a word

  /// Makes the text of these contigs, all letters A, no marks. windowLength: bases of a window in
  /// the text, at most DATA_LEN. kmer: bases of a k-mer, of which a window is the last ones.
  /// Throws std::bad_alloc without memory.
  void make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer);

  int windowLength() const { return windowLength_; }
  uint64_t windows() const { return windows_; }
  uint64_t end() const { return end_; }  // behind all positions
  const std::vector<TextContig>& contigs() const { return contigs_; }
  void noteOddLetter(std::size_t n) {
    __atomic_store_n(&contigs_[n].hasOddLetters, uint8_t{1}, __ATOMIC_RELAXED);
  }
  std::string_view letters(std::size_t n) const { return letters_[n]; }
  uint64_t bytes() const;

  /// The n-th word of the text: the bases from DATA_LEN n on, the first in the highest bits.
  uint64_t wordAt(uint64_t n) const { return words_[n / 4 * 8 + n % 4]; }
  void setWord(uint64_t n, uint64_t word) { words_[n / 4 * 8 + n % 4] = word; }

  /// The `count` packed bases from position p on. REQUIRES: 1 <= count <= DATA_LEN.
  uint64_t basesAt(uint64_t p, int count) const {
    const uint64_t n = p / DATA_LEN;
    const unsigned into = LEN_TO_BITLEN * static_cast<unsigned>(p % DATA_LEN);
    const uint64_t bits = wordAt(n) << into | wordAt(n + 1) >> 1 >> (63 - into);
    return bits >> (64 - LEN_TO_BITLEN * count);
  }

  /// Marks of the 64 positions from 64 n on, the first in the lowest bit.
  /// Repeated: the window's k-mer occurs again in the index, or it is no window.
  /// Reversed: the index holds the reverse complement of the window, too.
  uint64_t repeatedMarks(uint64_t n) const { return load(words_[n / 2 * 8 + 4 + n % 2]); }
  uint64_t reversedMarks(uint64_t n) const { return load(words_[n / 2 * 8 + 6 + n % 2]); }
  bool isMarkedRepeated(uint64_t p) const { return repeatedMarks(p / 64) >> p % 64 & 1U; }

  /// The marks of the 64 positions from p on.
  uint64_t repeatedMarksFrom(uint64_t p) const {
    return repeatedMarks(p / 64) >> p % 64 | repeatedMarks(p / 64 + 1) << 1 << (63 - p % 64);
  }
  uint64_t reversedMarksFrom(uint64_t p) const {
    return reversedMarks(p / 64) >> p % 64 | reversedMarks(p / 64 + 1) << 1 << (63 - p % 64);
  }

  /// Several threads may set marks at the same time.
  void markRepeated(uint64_t p) {
    orInto(words_[p / 128 * 8 + 4 + p / 64 % 2], uint64_t{1} << p % 64);
  }
  void markReversed(uint64_t p) {
    orInto(words_[p / 128 * 8 + 6 + p / 64 % 2], uint64_t{1} << p % 64);
  }
  void setReversedMarks(uint64_t n, uint64_t marks) { words_[n / 2 * 8 + 6 + n % 2] = marks; }

  /// Marks the positions [from, to) as repeated. One thread only.
  void markRange(uint64_t from, uint64_t to);

  /// The number of the contig that p lies in, or of the last one before it; 0 before the first.
  std::size_t contigOf(uint64_t p) const;

  /// Whether the window at p is one whose letters are all bases.
  bool isWindow(uint64_t p) const;

  /// Where the window at p lies in the model. REQUIRES: it is a window.
  KmerPlace placeOf(uint64_t p) const {
    const TextContig& contig = contigs_[contigOf(p)];
    return {contig.scaffold, contig.contig, p - contig.firstWindow};
  }

  /// Prefetches the positions [from, to), as far as there are such.
  void prefetchRange(uint64_t from, uint64_t to) const {
    for (from = from > end_ ? 0 : from; from < std::min(to, end_); from += kBasesOfLine) {
      prefetchLine(&words_[from / kBasesOfLine * 8]);
    }
    if (to <= end_) prefetchLine(&words_[to / kBasesOfLine * 8]);
  }
  /// Prefetches the positions from, ..., to, which lie in two cache lines at most.
  void prefetchBetween(uint64_t from, uint64_t to) const {
    prefetchLine(&words_[from / kBasesOfLine * 8]);
    prefetchLine(&words_[to / kBasesOfLine * 8]);
  }

  /// Prefetches the window at p.
  void prefetch(uint64_t p) const {
    prefetchBetween(p, p + static_cast<uint64_t>(windowLength_) - 1);
  }

 private:
  static constexpr uint64_t kNumbered = 1024;  // positions for which one contig number is kept

  static uint64_t load(const uint64_t& word) { return __atomic_load_n(&word, __ATOMIC_RELAXED); }
  static void orInto(uint64_t& word, uint64_t bits) {
    if ((load(word) & bits) != bits) __atomic_fetch_or(&word, bits, __ATOMIC_RELAXED);
  }

  int windowLength_ = 0;
  uint64_t windows_ = 0;
  uint64_t end_ = 0;
  ZeroedArray<uint64_t> words_;  // a cache line: 4 words of bases, 2 of either mark
  std::vector<TextContig> contigs_;
  std::vector<std::string_view> letters_;  // of the contigs, as they stand in the model
  std::vector<uint32_t> numbers_;          // of the contig at every kNumbered-th position
};

}  // namespace velk
