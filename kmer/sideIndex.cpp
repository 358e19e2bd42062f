#include "kmer/sideIndex.h"

namespace velk {

void SideIndex::make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, uint64_t kmers) {
  release();
  uint64_t marks = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    firstContig_.push_back(firstMark_.size());
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      firstMark_.push_back(marks);
      marks += scaffoldInfo[i].contigsInfo[j].contigSeq.size();
    }
  }
  marks_.assign(marks / 64 + 1, 0);
  filter_.build(kmers);
}

void SideIndex::release() {
  filter_.release();
  firstContig_ = {};
  firstMark_ = {};
  marks_ = {};
}

void SideIndex::noteRepeat(const HashSet& index, const Stretch& stretch, std::size_t w,
                           uint64_t first) {
  mark(markOf(stretch) + w);
  mark(markOf(index.array[first]));
}

void SideIndex::add(const HashSet& index, const Stretch& stretch, const WindowBatch& batch,
                    std::size_t count, int kmer) {
  for (std::size_t w = 0; w < count; ++w) filter_.add(batch.key(w), batch.minimizer(w));
  const uint64_t first = markOf(stretch);
  for (std::size_t w = 0; w < count; ++w) {
    const uint64_t reversed = reversedKey(batch.key(w), kmer);
    if (filter_.mayHold(reversed, batch.minimizer(w))) markPair(index, first + w, reversed);
  }
}

void SideIndex::addOdd(const HashSet& index, const Stretch& stretch, uint64_t key, int kmer) {
  filter_.add(key, minimizerOf(key, kmer));
  mark(markOf(stretch));
  markPair(index, markOf(stretch), reversedKey(key, kmer));
}

// Marks a k-mer whose reverse complement is `reversed`, and that one, if it is in the index.
void SideIndex::markPair(const HashSet& index, uint64_t bit, uint64_t reversed) {
  const uint64_t slot = findBegun(index, {reversed, homeSlot(index, reversed)});
  if (slot == index.size) return;
  mark(bit);
  mark(markOf(index.array[slot]));
}

bool SideIndex::mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from,
                               uint64_t to) const {
  const uint64_t first = markOf(Stretch{scaffold, contig, 0});
  const uint64_t end = first + to;
  for (uint64_t bit = first + from; bit < end; bit = (bit / 64 + 1) * 64) {
    const uint64_t behind = end - bit;
    const uint64_t inReach = behind < 64 - bit % 64 ? (uint64_t{1} << behind) - 1 : ~uint64_t{0};
    if ((marks_[bit / 64] >> (bit % 64) & inReach) != 0) return true;
  }
  return false;
}

}  // namespace velk
