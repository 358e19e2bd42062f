// Builds a seed index, with several threads.
//
// The contigs are packed into the text. The runs of windows that share a seed are counted by
// regions of the index, ranges of hashes, and then gathered, in the memory where the buckets will
// stand: a run takes a little more than a place. Each region is built from its runs
// (kmer/regionBuilder.h) and put where they stood; then the regions are moved together. A region
// depends on the text alone, not on the number of threads.
#include <algorithm>
#include <array>
#include <new>
#include <utility>
#include <vector>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/contigWindows.h"
#include "kmer/parallel.h"
#include "kmer/regionBuilder.h"

namespace velk {

class SeedIndexBuilder {
 public:
  SeedIndexBuilder(SeedIndex& index, int threads)
      : index_(index),
        text_(index.text_),
        threads_(static_cast<std::size_t>(std::max(threads, 1))) {}

  // Throws std::bad_alloc without memory.
  void build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
             uint64_t leastWindows);

 private:
  static constexpr uint64_t kPiece = uint64_t{1} << 16;  // positions that a thread takes at once

  using Counts = std::array<uint64_t, SeedIndex::kRegions>;

  void noteEmptyKmer(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum);
  template <class OnPiece>
  void forEachPiece(OnPiece onPiece) const;
  template <class OnPart>
  void forEachPartOf(uint64_t piece, OnPart onPart) const;
  void packPiece(uint64_t piece);
  template <class OnRun>
  void forEachRunOf(uint64_t piece, OnRun onRun);
  template <class OnRun>
  void forEachRunOfContig(std::size_t contig, uint64_t from, uint64_t to, OnRun onRun);
  template <class OnRun>
  void forEachRunOfBases(uint64_t from, uint64_t to, OnRun onRun) const;
  void makeRoom();
  void gatherPiece(uint64_t piece);
  void buildRegion(std::size_t region);
  void layBuckets();

  uint64_t bucketsFor(std::size_t places) const {
    const double filled = SeedIndex::kSeedLoad * static_cast<double>(index_.shape_.room);
    return static_cast<uint64_t>(static_cast<double>(places) / filled) + 1;
  }

  Run* runsOf(std::size_t r) {
    return reinterpret_cast<Run*>(&index_.seedLevel_.buckets[index_.seedLevel_.ranges[r].first]);
  }

  SeedIndex& index_;
  ContigText& text_;
  std::size_t threads_;
  Counts runs_{};                                                 // gathered, of each region
  std::array<std::vector<Bucket>, SeedIndex::kRegions> windows_;  // of the second level
  std::array<std::vector<uint64_t>, SeedIndex::kRegions> strays_;
};

bool SeedIndex::build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, int threads,
                      uint64_t placeBase, uint64_t leastWindows) {
  placeBase_ = placeBase;
  try {
    SeedIndexBuilder(*this, threads).build(scaffoldInfo, scaffoldSum, kmer, leastWindows);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void SeedIndexBuilder::build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
                             uint64_t leastWindows) {
  if (kmer == 0) {
    noteEmptyKmer(scaffoldInfo, scaffoldSum);
    return;
  }
  text_.make(scaffoldInfo, scaffoldSum, kmer);
  if (text_.windows() == 0) return;
  index_.seeds_ = Seeds(text_.windowLength(), std::max(text_.windows(), leastWindows));
  index_.shape_ = BucketShape::forPlacesBelow(index_.placeBase_ + text_.end());
  forEachPiece([&](uint64_t piece) { packPiece(piece); });
  makeRoom();
  forEachPiece([&](uint64_t piece) { gatherPiece(piece); });
  forEachInParallel(threads_, SeedIndex::kRegions, [&](std::size_t r) { buildRegion(r); });
  layBuckets();
  for (const std::vector<uint64_t>& strays : strays_) {
    for (const uint64_t p : strays) {
      const uint64_t reversed = reversedKey(text_.keyAt(p), text_.windowLength());
      if (index_.find(reversed).isThere()) text_.markReversed(p);
    }
  }
}

// All k-mers of no bases are the same.
void SeedIndexBuilder::noteEmptyKmer(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum) {
  forEachIndexed(scaffoldInfo, scaffoldSum,
                 [&](uint32_t i, uint32_t j, const ContigInfo&, uint32_t windows) {
                   if (index_.emptyKmer_) {
                     index_.emptyKmer_->isUnique = false;
                   } else {
                     index_.emptyKmer_ = KmerAnswer{{i, j, 0}, windows == 1};
                   }
                 });
  index_.distinctKeys_ = index_.emptyKmer_ ? 1 : 0;
}

// Calls onPiece(number) for all pieces of the text, by all threads.
template <class OnPiece>
void SeedIndexBuilder::forEachPiece(OnPiece onPiece) const {
  forEachInParallel(threads_, (text_.end() + kPiece - 1) / kPiece, onPiece);
}

// Calls onPart(contig, from, to) for the contigs that may lie in a piece, the positions [from, to).
template <class OnPart>
void SeedIndexBuilder::forEachPartOf(uint64_t piece, OnPart onPart) const {
  const auto& contigs = text_.contigs();
  const uint64_t from = piece * kPiece;
  const uint64_t to = from + kPiece;
  for (std::size_t n = text_.contigOf(from); n < contigs.size() && contigs[n].start < to; ++n) {
    onPart(n, from, to);
  }
}

void SeedIndexBuilder::packPiece(uint64_t piece) {
  forEachPartOf(piece, [&](std::size_t n, uint64_t from, uint64_t to) {
    const uint64_t start = text_.contigs()[n].start;
    const std::string_view letters = text_.letters(n);
    for (uint64_t p = std::max(from, start); p < std::min(to, start + letters.size());
         p += DATA_LEN) {
      uint64_t word = 0;
      if (!packBases(letters.substr(p - start, DATA_LEN), word)) text_.noteOddLetter(n);
      text_.setWord(p / DATA_LEN, word);
    }
  });
}

// Calls onRun(hash, Run, places) for the runs that begin in a piece, in text order: the hash of the
// seeds' kind, and how many places it may add. Marks odd windows.
template <class OnRun>
void SeedIndexBuilder::forEachRunOf(uint64_t piece, OnRun onRun) {
  forEachPartOf(piece, [&](std::size_t n, uint64_t from, uint64_t to) {
    const TextContig& contig = text_.contigs()[n];
    from = std::max(from, contig.firstWindow);
    to = std::min(to, contig.endWindow());
    if (contig.hasOddLetters == 0) {
      forEachRunOfBases(from, to, onRun);
    } else if (from < to) {
      forEachRunOfContig(n, from, to, onRun);
    }
  });
}

// The same for the windows [from, to) of a contig with other letters.
template <class OnRun>
void SeedIndexBuilder::forEachRunOfContig(std::size_t contig, uint64_t from, uint64_t to,
                                          OnRun onRun) {
  const auto length = static_cast<uint64_t>(text_.windowLength());
  const std::string_view letters =
      text_.letters(contig).substr(from - text_.contigs()[contig].start, to - from + length - 1);
  uint64_t open = from;    // the first window that has not been given
  uint64_t behindOdd = 0;  // the first window behind the last other letter
  for (uint64_t i = 0; i < letters.size(); ++i) {
    if (baseCode(letters[i]) > 3) behindOdd = from + i + 1;
    if (i + 1 < length) continue;
    const uint64_t window = from + i + 1 - length;
    if (window >= behindOdd) continue;
    forEachRunOfBases(open, window, onRun);
    open = window + 1;
    text_.markRepeated(window);
    onRun(index_.lookUpOf(text_.oddKeyAt(window)).hash, Run::oddAt(window), 1U);
  }
  forEachRunOfBases(open, to, onRun);
}

// The same for windows of bases alone. Runs of one kind that follow each other are one.
template <class OnRun>
void SeedIndexBuilder::forEachRunOfBases(uint64_t from, uint64_t to, OnRun onRun) const {
  if (from >= to) return;
  uint64_t kind = 0;
  uint64_t places = 0;  // 0: there is no run yet
  Run joined{};
  const auto give = [&] {
    if (places != 0) onRun(mixed(kind), joined, std::min(places, SeedIndex::kMostPlaces));
  };
  index_.seeds_.forEachRun(text_, from, to, [&](const SeedRun& run) {
    const bool isSame = places != 0 && run.kind == kind;
    if (isSame && joined.join(run)) {
      ++places;
      return;
    }
    give();
    joined = Run::of(run);
    kind = run.kind;
    places = 1;
  });
  give();
}

// Makes room for the runs of every region, and for the buckets that take their place.
void SeedIndexBuilder::makeRoom() {
  Counts counts{};
  forEachPiece([&](uint64_t piece) {
    Counts ofPiece{};
    forEachRunOf(piece, [&](uint64_t hash, const Run&, uint64_t places) {
      ofPiece[SeedIndex::regionOf(hash)] += places;
    });
    for (std::size_t r = 0; r < counts.size(); ++r) {
      __atomic_fetch_add(&counts[r], ofPiece[r], __ATOMIC_RELAXED);
    }
  });
  SeedIndex::Level& level = index_.seedLevel_;
  level.ranges.make(SeedIndex::kRegions);
  uint64_t end = 0;
  for (std::size_t r = 0; r < counts.size(); ++r) {
    constexpr std::size_t kRunsOfBucket = sizeof(Bucket) / sizeof(Run);
    level.ranges[r] = {end, std::max(bucketsFor(counts[r]), counts[r] / kRunsOfBucket + 1)};
    end += level.ranges[r].size;
  }
  level.buckets.make(end);
}

// Gathers the runs of a piece where the buckets of their regions will stand.
void SeedIndexBuilder::gatherPiece(uint64_t piece) {
  std::vector<std::pair<std::size_t, Run>> found;  // with their regions
  Counts next{};
  forEachRunOf(piece, [&](uint64_t hash, const Run& run, uint64_t) {
    found.emplace_back(SeedIndex::regionOf(hash), run);
    ++next[found.back().first];
  });
  for (std::size_t r = 0; r < next.size(); ++r) {
    next[r] = __atomic_fetch_add(&runs_[r], next[r], __ATOMIC_RELAXED);
  }
  for (const auto& [r, run] : found) runsOf(r)[next[r]++] = run;
}

void SeedIndexBuilder::buildRegion(std::size_t r) {
  SeedIndex::Level::Range& range = index_.seedLevel_.ranges[r];
  Bucket* const first = &index_.seedLevel_.buckets[range.first];
  RegionBuilder region(index_, text_);
  region.build({runsOf(r), runs_[r]});
  range.size = bucketsFor(region.seeds.size());
  std::fill_n(first, range.size, Bucket{});
  const BucketRange seeds{first, range.size, index_.shape_};
  for (const auto& [place, hash] : region.seeds) seeds.add(place + index_.placeBase_, hash);
  if (!region.windows.empty()) {
    windows_[r].resize(bucketsFor(region.windows.size()));
    const BucketRange windows{windows_[r].data(), windows_[r].size(), index_.shape_};
    for (const uint64_t p : region.windows) {
      windows.add(p + index_.placeBase_, SeedIndex::windowHash(index_.lookUpOf(text_.keyAt(p))));
    }
  }
  strays_[r] = std::move(region.strays);
  __atomic_fetch_add(&index_.distinctKeys_, region.distinctKeys, __ATOMIC_RELAXED);
}

// Moves the buckets of all regions together, and those of the second level.
void SeedIndexBuilder::layBuckets() {
  SeedIndex::Level& seeds = index_.seedLevel_;
  SeedIndex::Level& windows = index_.windowLevel_;
  windows.ranges.make(SeedIndex::kRegions);
  uint64_t end = 0;
  uint64_t endOfWindows = 0;
  for (std::size_t r = 0; r < SeedIndex::kRegions; ++r) {
    const auto [first, size] = seeds.ranges[r];
    std::copy_n(&seeds.buckets[first], size, &seeds.buckets[end]);
    seeds.ranges[r].first = end;
    end += size;
    windows.ranges[r] = {endOfWindows, windows_[r].size()};
    endOfWindows += windows_[r].size();
  }
  seeds.buckets.shrink(end);
  windows.buckets.make(endOfWindows);
  for (std::size_t r = 0; r < SeedIndex::kRegions; ++r) {
    const std::vector<Bucket> laid = std::exchange(windows_[r], {});
    std::copy(laid.begin(), laid.end(), &windows.buckets[windows.ranges[r].first]);
  }
}

}  // namespace velk
