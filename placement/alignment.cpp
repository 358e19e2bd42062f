#include "placement/alignment.h"

#include <cassert>
#include <utility>

namespace velk {

void Alignment::align(const ContigText& text, const PackedBases& bases, const Diagonal& diagonal,
                      std::size_t window) {
  assert(window < matches_.size() && text.isOfContig(diagonal.positionOf(window)));
  isThere_ = true;
  diagonal_ = diagonal;
  const uint64_t position = diagonal.positionOf(window);
  const TextContig& contig = text.contigs()[text.contigOf(position)];
  const auto k = static_cast<std::size_t>(text.windowLength());
  matches_.reset(matches_.size());

  // 1. The windows that lie on windows of the contig.
  uint64_t before = position - contig.firstWindow;
  uint64_t after = contig.endWindow() - 1 - position;
  if (diagonal.isReversed) std::swap(before, after);
  const std::size_t first = window - std::min<uint64_t>(window, before);
  const std::size_t end = std::min<uint64_t>(matches_.size(), window + 1 + after);
  // 2. Of these, insert the ones without a mismatch.
  std::size_t matched = first;
  for (std::size_t base = matched; base < end + k - 1; base += DATA_LEN) {
    const auto count = static_cast<int>(std::min<std::size_t>(DATA_LEN, end + k - 1 - base));
    const uint64_t difference = bases.at(base, count) ^ text.basesUnder(diagonal, base, count);
    uint64_t differ = ((difference | difference >> 1) & 0x5555555555555555U)
                      << (64 - LEN_TO_BITLEN * count);
    for (; differ != 0; differ &= ~uint64_t{0} >> 1 >> std::countl_zero(differ)) {
      const std::size_t mismatch =
          base + static_cast<std::size_t>(std::countl_zero(differ) / LEN_TO_BITLEN);
      if (matched + k <= mismatch) matches_.insertRange(matched, mismatch - k + 1);
      matched = mismatch + 1;
    }
  }
  if (matched < end) matches_.insertRange(matched, end);
  // 3. Erase the non-ACGT windows.
  if (contig.hasNonAcgt == 0) return;
  for (std::size_t w = matches_.firstContained(0); w < end; w = matches_.firstContained(w + 1)) {
    if (!text.isWindow(diagonal.positionOf(w))) matches_.erase(w);
  }
}

void Alignment::addNotReversed(const ContigText& text, WindowSet& windows) const {
  assert(isThere_);
  windows.insertMarked(matches_, [&](std::size_t window) {
    const uint64_t position = diagonal_.positionOf(window);
    if (!diagonal_.isReversed) return ~text.reversedMarksFrom(position);
    // Positions count down here. This reverses the 64 bits: pairs change places, then bits in them.
    const uint64_t pairs = reversedKey(text.reversedMarksFrom(position - 63), DATA_LEN);
    return (pairs & 0x5555555555555555U) << 1 | (pairs >> 1 & 0x5555555555555555U);
  });
}

}  // namespace velk
