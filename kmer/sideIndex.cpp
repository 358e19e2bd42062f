#include "kmer/sideIndex.h"

#include <string_view>

#include "kmer/Sequence.h"

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
  repeats_.make(marks / 64 + 1);
  reversed_.make(marks / 64 + 1);
  filter_.build(kmers);
}

void SideIndex::release() {
  filter_.release();
  firstContig_ = {};
  firstMark_ = {};
  repeats_.release();
  reversed_.release();
}

void SideIndex::noteRepeat(const HashSet& index, const Stretch& stretch, std::size_t w,
                           uint64_t first) {
  set(repeats_, markOf(stretch) + w);
  set(repeats_, markOf(index.array[first]));
}

void SideIndex::add(const HashSet& index, const Stretch& stretch, const PackedBases& bases,
                    std::size_t count, int kmer) {
  const std::size_t grams = gramsOf(kmer);
  // These are known from the stretch before, if there was one, and it had bases alone.
  const auto gramAt = [&](std::size_t at) { return Gram(bases.at(at, gramLength(kmer)), kmer); };
  for (std::size_t g = 0; g + 1 < grams; ++g) filter_.add(gramAt(g));
  const uint64_t first = markOf(stretch);
  const auto mayHoldReversed = [&](std::size_t gram) {
    return filter_.mayHold(gramAt(gram).turned());
  };
  for (std::size_t w = 0; w < count; ++w) {
    const Gram last = gramAt(w + grams - 1);
    filter_.add(last);
    // Whichever of the two comes later finds the grams of the other.
    if (filter_.mayHold(last.turned()) && mayHoldReversed(w) && mayHoldReversed(w + grams / 2)) {
      markPair(index, first + w, reversedKey(bases.at(w, kmer), kmer));
    }
  }
}

void SideIndex::addOdd(const HashSet& index, const Stretch& stretch, uint64_t key, int kmer) {
  const uint64_t gramBits = (uint64_t{1} << (LEN_TO_BITLEN * gramLength(kmer))) - 1;
  for (std::size_t g = 0; g < gramsOf(kmer); ++g) {
    filter_.add(Gram(key >> (LEN_TO_BITLEN * g) & gramBits, kmer));
  }
  set(reversed_, markOf(stretch));
  markPair(index, markOf(stretch), reversedKey(key, kmer));
}

// Marks a k-mer whose reverse complement is `reversed`, and that one, if it is in the index.
void SideIndex::markPair(const HashSet& index, uint64_t bit, uint64_t reversed) {
  const uint64_t slot = findBegun(index, {reversed, homeSlot(index, reversed)});
  if (slot == index.size) return;
  set(reversed_, bit);
  set(reversed_, markOf(index.array[slot]));
}

// Of a k-mer that occurs more than once, the index knows the first place alone, so that one bears
// the mark; the others take it over.
void SideIndex::finish(const HashSet& index, const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum,
                       int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const std::string_view bases = scaffoldInfo[i].contigsInfo[j].contigSeq;
      const uint64_t first = markOf(Stretch{i, j, 0});
      for (std::size_t at = 0; at + length <= bases.size(); ++at) {
        if (!isSet(repeats_, first + at)) continue;
        uint64_t key = 0;
        Seq2Kmer(key, bases.substr(at, length));
        const uint64_t slot = findBegun(index, {key, homeSlot(index, key)});
        if (isSet(reversed_, markOf(index.array[slot]))) set(reversed_, first + at);
      }
    }
  }
}

bool SideIndex::mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from,
                               uint64_t to) const {
  const uint64_t first = markOf(Stretch{scaffold, contig, 0});
  const uint64_t end = first + to;
  for (uint64_t bit = first + from; bit < end; bit = (bit / 64 + 1) * 64) {
    const uint64_t behind = end - bit;
    const uint64_t inReach = behind < 64 - bit % 64 ? (uint64_t{1} << behind) - 1 : ~uint64_t{0};
    if ((reversed_[bit / 64] >> (bit % 64) & inReach) != 0) return true;
  }
  return false;
}

}  // namespace velk
