#include "kmer/seedIndex.h"

#include <algorithm>
#include <bit>
#include <new>

#include "driver/velk.h"
#include "kmer/seedIndexBuilder.h"

namespace velk {
namespace {

// A bit for each of the offsets [low, high] of a seed in a window.
uint32_t offsetBits(int low, int high) {
  return low > high ? 0 : (~uint32_t{0} >> (31 - (high - low))) << low;
}

}  // namespace

bool SeedIndex::build(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer, int threads,
                      uint64_t placeBase, uint64_t leastWindows) {
  try {
    SeedIndexBuilder(*this, threads, placeBase)
        .build(scaffoldInfo, scaffoldSum, kmer, leastWindows);
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

uint64_t SeedIndex::bytes() const {
  return text_.bytes() + (seedBuckets_.size() + deepBuckets_.size()) * sizeof(Bucket) +
         odd_.bytes() + sizeof *this;
}

bool SeedIndex::isOrdinary(uint64_t key) const {
  const int k = seeds_.windowLength();
  return k == DATA_LEN || key >> (LEN_TO_BITLEN * k) == 0;
}

std::optional<KmerAnswer> SeedIndex::placeOf(uint64_t key) const {
  if (emptyKmer_) return key == 0 ? emptyKmer_ : std::nullopt;
  const Occurrence found = find(key);
  if (!found.isThere()) return std::nullopt;
  return KmerAnswer{text_.placeOf(found.position), found.isUnique};
}

Occurrence SeedIndex::find(uint64_t key) const {
  if (!hasText()) return {};
  if (!isOrdinary(key)) return joinOdd({}, key);
  return end(begin(key));
}

SeedIndex::LookUp SeedIndex::begin(uint64_t key) const {
  const int offset = seeds_.offsetIn(key);
  const uint64_t hash = mixed(seeds_.kindOf(seeds_.merAt(key, offset)));
  prefetchLine(seedRange(hash).home(hash));
  return {key, hash, offset, false};
}

SeedIndex::LookUp SeedIndex::beginReversed(const LookUp& lookUp) const {
  return {reversedKey(lookUp.key, seeds_.windowLength()), lookUp.hash,
          seeds_.offsets() - 1 - lookUp.offset, false};
}

void SeedIndex::advance(LookUp& lookUp) const {
  seedRange(lookUp.hash).anyHit(lookUp.hash, [&](const Bucket& bucket, unsigned i, uint64_t place) {
    lookUp.isHeavy = bucket.isHeavy(i);
    if (lookUp.isHeavy) {
      const Region& region = regions_[regionOf(lookUp.hash)];
      const uint64_t hash = deepHashOf(lookUp.key);
      prefetchLine(deepRange(region).home(hash));
    } else {
      text_.prefetch(place - placeBase_ - static_cast<uint64_t>(lookUp.offset));
    }
    return true;
  });
}

Occurrence SeedIndex::end(const LookUp& lookUp) const {
  const Occurrence found = findOrdinary(lookUp);
  const bool mayBeOdd = seedRange(lookUp.hash).home(lookUp.hash)->hasOdd();
  return mayBeOdd ? joinOdd(found, lookUp.key) : found;
}

Occurrence SeedIndex::findOrdinary(const LookUp& lookUp) const {
  Occurrence found;
  const auto isAt = [&](uint64_t position) {
    if (text_.basesAt(position, seeds_.windowLength()) != lookUp.key) return false;
    const bool isMarked = text_.isMarkedRepeated(position);
    if (isMarked && !text_.isWindow(position)) return false;
    found = {position, !isMarked};
    return true;
  };
  seedRange(lookUp.hash).anyHit(lookUp.hash, [&](const Bucket& bucket, unsigned i, uint64_t place) {
    if (!bucket.isHeavy(i)) {
      return isAt(place - placeBase_ - static_cast<uint64_t>(lookUp.offset));
    }
    const uint64_t position = findDeep(lookUp.key, regions_[regionOf(lookUp.hash)]);
    if (position == Occurrence::kAbsent) return false;
    found = {position, !text_.isMarkedRepeated(position)};
    return true;
  });
  return found;
}

uint64_t SeedIndex::findDeep(uint64_t key, const Region& region) const {
  uint64_t found = Occurrence::kAbsent;
  const uint64_t hash = deepHashOf(key);
  deepRange(region).anyHit(hash, [&](const Bucket&, unsigned, uint64_t place) {
    if (text_.basesAt(place - placeBase_, seeds_.windowLength()) != key) return false;
    found = place - placeBase_;
    return true;
  });
  return found;
}

Occurrence SeedIndex::joinOdd(Occurrence found, uint64_t key) const {
  if (odd_.isEmpty()) return found;
  const OddKmers::Entry* const entry = odd_.find(key);
  if (entry == nullptr) return found;
  if (!found.isThere()) return {entry->position(), !entry->isRepeated()};
  return {std::min(found.position, entry->position()), false};
}

SeedIndex::SeedLookUp SeedIndex::beginSeed(const SeedRun& run, uint64_t unlike) const {
  const uint64_t hash = mixed(run.kind);
  prefetchLine(seedRange(hash).home(hash));
  return {run, hash, unlike};
}

bool SeedIndex::advanceSeed(const SeedLookUp& lookUp) const {
  const auto range = seedRange(lookUp.hash);
  // Of m-mers that tie, the reverse complement of a window may have another for its seed.
  if (lookUp.run.isTied || range.home(lookUp.hash)->hasOdd()) return true;
  return range.anyHit(lookUp.hash, [&](const Bucket& bucket, unsigned i, uint64_t place) {
    const auto around = static_cast<uint64_t>(seeds_.offsets()) - 1;
    place -= placeBase_;
    if (place == lookUp.unlike && !bucket.isHeavy(i)) return false;
    text_.prefetchBetween(place - around, place + static_cast<uint64_t>(text_.windowLength()) - 1);
    return true;
  });
}

SeedIndex::SeedVerdict SeedIndex::endSeed(const SeedLookUp& lookUp,
                                          const PackedBases& bases) const {
  SeedVerdict verdict;
  const SeedRun& run = lookUp.run;
  const auto range = seedRange(lookUp.hash);
  if (run.isTied || range.home(lookUp.hash)->hasOdd()) return verdict;
  const int length = seeds_.length();
  const uint64_t seed = bases.at(run.at, length);
  const uint64_t reversed = reversedKey(seed, length);
  const auto high = static_cast<int>(run.at - run.first);
  const auto low = static_cast<int>(run.at - run.last);
  uint32_t open = offsetBits(low, high);
  range.anyHit(lookUp.hash, [&](const Bucket& bucket, unsigned i, uint64_t place) {
    place -= placeBase_;
    if (place == lookUp.unlike && !bucket.isHeavy(i)) return false;
    const uint64_t there = text_.basesAt(place, length);
    if (there != seed && there != reversed) return false;
    if (bucket.isHeavy(i)) {
      open = 0;
      return true;
    }
    const uint32_t shared = open & sharedOffsets(run, bases, place, there != seed);
    open &= ~shared;
    if (shared != 0 && !verdict.isFound) {
      const auto offset = static_cast<uint64_t>(std::countr_zero(shared));
      const uint64_t before =
          there == seed ? offset : static_cast<uint64_t>(seeds_.offsets()) - 1 - offset;
      if (text_.isWindow(place - before)) {
        verdict = {0, true, there != seed, run.at - offset, place - before};
      }
    }
    return open == 0;
  });
  verdict.absent = open;
  return verdict;
}

// The offsets of the seed at which a window of the run is, or is the reverse complement of, what
// lies around the place of the seed in the text.
uint32_t SeedIndex::sharedOffsets(const SeedRun& run, const PackedBases& bases, uint64_t place,
                                  bool isReversed) const {
  const auto length = static_cast<uint64_t>(seeds_.length());
  const int around = seeds_.offsets() - 1;
  const int before = static_cast<int>(run.at - run.first);
  const int behind = around - static_cast<int>(run.at - run.last);
  int equalBefore = 0;
  int equalBehind = 0;
  if (before != 0) {
    const auto count = static_cast<uint64_t>(before);
    const uint64_t there = isReversed ? reversedKey(text_.basesAt(place + length, before), before)
                                      : text_.basesAt(place - count, before);
    const uint64_t difference = bases.at(run.at - count, before) ^ there;
    equalBefore = difference == 0 ? before : std::countr_zero(difference) / LEN_TO_BITLEN;
  }
  if (behind != 0) {
    const auto count = static_cast<uint64_t>(behind);
    const uint64_t there = isReversed ? reversedKey(text_.basesAt(place - count, behind), behind)
                                      : text_.basesAt(place + length, behind);
    const uint64_t difference = bases.at(run.at + length, behind) ^ there;
    const int unused = 64 - LEN_TO_BITLEN * behind;
    equalBehind =
        difference == 0 ? behind : (std::countl_zero(difference) - unused) / LEN_TO_BITLEN;
  }
  return offsetBits(around - equalBehind, equalBefore);
}

}  // namespace velk
