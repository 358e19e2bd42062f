// The seed index: does a k-mer occur once in the contigs, and where first? It keeps no k-mer, but
// the contigs' packed text and the places of its seeds: 1.3 to 1.6 bytes a k-mer for k = 31.
//
// A k-mer is looked up by its seed (kmer/seeds.h). The places of a seed are stored by its canonical
// m-mer, in text order, from its home bucket on. A look-up visits them in this order and compares
// the text around each. Why the first place that agrees is the k-mer's first occurrence: equal
// windows have the same seed at the same offset, and the seed of each k-mer's first occurrence is
// stored. A place that agrees is an occurrence, so none comes before the first.
// A seed with more than kMostPlaces places is heavy. It stores kElsewhere alone; its windows are in
// a second level, one place a distinct k-mer. So are non-ACGT windows, and all windows whose seeds
// have the same canonical m-mer as theirs.
// Each window has two marks beside the text: its k-mer is repeated; the index holds its reverse
// complement. The parts come from sparse and skew k-mer dictionaries (Almodaresi et al., "A space
// and time-efficient index for the compacted colored de Bruijn graph", 2018; Pibiri, "Sparse and
// skew hashing of k-mers", 2022).
//
// Built once (kmer/seedIndexBuilder.cpp); read-only afterwards, any thread may ask.
#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "kmer/buckets.h"
#include "kmer/contigText.h"
#include "kmer/seeds.h"

namespace velk {

/// What the index knows of a k-mer.
struct Occurrence {
  static constexpr uint64_t kAbsent = ~uint64_t{0};
  uint64_t position = kAbsent;  // in the text, of the first occurrence
  bool isUnique = false;

  bool isThere() const { return position != kAbsent; }
};

class SeedIndex {
 public:
  static constexpr uint64_t kMostPlaces = 6;  // of a seed that is not heavy
  static constexpr double kSeedLoad = 0.7;    // filled share of the buckets, at most
  static constexpr std::size_t kRegions = std::size_t{1} << kRegionBits;

  /// The buckets of a level that belong to a region, by their indexes.
  struct RegionRange {
    uint64_t first;
    uint64_t size;
  };

  /// Builds the index of all k-mers of the model; the same, byte for byte, for any number of
  /// threads. Returns false, and is of no use, when memory runs out. Tests reach places beyond 32
  /// bits with placeBase, which is added to all places. They reach long seeds with leastWindows:
  /// seeds are as long as for at least so many windows. REQUIRES: kmer == Kmer; the model stays as
  /// it is while the index is used.
  bool build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, int threads,
             uint64_t placeBase = 0, uint64_t leastWindows = 0);

  /// The answer for the k-mer with this key; none if no contig has it.
  std::optional<KmerAnswer> placeOf(uint64_t key) const;

  uint64_t distinctKeys() const { return distinctKeys_; }

  /// Prepares it to view the memory of an index that was built from this model; forEachKept then
  /// sets that memory. REQUIRES: as build().
  void lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
           uint64_t leastWindows = 0);

  /// Calls f(Array<T>&) for the memory that an index has beside what follows from the model, but
  /// for the contigs' marks of non-ACGT letters: the lines of the text, then buckets and ranges of
  /// both levels. No look-up leads outside of memory, or never ends, when there are as many lines
  /// as the text has, the positions of no window are marked as repeated, and kRegions ranges of a
  /// level lie within its buckets, one bucket each at least. `index`: of this class, or const.
  template <class Index, class F>
  static void forEachKept(Index& index, F f) {
    f(index.text_.lines());
    for (auto* level : {&index.seedLevel_, &index.windowLevel_}) {
      f(level->buckets);
      f(level->ranges);
    }
  }

  const ContigText& text() const { return text_; }
  const Seeds& seeds() const { return seeds_; }

  /// Whether the text has windows: not for k = 0, nor without a contig that is long enough.
  bool hasText() const { return text_.windows() != 0; }

  /// What the index knows of the k-mer with this key.
  Occurrence find(uint64_t key) const;

  // What a seed of a packed read tells about all windows that share it. There are three steps, so
  // that the memory of several seeds can be prefetched at the same time.

  /// 1. Prefetches the home bucket of the seed.
  void prefetchSeed(const SeedRun& run) const {
    prefetchLine(bucketsOf(seedLevel_, run.hash).home(run.hash));
  }

  /// 2. Prefetches the text around the seed's first place. Returns false if there is none: no
  /// window of the run is indexed, on either strand.
  bool prefetchText(const SeedRun& run) const;

  struct SeedVerdict {
    uint64_t absent = 0;  // mask of windows (as windowMask) that are indexed on neither strand
    std::optional<Diagonal> diagonal{};  // on it an indexed window equals ...
    uint64_t window = 0;                 // ... this window of the run
  };

  /// 3. The verdict on the windows of the run.
  SeedVerdict verdictOn(const SeedRun& run, const PackedBases& bases) const;

 private:
  friend class RegionBuilder;
  friend class SeedIndexBuilder;

  // A place before the first contig. It stands for: look in the second level.
  static constexpr uint64_t kElsewhere = ContigText::kPad / 2;

  /// Places in buckets. Each region, the hashes with the same top bits, has a range of buckets.
  struct Level {
    Array<Bucket> buckets;
    Array<RegionRange> ranges;
  };

  static std::size_t regionOf(uint64_t hash) { return hash >> (64 - kRegionBits); }
  BucketRange bucketsOf(const Level& level, uint64_t hash) const {
    const RegionRange& range = level.ranges[regionOf(hash)];
    return {&level.buckets[range.first], range.size, shape_};
  }
  template <class OnPlace>
  bool anyPlace(const Level& level, uint64_t hash, OnPlace onPlace) const {
    return bucketsOf(level, hash).anyHit(hash, [&](uint64_t p) {
      const uint64_t place = p - placeBase_;
      return place - kElsewhere < text_.end() - kElsewhere && onPlace(place);
    });
  }

  /// The hash of a k-mer in the second level, in the same region as its seed.
  static uint64_t windowHash(uint64_t seedHash, uint64_t key) {
    return seedHash ^ mixed(key) >> kRegionBits;
  }
  std::pair<uint64_t, uint64_t> windowsUnder(const Diagonal& diagonal, const SeedRun& run,
                                             const PackedBases& bases) const;

  ContigText text_;
  Seeds seeds_{1, 0};
  BucketShape shape_{12, 4};
  uint64_t placeBase_ = 0;
  Level seedLevel_;
  Level windowLevel_;
  std::optional<KmerAnswer> emptyKmer_;  // for k = 0, where all keys are 0
  uint64_t distinctKeys_ = 0;
};

extern SeedIndex* seedIndex;  // null: the index of the run, written by FetchKmers1

}  // namespace velk
