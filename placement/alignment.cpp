#include "placement/alignment.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <utility>

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

}  // namespace

void Alignment::align(const ContigText& text, const PackedBases& bases, const Diagonal& diagonal,
                      std::size_t window) {
  assert(window < matches_.size());
  isThere_ = true;
  diagonal_ = diagonal;
  const uint64_t position = diagonal.positionOf(window);
  const TextContig& contig = text.contigs()[text.contigOf(position)];
  const auto k = static_cast<std::size_t>(text.windowLength());
  matches_.reset(matches_.size());

  // 1. The windows that lie on windows of the contig.
  uint64_t before = position - contig.firstWindow;
  uint64_t behind = contig.endWindow() - 1 - position;
  if (diagonal.isReversed) std::swap(before, behind);
  const std::size_t from = window - std::min<uint64_t>(window, before);
  const std::size_t to = std::min<uint64_t>(matches_.size(), window + 1 + behind);
  first_ = from;
  end_ = to;
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

void Alignment::addMarked(const ContigText& text, Mark mark, WindowSet& windows) const {
  const auto marksFrom = [&](uint64_t position) {
    return mark == Mark::kRepeated ? text.repeatedMarksFrom(position)
                                   : ~text.reversedMarksFrom(position);
  };
  windows.insertMarked(matches_, [&](std::size_t window) {
    const uint64_t position = diagonal_.positionOf(window);
    return diagonal_.isReversed ? reversedBits(marksFrom(position - 63)) : marksFrom(position);
  });
}

}  // namespace velk
