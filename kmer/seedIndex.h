// The seed index: does a k-mer occur once in the contigs, and where first? It keeps no k-mer, but
// the contigs' packed text and the places of its seeds: 1.2 to 1.8 bytes a k-mer for k = 31.
//
// A window's k-mer is found by its seed (kmer/seeds.h). The places of one kind of seed stand in
// text order, from its home bucket on; they overflow into the buckets behind it. Equal windows have
// the same seed at the same offset, so the first place around which the text agrees is the first
// occurrence. A seed with more than kLongestChain places is heavy: its windows are in a second
// level, one place a distinct k-mer. Windows with letters that are no bases are in a table of their
// own (kmer/oddKmers.h). Two marks a window lie beside the text: whether its k-mer is repeated, and
// whether the index holds its reverse complement. The parts come from sparse and skew k-mer
// dictionaries (Almodaresi et al., "A space and time-efficient index for the compacted colored de
// Bruijn graph", 2018; Pibiri, "Sparse and skew hashing of k-mers", 2022).
//
// Built once (kmer/seedIndexBuilder.h); read-only afterwards, any thread may ask.
#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "kmer/buckets.h"
#include "kmer/contigText.h"
#include "kmer/kmerPlace.h"
#include "kmer/oddKmers.h"
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
  static constexpr unsigned kLongestChain = 6;  // places of a seed before it is heavy
  static constexpr double kSeedLoad = 0.7;      // filled share of the seeds' buckets, at most

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
  const ContigText& text() const { return text_; }
  const Seeds& seeds() const { return seeds_; }

  /// Whether the windows of the text are k-mers with letters that packed reads can have.
  bool hasText() const { return text_.windows() != 0; }

  // A look-up in three steps, so that the memory of several can be prefetched at the same time.

  struct LookUp {
    uint64_t key;
    uint64_t hash;  // of the seed's kind
    int offset;     // of the seed
    bool
        isHeavy;  // set by advance(): the first place found is heavy; only a prefetch depends on it
  };

  /// 1. Begins, and prefetches the seed's bucket. REQUIRES: key is one of bases alone.
  LookUp begin(uint64_t key) const;

  /// The look-up of the reverse complement, begun as well. Where a seed is tied it may be in vain,
  /// or end with a later occurrence than the first.
  LookUp beginReversed(const LookUp& lookUp) const;

  /// 2. Prefetches what the k-mer is compared with first.
  void advance(LookUp& lookUp) const;

  /// 3. Ends.
  Occurrence end(const LookUp& lookUp) const;

  Occurrence find(uint64_t key) const;

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
  friend class SeedIndexBuilder;

  static constexpr std::size_t kRegions = std::size_t{1} << kRegionBits;

  /// The buckets of both levels whose hashes begin with the same bits: a thread builds them alone.
  struct Region {
    uint64_t firstSeed;
    uint64_t seedBuckets;
    uint64_t firstDeep;
    uint64_t deepBuckets;
  };

  static std::size_t regionOf(uint64_t hash) { return hash >> (64 - kRegionBits); }

  ConstBucketRange seedRange(uint64_t hash) const {
    const Region& region = regions_[regionOf(hash)];
    return {&seedBuckets_[region.firstSeed], region.seedBuckets, shape_};
  }
  ConstBucketRange deepRange(const Region& region) const {
    return {&deepBuckets_[region.firstDeep], region.deepBuckets, shape_};
  }
  static uint64_t deepHashOf(uint64_t key) { return mixed(key * 0xFF51AFD7ED558CCDU); }

  bool isOrdinary(uint64_t key) const;
  Occurrence findOrdinary(const LookUp& lookUp) const;
  uint64_t findDeep(uint64_t key, const Region& region) const;
  Occurrence joinOdd(Occurrence found, uint64_t key) const;
  uint32_t sharedOffsets(const SeedRun& run, const PackedBases& bases, uint64_t place,
                         bool isReversed) const;

  ContigText text_;
  Seeds seeds_{1, 0};
  BucketShape shape_{12, 4};
  uint64_t placeBase_ = 0;
  std::array<Region, kRegions> regions_{};
  ZeroedArray<Bucket> seedBuckets_;
  ZeroedArray<Bucket> deepBuckets_;
  OddKmers odd_;
  std::optional<KmerAnswer> emptyKmer_;  // of k = 0, where all keys are 0
  uint64_t distinctKeys_ = 0;
};

extern SeedIndex* seedIndex;  // null: the index of the run, written by FetchKmers1

}  // namespace velk
