#include "kmer/sideIndex.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>

#include "kmer/Sequence.h"

namespace velk {
namespace {

constexpr std::size_t kStretch = 1024;     // k-mers that are packed together
constexpr std::size_t kOddStretch = 64;    // k-mers; with other letters, longer ones are halved
constexpr std::size_t kGramsAhead = 40;    // grams whose blocks are fetched at the same time
constexpr std::size_t kLookUpsAhead = 32;  // look-ups begun at the same time

// Grams of neighbouring k-mers, those in hand and those whose blocks are being fetched.
class GramRing {
 public:
  GramRing(const GramFilter& filter, const PackedBases& bases)
      : filter_(filter), bases_(bases), gramLength_(filter.gramLength()) {
    for (int i = 1; i < gramLength_; ++i) roll();
  }

  struct Placed {
    Gram gram;
    std::size_t block;
  };

  /// Gets the next gram, and has its block fetched.
  void fetch() {
    roll();
    const std::size_t block = filter_.blockOf(rolled_);
    filter_.prefetch(block);
    ring_[fetched_++ % ring_.size()] = {rolled_, block};
  }

  const Placed& operator[](std::size_t gram) const { return ring_[gram % ring_.size()]; }

 private:
  void roll() {
    if (nextBase_ % DATA_LEN == 0) word_ = bases_.wordAt(nextBase_ / DATA_LEN);
    rolled_.roll(word_ >> (64 - LEN_TO_BITLEN), gramLength_);
    word_ <<= LEN_TO_BITLEN;
    ++nextBase_;
  }

  const GramFilter& filter_;
  const PackedBases& bases_;
  int gramLength_;
  Gram rolled_{};
  std::size_t nextBase_ = 0;
  uint64_t word_ = 0;  // the next bases, from its highest bits on
  std::size_t fetched_ = 0;
  std::array<Placed, 64> ring_;
  static_assert(kGramsAhead + gramsOf(DATA_LEN, kShortestGram) <=
                std::tuple_size_v<decltype(ring_)>);
};

// Marks that several threads change at the same time are read and written as this.
std::atomic_ref<uint64_t> shared(uint64_t& marks) {
  return std::atomic_ref<uint64_t>(marks);
}

constexpr auto kRelaxed = std::memory_order_relaxed;  // the end of a thread orders what it wrote

// Calls onMark(w) for every marked k-mer w of the `windows` whose marks begin at `first`.
template <class OnMark>
void forEachMark(ZeroedArray<uint64_t>& marks, uint64_t first, std::size_t windows, OnMark onMark) {
  const uint64_t end = first + windows;
  for (uint64_t bit = first; bit < end; bit = (bit / 64 + 1) * 64) {
    for (uint64_t left = shared(marks[bit / 64]).load(kRelaxed) >> (bit % 64); left != 0;
         left &= left - 1) {
      const uint64_t marked = bit + static_cast<uint64_t>(std::countr_zero(left));
      if (marked < end) onMark(static_cast<std::size_t>(marked - first));
    }
  }
}

// Looks keys up in the order in which they come, many at the same time.
template <class OnAnswer>
class LookUps {
 public:
  /// onAnswer(w, slot): the slot of the key that was begun with w.
  LookUps(const HashSet& index, OnAnswer onAnswer) : index_(index), onAnswer_(onAnswer) {}

  void begin(std::size_t w, uint64_t key) {
    begun_[count_++] = {w, startProbe(index_, key)};
    if (count_ == begun_.size()) end();
  }

  /// Answers what has been begun.
  void end() {
    for (std::size_t i = 0; i < count_; ++i) {
      onAnswer_(begun_[i].w, findBegun(index_, begun_[i].probe));
    }
    count_ = 0;
  }

 private:
  struct Begun {
    std::size_t w;
    SlotProbe probe;
  };

  const HashSet& index_;
  OnAnswer onAnswer_;
  std::array<Begun, kLookUpsAhead> begun_;
  std::size_t count_ = 0;
};

}  // namespace

void SideIndex::setShared(Marks& marks, uint64_t bit) {
  shared(marks[bit / 64]).fetch_or(maskOf(bit), kRelaxed);
}

void SideIndex::make(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
                     uint64_t kmers) {
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
  filter_.build(kmer, kmers);
}

void SideIndex::release() {
  filter_.release();
  firstContig_ = std::vector<uint64_t>();
  firstMark_ = std::vector<uint64_t>();
  repeats_.release();
  reversed_.release();
}

void SideIndex::noteRepeat(const Entity& again, const Entity& first) {
  setShared(repeats_, markOf(again));
  setShared(repeats_, markOf(first));
}

void SideIndex::addContig(uint64_t scaffold, uint64_t contig, std::string_view bases,
                          std::size_t windows, int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  const uint64_t first = markOf(KmerPlace{scaffold, contig, 0});
  for (std::size_t at = 0; at < windows; at += kStretch) {
    const std::size_t count = std::min(kStretch, windows - at);
    addStretch(first + at, bases.substr(at, count + length - 1), kmer);
  }
}

// Takes in the k-mers of a stretch of bases, the first of which has the mark `first`.
void SideIndex::addStretch(uint64_t first, std::string_view bases, int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  const std::size_t windows = bases.size() - length + 1;
  PackedBases packed;
  if (packed.fill(bases)) {
    addBases(first, packed, windows);
  } else if (windows > kOddStretch) {
    const std::size_t half = windows / 2;
    addStretch(first, bases.substr(0, half + length - 1), kmer);
    addStretch(first + half, bases.substr(half), kmer);
  } else {
    for (std::size_t w = 0; w < windows; ++w) addOdd(first + w, bases.substr(w, length));
  }
}

void SideIndex::addBases(uint64_t first, const PackedBases& bases, std::size_t windows) {
  const std::size_t gramsBefore = filter_.gramsOfKmer() - 1;
  const std::size_t grams = windows + gramsBefore;
  GramRing ring(filter_, bases);
  const auto mayHoldTurned = [&](std::size_t gram) {
    return filter_.mayHold(ring[gram].gram.turned(), ring[gram].block);
  };
  for (std::size_t step = 0; step < grams + kGramsAhead; ++step) {
    if (step < grams) ring.fetch();
    if (step < kGramsAhead) continue;
    const std::size_t last = step - kGramsAhead;
    filter_.add(ring[last].gram, ring[last].block);
    if (last < gramsBefore) continue;
    const std::size_t w = last - gramsBefore;
    // Of a k-mer and its reverse complement, whichever comes later finds the grams of the other.
    if (mayHoldTurned(last) && mayHoldTurned(w) && mayHoldTurned(w + gramsBefore / 2)) {
      set(reversed_, first + w);
    }
  }
}

// Takes in one k-mer of a stretch that has other letters than bases in it.
void SideIndex::addOdd(uint64_t mark, std::string_view bases) {
  const uint64_t key = packedKmer(bases);
  const int length = filter_.gramLength();
  const uint64_t gramBits = (uint64_t{1} << (LEN_TO_BITLEN * length)) - 1;
  for (std::size_t g = 0; g < filter_.gramsOfKmer(); ++g) {
    filter_.add(Gram(key >> (LEN_TO_BITLEN * g) & gramBits, length));
  }
  set(reversed_, mark);
}

void SideIndex::settleReversed(const HashSet& index, uint64_t scaffold, uint64_t contig,
                               std::string_view bases, int kmer) {
  const auto length = static_cast<std::size_t>(kmer);
  const auto hasBasesAlone = [](std::string_view letters) {
    return std::all_of(letters.begin(), letters.end(),
                       [](char base) { return baseCode(base) < 4; });
  };
  const uint64_t first = markOf(KmerPlace{scaffold, contig, 0});
  LookUps lookUps(index, [&](std::size_t w, uint64_t slot) {
    if (slot != index.size) {
      setShared(reversed_, markOf(index.array[slot]));
    } else if (hasBasesAlone(bases.substr(w, length))) {
      shared(reversed_[(first + w) / 64]).fetch_and(~maskOf(first + w), kRelaxed);
    }
  });
  forEachMark(reversed_, first, bases.size(), [&](std::size_t w) {
    const uint64_t key = packedKmer(bases.substr(w, length));
    // Of a k-mer that begins with another letter a bit stands above its bases: it is the reverse
    // complement of none.
    const bool hasBitAbove = kmer < DATA_LEN && key >> (LEN_TO_BITLEN * kmer) != 0;
    if (!hasBitAbove) lookUps.begin(w, reversedKey(key, kmer));
  });
  lookUps.end();
}

void SideIndex::shareReversed(const HashSet& index, uint64_t scaffold, uint64_t contig,
                              std::string_view bases, int kmer) {
  const uint64_t first = markOf(KmerPlace{scaffold, contig, 0});
  LookUps lookUps(index, [&](std::size_t w, uint64_t slot) {
    const uint64_t known = markOf(index.array[slot]);
    if ((shared(reversed_[known / 64]).load(kRelaxed) & maskOf(known)) != 0) {
      setShared(reversed_, first + w);
    }
  });
  forEachMark(repeats_, first, bases.size(), [&](std::size_t w) {
    lookUps.begin(w, packedKmer(bases.substr(w, static_cast<std::size_t>(kmer))));
  });
  lookUps.end();
}

bool SideIndex::mayHoldReverse(uint64_t scaffold, uint64_t contig, uint64_t from,
                               uint64_t to) const {
  const uint64_t first = markOf(KmerPlace{scaffold, contig, 0});
  const uint64_t end = first + to;
  for (uint64_t bit = first + from; bit < end; bit = (bit / 64 + 1) * 64) {
    const uint64_t behind = end - bit;
    const uint64_t inReach = behind < 64 - bit % 64 ? (uint64_t{1} << behind) - 1 : ~uint64_t{0};
    if ((reversed_[bit / 64] >> (bit % 64) & inReach) != 0) return true;
  }
  return false;
}

}  // namespace velk
