// Builds a seed index, with several threads.
//
// The contigs are packed into the text. The runs of windows that share a seed are counted by
// region, which is a range of hashes. Then they are gathered in the memory of the later buckets: a
// run takes a little more than a place. Each region is built from its runs (kmer/regionBuilder.h),
// and its buckets overwrite them. At the end the regions are moved together. A region depends on
// the text alone, not on the number of threads.
#include <algorithm>
#include <array>
#include <new>
#include <utility>
#include <vector>

#include "kmer/machine.h"
#include "kmer/regionBuilder.h"

namespace velk {

class SeedIndexBuilder {
 public:
  SeedIndexBuilder(SeedIndex& index, int threads)
      : index_(index),
        text_(index.text_),
        threads_(static_cast<std::size_t>(std::max(threads, 1))) {}

  // Builds the index of its text. Throws std::bad_alloc without memory.
  void build() {
    assert(text_.end() <= Run::kPosition);
    forEachPiece([&](uint64_t from, uint64_t to) { text_.pack(from, to); });
    makeRoom();
    forEachPiece([&](uint64_t from, uint64_t to) { gather(from, to); });
    forEachInParallel(threads_, kRegions, [&](std::size_t r) { buildRegion(r); });
    layBuckets();
  }

 private:
  static constexpr std::size_t kRegions = SeedIndex::kRegions;

  // Calls onPiece(from, to) for all positions, piece by piece, on all threads.
  template <class OnPiece>
  void forEachPiece(OnPiece onPiece) const {
    constexpr uint64_t kPiece = uint64_t{1} << 16;  // positions
    forEachInParallel(threads_, text_.end() / kPiece + 1,
                      [&](std::size_t n) { onPiece(n * kPiece, (n + 1) * kPiece); });
  }

  // Calls onRun(hash of the seeds' canonical m-mer, Run) for the runs of the windows [from, to), in
  // text order. REQUIRES: of all windows, the non-ACGT ones alone are marked repeated.
  template <class OnRun>
  void forEachRun(uint64_t from, uint64_t to, OnRun onRun) const {
    const auto& contigs = text_.contigs();
    for (std::size_t n = text_.contigOf(from); n < contigs.size() && contigs[n].start < to; ++n) {
      const uint64_t end = std::min(to, contigs[n].endWindow());
      for (uint64_t p = std::max(from, contigs[n].firstWindow); p < end;) {
        uint64_t next = contigs[n].hasNonAcgt != 0 ? p : end;  // the next non-ACGT window
        while (next < end && !text_.isMarkedRepeated(next)) ++next;
        if (p < next) forEachRunOfBases(p, next, onRun);
        for (p = next; p < end && text_.isMarkedRepeated(p); ++p) {
          const Run run{p & Run::kPosition, 0, 1, 1, 1};
          onRun(index_.seeds().seedOf(text_.rawKeyAt(p)).hash, run);
        }
      }
    }
  }

  // The same for ACGT windows. Neighbouring runs with the same hash are joined.
  template <class OnRun>
  void forEachRunOfBases(uint64_t from, uint64_t to, OnRun onRun) const {
    uint64_t hash = 0;
    Run joined{};
    index_.seeds_.forEachRun(text_, from, to, [&](const SeedRun& run) {
      const uint64_t windows = run.last - run.first + 1;
      const bool isLong = joined.windows + windows > Run::kMostWindows;
      if (joined.windows != 0 && run.hash == hash && !isLong) {
        joined.windows = (joined.windows + windows) & Run::kMostWindows;
        joined.places = std::min<uint64_t>(joined.places + 1U, SeedIndex::kMostPlaces) & 7U;
        return;
      }
      if (joined.windows != 0) onRun(hash, joined);
      hash = run.hash;
      joined = {run.first & Run::kPosition, (run.at - run.first) & 31U, windows & Run::kMostWindows,
                run.isTied ? 2U : 1U, 0};
    });
    onRun(hash, joined);
  }

  // Makes room for the runs of every region, and for the buckets that overwrite them.
  void makeRoom() {
    std::vector<uint64_t> places(kRegions);
    forEachPiece([&](uint64_t from, uint64_t to) {
      std::vector<uint64_t> ofPiece(kRegions);
      forEachRun(from, to, [&](uint64_t hash, const Run& run) {
        ofPiece[SeedIndex::regionOf(hash)] += run.places;
      });
      for (std::size_t r = 0; r < kRegions; ++r) {
        __atomic_fetch_add(&places[r], ofPiece[r], __ATOMIC_RELAXED);
      }
    });
    level_.ranges.make(kRegions);
    uint64_t end = 0;
    for (std::size_t r = 0; r < kRegions; ++r) {
      const uint64_t ofRuns = places[r] / (sizeof(Bucket) / sizeof(Run)) + 1;
      level_.ranges[r] = {end, std::max(bucketsFor(places[r]), ofRuns)};
      end += level_.ranges[r].size;
    }
    level_.buckets.make(end);
  }

  Run* runsOf(std::size_t r) {
    return reinterpret_cast<Run*>(&level_.buckets[level_.ranges[r].first]);
  }

  // Gathers the runs of a piece in the memory of their regions' buckets.
  void gather(uint64_t from, uint64_t to) {
    std::vector<std::pair<std::size_t, Run>> found;  // with their regions
    std::vector<uint64_t> next(kRegions);
    forEachRun(from, to, [&](uint64_t hash, const Run& run) {
      found.emplace_back(SeedIndex::regionOf(hash), run);
      ++next[found.back().first];
    });
    for (std::size_t r = 0; r < kRegions; ++r) {
      next[r] = __atomic_fetch_add(&runs_[r], next[r], __ATOMIC_RELAXED);
    }
    for (const auto& [r, run] : found) runsOf(r)[next[r]++] = run;
  }

  uint64_t bucketsFor(std::size_t places) const {
    const double filled = SeedIndex::kSeedLoad * static_cast<double>(index_.shape_.room);
    return static_cast<uint64_t>(static_cast<double>(places) / filled) + 1;
  }

  void buildRegion(std::size_t r) {
    const Region region = RegionBuilder(index_, text_).build({runsOf(r), runs_[r]});
    auto& [first, size] = level_.ranges[r];
    assert(bucketsFor(region.seedPlaces.size()) <= size);
    size = bucketsFor(region.seedPlaces.size());
    const BucketRange ofSeeds{&level_.buckets[first], size, index_.shape_};
    std::fill_n(ofSeeds.first, size, Bucket{});
    for (const auto& [p, hash] : region.seedPlaces) ofSeeds.add(p + index_.placeBase_, hash);
    windows_[r].resize(bucketsFor(region.windowPlaces.size()));
    const BucketRange ofWindows{windows_[r].data(), windows_[r].size(), index_.shape_};
    for (const uint64_t p : region.windowPlaces) {
      const uint64_t key = text_.keyAt(p);
      const uint64_t seedHash = index_.seeds().seedOf(key).hash;
      ofWindows.add(p + index_.placeBase_, SeedIndex::windowHash(seedHash, key));
    }
    __atomic_fetch_add(&index_.distinctKeys_, region.distinctKeys, __ATOMIC_RELAXED);
  }

  // Moves the buckets of all regions together, in both levels.
  void layBuckets() {
    SeedIndex::Level& second = index_.windowLevel_;
    second.ranges.make(kRegions);
    uint64_t end = 0;
    uint64_t endOfWindows = 0;
    for (std::size_t r = 0; r < kRegions; ++r) {
      auto& [first, size] = level_.ranges[r];
      std::copy_n(&level_.buckets[first], size, &level_.buckets[end]);
      first = std::exchange(end, end + size);
      second.ranges[r] = {endOfWindows, windows_[r].size()};
      endOfWindows += windows_[r].size();
    }
    level_.buckets.shrink(end);
    second.buckets.make(endOfWindows);
    for (std::size_t r = 0; r < kRegions; ++r) {
      const std::vector<Bucket> laid = std::move(windows_[r]);
      std::copy(laid.begin(), laid.end(), &second.buckets[second.ranges[r].first]);
    }
  }

  SeedIndex& index_;
  ContigText& text_;
  SeedIndex::Level& level_ = index_.seedLevel_;
  std::size_t threads_;
  std::array<uint64_t, kRegions> runs_{};               // gathered
  std::vector<std::vector<Bucket>> windows_{kRegions};  // of the second level
};

bool SeedIndex::build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, int threads,
                      uint64_t placeBase, uint64_t leastWindows) try {
  if (kmer == 0) {  // all k-mers are the same
    forEachIndexed(scaffoldInfo, scaffoldSum,
                   [&](uint32_t i, uint32_t j, auto&&, uint32_t windows) {
                     const bool isFirst = distinctKeys_ == 0;
                     if (isFirst) emptyKmer_ = KmerAnswer{{i, j, 0}, true};
                     emptyKmer_->isUnique = isFirst && windows == 1;
                     distinctKeys_ = 1;
                   });
    return true;
  }
  placeBase_ = placeBase;
  lay(scaffoldInfo, scaffoldSum, kmer, leastWindows);
  if (!hasText()) return true;
  text_.make();
  SeedIndexBuilder(*this, threads).build();
  return true;
} catch (const std::bad_alloc&) {
  return false;
}

}  // namespace velk
