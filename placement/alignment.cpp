#include "placement/alignment.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace velk {
namespace {

// The bits of a word in reverse order.
uint64_t reversedBits(uint64_t word) {
  word = (word & 0x5555555555555555U) << 1 | (word >> 1 & 0x5555555555555555U);
  word = (word & 0x3333333333333333U) << 2 | (word >> 2 & 0x3333333333333333U);
  word = (word & 0x0F0F0F0F0F0F0F0FU) << 4 | (word >> 4 & 0x0F0F0F0F0F0F0F0FU);
  return __builtin_bswap64(word);
}

// Calls onMismatch(base) for the bases [from, to) of a read that differ from the text.
template <class OnMismatch>
void forEachMismatch(const ContigText& text, const PackedBases& bases, const Diagonal& diagonal,
                     std::size_t from, std::size_t to, OnMismatch onMismatch) {
  const auto length = static_cast<uint64_t>(text.windowLength());
  while (from < to) {
    const auto count = static_cast<int>(std::min<std::size_t>(DATA_LEN, to - from));
    const auto bits = static_cast<std::size_t>(count);
    // The base `from` lies on the first base of the window's stretch, or on its last one.
    const uint64_t there =
        diagonal.isReversed
            ? reversedKey(text.basesAt(diagonal.positionOf(from) + length - bits, count), count)
            : text.basesAt(diagonal.positionOf(from), count);
    const uint64_t difference = bases.at(from, count) ^ there;
    uint64_t differ = (difference | difference >> 1) & 0x5555555555555555U;
    for (; differ != 0; differ &= ~(uint64_t{1} << (63 - std::countl_zero(differ)))) {
      const auto bit = static_cast<std::size_t>(63 - std::countl_zero(differ));
      onMismatch(from + bits - 1 - bit / LEN_TO_BITLEN);
    }
    from += bits;
  }
}

// Prefetches `length` letters from `first` on, which may be negative, modulo 2^64.
void prefetchLetters(std::string_view letters, uint64_t first, std::size_t length) {
  constexpr std::size_t kCacheLine = 64;
  const auto from = static_cast<int64_t>(first) < 0 ? 0 : std::min<uint64_t>(first, letters.size());
  const std::string_view bases = letters.substr(from, length);
  for (std::size_t at = 0; at < bases.size(); at += kCacheLine) prefetchLine(&bases[at]);
  if (!bases.empty()) prefetchLine(&bases.back());
}

}  // namespace

void Alignment::prefetch(const ContigText& text, const Diagonal& diagonal, std::size_t length,
                         std::size_t window) {
  const uint64_t start = diagonal.isReversed
                             ? diagonal.origin + static_cast<uint64_t>(text.windowLength()) - length
                             : diagonal.origin;
  text.prefetchRange(start, start + length);
  const std::size_t contig = text.contigOf(diagonal.positionOf(window));
  prefetchLetters(text.letters(contig), start - text.contigs()[contig].start, length);
}

void Alignment::align(const ContigText& text, const PackedBases& bases, std::size_t length,
                      const Diagonal& diagonal, std::size_t window) {
  isThere_ = true;
  diagonal_ = diagonal;
  contig_ = text.contigOf(diagonal.positionOf(window));
  const TextContig& contig = text.contigs()[contig_];
  const auto k = static_cast<std::size_t>(text.windowLength());
  matches_.reset(length - k + 1);

  // 1. The windows that lie on windows of the contig.
  const uint64_t position = diagonal.positionOf(window);
  const uint64_t before = position - contig.firstWindow;
  const uint64_t behind = contig.endWindow() - 1 - position;
  const std::size_t from =
      window - std::min<uint64_t>(window, diagonal.isReversed ? behind : before);
  const std::size_t to =
      window + 1 +
      std::min<uint64_t>(matches_.size() - 1 - window, diagonal.isReversed ? before : behind);
  // 2. Without those that hold a mismatch.
  std::size_t matched = from;
  forEachMismatch(text, bases, diagonal, from, to + k - 1, [&](std::size_t base) {
    if (matched + k <= base) matches_.insertRange(matched, base - k + 1);
    matched = base + 1;
  });
  if (matched < to) matches_.insertRange(matched, to);
  // 3. Without those that hold a letter which is no base.
  if (contig.hasOddLetters == 0) return;
  for (std::size_t w = matches_.firstContained(0); w < to; w = matches_.firstContained(w + 1)) {
    if (!text.isWindow(diagonal.positionOf(w))) matches_.erase(w);
  }
}

// Adds the matches whose mark is set. marksAt(p): the marks of the 64 positions from p on.
template <class MarksAt>
void Alignment::addMarked(WindowSet& windows, MarksAt marksAt) const {
  for (std::size_t n = 0; n < matches_.words(); ++n) {
    const uint64_t word = matches_.wordAt(n);
    if (word == 0) continue;
    const uint64_t position = diagonal_.positionOf(64 * n);
    const uint64_t marks =
        diagonal_.isReversed ? reversedBits(marksAt(position - 63)) : marksAt(position);
    windows.insertWord(n, word & marks);
  }
}

void Alignment::addRepeated(const ContigText& text, WindowSet& windows) const {
  addMarked(windows, [&](uint64_t p) { return text.repeatedMarksFrom(p); });
}

void Alignment::addNotReversed(const ContigText& text, WindowSet& windows) const {
  addMarked(windows, [&](uint64_t p) { return ~text.reversedMarksFrom(p); });
}

}  // namespace velk
