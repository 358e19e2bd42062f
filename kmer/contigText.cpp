#include "kmer/contigText.h"

#include <algorithm>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/contigWindows.h"

namespace velk {

void ContigText::make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer) {
  windowLength_ = std::min(kmer, DATA_LEN);
  const auto before = static_cast<uint64_t>(kmer - windowLength_);  // bases that no key holds
  windows_ = 0;
  contigs_.clear();
  letters_.clear();
  uint64_t position = kPad;
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t i, uint32_t j, const ContigInfo& contig, uint32_t windows) {
                   contigs_.push_back({position, position + before, windows, i, j, 0});
                   letters_.emplace_back(contig.contigSeq);
                   windows_ += windows;
                   // Contigs begin on words, so that several threads may pack them.
                   const uint64_t words = (contig.contigSeq.size() + DATA_LEN - 1) / DATA_LEN;
                   position += words * DATA_LEN;
                 });
  end_ = position;
  words_.make((end_ + kPad) / kBasesOfLine * 8 + 8);

  numbers_.assign(end_ / kNumbered + 1, 0);
  uint32_t number = 0;
  for (uint64_t n = 0; n < numbers_.size(); ++n) {
    while (number + 1 < contigs_.size() && contigs_[number + 1].start <= n * kNumbered) ++number;
    numbers_[n] = number;
  }
  uint64_t from = 0;
  for (const TextContig& contig : contigs_) {
    markRange(from, contig.firstWindow);
    from = contig.endWindow();
  }
  markRange(from, words_.size() / 8 * kBasesOfLine);
}

uint64_t ContigText::bytes() const {
  return words_.size() * sizeof(uint64_t) + numbers_.size() * sizeof(uint32_t) +
         contigs_.size() * (sizeof(TextContig) + sizeof(std::string_view));
}

void ContigText::markRange(uint64_t from, uint64_t to) {
  while (from < to) {
    const uint64_t stop = std::min(to, (from / kMarks + 1) * kMarks);
    const uint64_t bits = ~uint64_t{0} >> (kMarks - (stop - from)) << from % kMarks;
    words_[from / 128 * 8 + 4 + from / 64 % 2] |= bits;
    from = stop;
  }
}

std::size_t ContigText::contigOf(uint64_t p) const {
  const uint64_t n = std::min<uint64_t>(p / kNumbered, numbers_.size() - 1);
  const uint32_t first = numbers_[n];
  const uint32_t last =
      n + 1 < numbers_.size() ? numbers_[n + 1] : static_cast<uint32_t>(contigs_.size() - 1);
  const auto behind = std::upper_bound(
      contigs_.begin() + first + 1, contigs_.begin() + last + 1, p,
      [](uint64_t position, const TextContig& contig) { return position < contig.start; });
  return static_cast<std::size_t>(behind - contigs_.begin()) - 1;
}

bool ContigText::isWindow(uint64_t p) const {
  if (contigs_.empty()) return false;
  const std::size_t n = contigOf(p);
  const TextContig& contig = contigs_[n];
  if (p < contig.firstWindow || p >= contig.endWindow()) return false;
  if (contig.hasOddLetters == 0) return true;
  const std::string_view window =
      letters_[n].substr(p - contig.start, static_cast<std::size_t>(windowLength_));
  return std::all_of(window.begin(), window.end(), [](char c) { return baseCode(c) < 4; });
}

}  // namespace velk
