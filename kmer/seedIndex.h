// The seed index: does a k-mer occur once in the contigs, and where first? It keeps no k-mer, but
// the contigs' packed text and the places of its seeds: 1.2 to 1.8 bytes a k-mer for k = 31.
//
// A window's k-mer is found by its seed (kmer/seeds.h). The places of one kind of seed stand in
// text order, from its home bucket on; they overflow into the buckets behind it. Equal windows have
// the same seed at the same offset, so the first place around which the text agrees is the first
// occurrence. A kind with more than kMostPlaces places is heavy: it has the place kElsewhere alone,
// and its windows stand in a second level, one place a distinct k-mer. So do the windows with
// letters that are no bases, and those that share a kind with them. Two marks a window lie beside
// the text: whether its k-mer is repeated, and whether the index holds its reverse complement. The
// parts come from sparse and skew k-mer dictionaries (Almodaresi et al., "A space and
// time-efficient index for the compacted colored de Bruijn graph", 2018; Pibiri, "Sparse and skew
// hashing of k-mers", 2022).
//
// Built once (kmer/seedIndexBuilder.cpp); read-only afterwards, any thread may ask.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "kmer/buckets.h"
#include "kmer/contigText.h"
#include "kmer/contigWindows.h"
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
  static constexpr uint64_t kMostPlaces = 6;  // of a kind of seed that is not heavy
  static constexpr double kSeedLoad = 0.7;    // filled share of the buckets, at most

  /// Builds the index of all k-mers that `scaffoldInfo` has; the same, byte for byte, for any
  /// number of threads. Returns false, and is of no use, when memory runs out.
  /// placeBase is added to all places, and seeds are as long as for leastWindows windows at least:
  /// tests reach places beyond 32 bits and long seeds with these.
  /// REQUIRES: the model stays as it is while the index is used.
  bool build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, int threads,
             uint64_t placeBase = 0, uint64_t leastWindows = 0);

  /// Where the k-mer with this key lies; nothing when no contig has it.
  std::optional<KmerAnswer> placeOf(uint64_t key) const;

  uint64_t distinctKeys() const { return distinctKeys_; }
  uint64_t bytes() const;

  /// Calls f(const Array<T>&) for all memory of the index: with the numbers beside it, it is all
  /// that there is.
  template <class F>
  void forEachArray(F f) const {
    text_.forEachArray(f);
    for (const Level* level : {&seedLevel_, &windowLevel_}) {
      f(level->buckets);
      f(level->ranges);
    }
  }

  /// Prepares it to view the memory of an index that was built of this model, which forEachKept
  /// then sets. REQUIRES: as build.
  void lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer);

  /// Calls f(Array<T>&) for the memory that an index has beside what follows from the model, but
  /// for the contigs' marks of odd letters. `index`: of this class, or const.
  template <class Index, class F>
  static void forEachKept(Index& index, F f) {
    f(index.text_.lines());
    for (auto* level : {&index.seedLevel_, &index.windowLevel_}) {
      f(level->buckets);
      f(level->ranges);
    }
  }

  /// Whether what was set fits the model, so that no look-up leads outside of memory or never ends,
  /// whatever bytes it has.
  bool isSound() const;

  const ContigText& text() const { return text_; }
  const Seeds& seeds() const { return seeds_; }

  /// Whether the windows of the text are k-mers with letters that packed reads can have.
  bool hasText() const { return text_.windows() != 0; }

  // A look-up in three steps, so that the memory of several can be prefetched at the same time.

  struct LookUp {
    uint64_t key;
    uint64_t hash;  // of the seed's kind
    int offset;     // of the seed
    bool isHeavy;   // set by advance(): the windows of the seed are in the second level
  };

  /// 1. Begins, and prefetches the seed's bucket.
  LookUp begin(uint64_t key) const;

  /// The look-up of the reverse complement, begun as well. Where a seed is tied it may be in vain,
  /// or end with a later occurrence than the first. REQUIRES: the key is one of bases alone.
  LookUp beginReversed(const LookUp& lookUp) const;

  /// 2. Prefetches what the k-mer is compared with first.
  void advance(LookUp& lookUp) const;

  /// 3. Ends.
  Occurrence end(const LookUp& lookUp) const;

  /// All three steps.
  Occurrence find(uint64_t key) const { return hasText() ? end(begin(key)) : Occurrence{}; }

  // What a seed says of all windows that share it, and of their reverse complements.

  /// A seed of a packed read, being looked up.
  struct SeedLookUp {
    SeedRun run;
    uint64_t hash;
    uint64_t unlike;  // a place of the seed where no window of the run lies, if one is known
  };

  /// 1. Begins, and prefetches the bucket.
  SeedLookUp beginSeed(const SeedRun& run, uint64_t unlike = Occurrence::kAbsent) const;

  /// 2. Returns false if no window of the run, nor its reverse complement, is in the index.
  /// Prefetches what tells more.
  bool advanceSeed(const SeedLookUp& lookUp) const;

  /// What a seed's places tell: a bit for each offset of the seed in a window, 0 the lowest.
  struct SeedVerdict {
    uint32_t absent = 0;  // windows that the index holds on neither strand

    // A window of the run that agrees with the text, itself or its reverse complement, if any.
    bool isFound = false;
    bool isReversed = false;
    uint64_t window = 0;
    uint64_t position = 0;
  };

  /// 3. Ends. bases: the packed read. REQUIRES: advanceSeed returned true.
  SeedVerdict endSeed(const SeedLookUp& lookUp, const PackedBases& bases) const;

 private:
  friend class RegionBuilder;
  friend class SeedIndexBuilder;

  static constexpr std::size_t kRegions = std::size_t{1} << kRegionBits;
  static constexpr uint64_t kElsewhere = ContigText::kPad / 2;  // where no seed lies

  /// Places in buckets. Those whose hashes begin with the same bits have a range of their own.
  struct Level {
    struct Range {
      uint64_t first;
      uint64_t size;
    };
    Array<Bucket> buckets;
    Array<Range> ranges;
  };

  static std::size_t regionOf(uint64_t hash) { return hash >> (64 - kRegionBits); }
  BucketRange range(const Level& level, uint64_t hash) const {
    const Level::Range& range = level.ranges[regionOf(hash)];
    return {&level.buckets[range.first], range.size, shape_};
  }
  template <class OnPlace>
  bool anyPlace(const Level& level, uint64_t hash, OnPlace onPlace) const {
    return range(level, hash).anyHit(hash, [&](uint64_t p) {
      const uint64_t place = p - placeBase_;
      return place - kElsewhere < text_.end() - kElsewhere && onPlace(place);
    });
  }
  void prefetch(const Level& level, uint64_t hash) const {
    prefetchLine(range(level, hash).home(hash));
  }

  /// The hash of a window in the second level, of the same region as that of its seed's kind.
  static uint64_t windowHash(const LookUp& lookUp) {
    return lookUp.hash ^ mixed(lookUp.key) >> kRegionBits;
  }
  void fixShape(uint64_t leastWindows);
  LookUp lookUpOf(uint64_t key) const;
  Occurrence findWindow(const LookUp& lookUp) const;
  uint32_t sharedOffsets(const SeedRun& run, const PackedBases& bases, uint64_t place,
                         bool isReversed) const;

  ContigText text_;
  Seeds seeds_{1, 0};
  BucketShape shape_{12, 4};
  uint64_t placeBase_ = 0;
  Level seedLevel_;
  Level windowLevel_;
  std::optional<KmerAnswer> emptyKmer_;  // of k = 0, where all keys are 0
  uint64_t distinctKeys_ = 0;
};

extern SeedIndex* seedIndex;  // null: the index of the run, written by FetchKmers1

}  // namespace velk
