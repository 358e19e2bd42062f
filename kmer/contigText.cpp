#include "kmer/contigText.h"

#include "kmer/Sequence.h"

namespace velk {

void ContigText::lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer) {
  assert(kmer == Kmer);
  scaffoldInfo_ = scaffoldInfo;
  windowLength_ = std::min(kmer, DATA_LEN);
  const auto basesBeforeKey = static_cast<uint64_t>(kmer - windowLength_);
  windows_ = 0;
  end_ = kPad;
  std::size_t count = 0;
  forEachIndexed(scaffoldInfo, scaffoldSum, [&](auto&&...) { ++count; });
  contigs_.make(count);
  count = 0;
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                   contigs_[count++] = {end_, end_ + basesBeforeKey, windows, i, j, 0};
                   windows_ += windows;
                   // Contigs begin at words, so that threads do not share one.
                   end_ += (contig.bases().size() + DATA_LEN - 1) / DATA_LEN * DATA_LEN;
                 });
  numbers_.make(end_ / kNumbered + 2);
  uint32_t n = 0;
  for (std::size_t i = 0; i < numbers_.size(); ++i) {
    while (n + 1 < count && contigs_[n + 1].start <= i * kNumbered) ++n;
    numbers_[i] = n;
  }
}

void ContigText::make() {
  lines_.make(linesFor(end_));
  forEachNoWindow([&](uint64_t p) { markRepeated(p); });
}

void ContigText::pack(uint64_t from, uint64_t to) {
  assert(from % DATA_LEN == 0 && to % DATA_LEN == 0);
  for (std::size_t n = contigOf(from); n < contigs_.size() && contigs_[n].start < to; ++n) {
    const uint64_t start = contigs_[n].start;
    const uint64_t last = std::min(to, start + letters(n).size());
    for (uint64_t p = std::max(from, start); p < last; p += DATA_LEN) {
      const std::string_view next = letters(n).substr(p - start, DATA_LEN);
      uint64_t& word = lines_[p / kBasesOfLine].bases[p / DATA_LEN % 4];
      if (!packBases(next, &word)) markNonAcgtWindows(n, p, next);
    }
  }
}

// Marks the windows that hold non-ACGT letters of these, which lie at position `from`.
void ContigText::markNonAcgtWindows(std::size_t n, uint64_t from, std::string_view letters) {
  TextContig& contig = contigs_[n];
  __atomic_store_n(&contig.hasNonAcgt, 1U, __ATOMIC_RELAXED);
  for (std::size_t i = 0; i < letters.size(); ++i) {
    if (baseCode(letters[i]) < 4) continue;
    const uint64_t stop = std::min(from + i + 1, contig.endWindow());
    const uint64_t first = from + i + 1 - static_cast<uint64_t>(windowLength_);
    for (uint64_t p = std::max(first, contig.firstWindow); p < stop; ++p) markRepeated(p);
  }
}

std::size_t ContigText::contigOf(uint64_t p) const {
  std::size_t n = numbers_[std::min<uint64_t>(p / kNumbered, numbers_.size() - 1)];
  while (n + 1 < contigs_.size() && contigs_[n + 1].start <= p) ++n;
  return n;
}

// isWindow(p) of a position that is marked repeated.
bool ContigText::isMarkedWindow(uint64_t p) const {
  if (contigs_.size() == 0) return false;
  const std::size_t n = contigOf(p);
  const TextContig& contig = contigs_[n];
  if (!contig.hasWindow(p)) return false;
  if (contig.hasNonAcgt == 0) return true;
  const std::string_view window =
      letters(n).substr(p - contig.start, static_cast<std::size_t>(windowLength_));
  return std::all_of(window.begin(), window.end(), [](char c) { return baseCode(c) < 4; });
}

uint64_t ContigText::rawKeyAt(uint64_t p) const {
  const std::size_t n = contigOf(p);
  const std::string_view contig = letters(n);
  const uint64_t from = std::min<uint64_t>(p - contigs_[n].start, contig.size());
  return packedKmer(contig.substr(from, static_cast<std::size_t>(windowLength_)));
}

}  // namespace velk
