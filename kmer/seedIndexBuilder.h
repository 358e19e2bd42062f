// Builds a seed index, with several threads.
//
// The steps, each of which ends before the next begins:
//   1. The contigs are packed into the text.
//   2. Windows with other letters than bases go into their own table, in text order.
//   3. The runs of windows that share a seed are counted, region by region, and the buckets made.
//   4. The runs are inserted: piece by piece of the text they are sorted by region, and each region
//      takes its runs in text order. One thread has a region at a time, so no bucket is shared.
//   5. The places are laid into fewer buckets where many runs had none of their own.
//   6. The second levels of the regions are laid behind each other.
//   7. Keys that ordinary windows and others share are marked.
//   8. Windows whose reverse complement may be in the index are looked up.
// Each step depends on the text alone, not on the number of threads.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "kmer/seedIndex.h"

namespace velk {

class SeedIndexBuilder {
 public:
  SeedIndexBuilder(SeedIndex& index, int threads, uint64_t placeBase);

  /// Throws std::bad_alloc without memory.
  void build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
             uint64_t leastWindows);

 private:
  static constexpr uint64_t kPiece = uint64_t{1} << 16;  // positions that one thread takes
  static constexpr std::size_t kPiecesOfRound = 8;       // sorted before they are inserted
  static constexpr double kDeepLoad = 0.8;
  static constexpr double kWorthKeeping = 0.75;  // buckets that are needed, of those that there are

  static constexpr uint64_t kMostPositions = (uint64_t{1} << 52) - 1;

  /// A run, as it is inserted.
  struct Run {
    uint64_t hash;
    uint64_t at : 52;     // position of the seed
    uint64_t before : 5;  // bases of the first window before the seed
    uint64_t least : 5;   // bases of the last window before the seed
    uint64_t isTied : 1;

    uint64_t first() const { return at - before; }
    uint64_t last() const { return at - least; }
  };

  /// The runs of a piece, sorted by region.
  struct SortedRuns {
    std::vector<Run> runs;
    std::array<uint32_t, SeedIndex::kRegions + 1> starts;
  };

  /// What a region is while it is being filled.
  struct RegionBuild {
    BucketRange seeds;
    uint64_t seedPlaces = 0;
    std::vector<Bucket> deep;
    uint64_t deepPlaces = 0;
    uint64_t distinctKeys = 0;
  };

  uint64_t pieces() const { return (text_.end() + kPiece - 1) / kPiece; }
  template <class OnPiece>
  void forEachPiece(OnPiece onPiece);
  template <class OnContig>
  void forEachContigOf(uint64_t from, uint64_t to, OnContig onContig) const;
  template <class OnRun>
  void forEachRunOf(uint64_t from, uint64_t to, OnRun onRun) const;

  void noteEmptyKmer(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum);
  void packContigs();
  void packWords(std::size_t contig, uint64_t from, uint64_t to);
  void addOddWindows();
  void makeBuckets();
  void makeBuckets(const std::vector<uint64_t>& places);
  void shrinkBuckets();
  void moveSeeds(ConstBucketRange from, BucketRange to) const;
  void insertRuns();
  SortedRuns sortedRuns(uint64_t from, uint64_t to) const;
  void insertInto(std::size_t region, const std::vector<SortedRuns>& pieces);
  void prefetchTextOf(const RegionBuild& region, const Run& run) const;
  void insert(RegionBuild& region, const Run& run);
  uint32_t markEqual(const Run& run, uint64_t place, uint32_t open);
  void markMaybeReversed(uint64_t from, uint64_t last);
  void makeHeavy(RegionBuild& region, uint64_t kind, uint64_t hash);
  void insertDeep(RegionBuild& region, uint64_t from, uint64_t to);
  bool addDeep(RegionBuild& region, uint64_t position);
  void growDeep(RegionBuild& region);
  void layDeepLevels();
  void joinOddKmers();
  bool joinOddKmer(OddKmers::Entry& entry);
  void settleReversed();
  void settleReversed(uint64_t fromWord, uint64_t toWord);

  uint64_t bucketsFor(uint64_t places) const {  // at most kSeedLoad of which are filled
    return static_cast<uint64_t>(static_cast<double>(places) /
                                 (SeedIndex::kSeedLoad * static_cast<double>(index_.shape_.room))) +
           1;
  }
  BucketRange deepRange(RegionBuild& region) const {
    return {region.deep.data(), region.deep.size(), index_.shape_};
  }
  uint64_t kindAt(uint64_t position) const {
    return index_.seeds_.kindOf(text_.basesAt(position, index_.seeds_.length()));
  }
  uint64_t keyAt(uint64_t position) const { return text_.basesAt(position, text_.windowLength()); }

  SeedIndex& index_;
  ContigText& text_;
  std::size_t threads_;
  std::vector<RegionBuild> regions_;
};

}  // namespace velk
