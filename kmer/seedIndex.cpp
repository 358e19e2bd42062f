#include "kmer/seedIndex.h"

#include <bit>

#include "driver/velk.h"

namespace velk {
namespace {

// A bit for each of the offsets [low, high] of a seed in a window.
uint32_t offsetBits(int low, int high) {
  return low > high ? 0 : (~uint32_t{0} >> (31 - (high - low))) << low;
}

}  // namespace

uint64_t SeedIndex::bytes() const {
  uint64_t bytes = sizeof *this;
  forEachArray([&](const auto& array) { bytes += array.size() * sizeof(array[0]); });
  return bytes;
}

void SeedIndex::lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer) {
  text_.lay(scaffoldInfo, scaffoldSum, kmer);
  fixShape(0);
}

// REQUIRES: the text is laid out.
void SeedIndex::fixShape(uint64_t leastWindows) {
  seeds_ = Seeds(text_.windowLength(), std::max(text_.windows(), leastWindows));
  shape_ = BucketShape::forPlacesBelow(placeBase_ + text_.end());
}

bool SeedIndex::isSound() const {
  for (const Level* level : {&seedLevel_, &windowLevel_}) {
    if (level->ranges.size() != kRegions) return false;
    for (const Level::Range& range : level->ranges) {
      const uint64_t buckets = level->buckets.size();
      if (range.size == 0 || range.first > buckets || range.size > buckets - range.first) {
        return false;
      }
    }
  }
  return text_.isSound();
}

std::optional<KmerAnswer> SeedIndex::placeOf(uint64_t key) const {
  if (emptyKmer_) return key == 0 ? emptyKmer_ : std::nullopt;
  const Occurrence found = find(key);
  if (!found.isThere()) return std::nullopt;
  return KmerAnswer{text_.placeOf(found.position), found.isUnique};
}

SeedIndex::LookUp SeedIndex::lookUpOf(uint64_t key) const {
  const int k = seeds_.windowLength();
  // A letter that is no base may set a bit above those of the k-mer. No seed is so large a number.
  if (k < DATA_LEN && key >> LEN_TO_BITLEN * k != 0) return {key, mixed(key), 0, false};
  const int offset = seeds_.offsetIn(key);
  return {key, mixed(seeds_.kindOf(seeds_.merAt(key, offset))), offset, false};
}

SeedIndex::LookUp SeedIndex::begin(uint64_t key) const {
  const LookUp lookUp = lookUpOf(key);
  prefetch(seedLevel_, lookUp.hash);
  return lookUp;
}

SeedIndex::LookUp SeedIndex::beginReversed(const LookUp& lookUp) const {
  return {reversedKey(lookUp.key, seeds_.windowLength()), lookUp.hash,
          seeds_.offsets() - 1 - lookUp.offset, false};
}

void SeedIndex::advance(LookUp& lookUp) const {
  anyPlace(seedLevel_, lookUp.hash, [&](uint64_t place) {
    lookUp.isHeavy = place == kElsewhere;
    if (lookUp.isHeavy) {
      prefetch(windowLevel_, windowHash(lookUp));
    } else {
      const uint64_t position = place - static_cast<uint64_t>(lookUp.offset);
      text_.prefetchRange(position, position + static_cast<uint64_t>(text_.windowLength()));
    }
    return true;
  });
}

Occurrence SeedIndex::end(const LookUp& lookUp) const {
  Occurrence found;
  anyPlace(seedLevel_, lookUp.hash, [&](uint64_t place) {
    if (place == kElsewhere) {
      found = findWindow(lookUp);
      return found.isThere();
    }
    const uint64_t position = place - static_cast<uint64_t>(lookUp.offset);
    if (text_.basesAt(position, seeds_.windowLength()) != lookUp.key) return false;
    if (!text_.isWindow(position)) return false;
    found = {position, !text_.isMarkedRepeated(position)};
    return true;
  });
  return found;
}

// The window in the second level that has the key.
Occurrence SeedIndex::findWindow(const LookUp& lookUp) const {
  Occurrence found;
  anyPlace(windowLevel_, windowHash(lookUp), [&](uint64_t position) {
    if (text_.keyAt(position) != lookUp.key || !text_.isOfContig(position)) return false;
    found = {position, text_.isUnique(position)};
    return true;
  });
  return found;
}

SeedIndex::SeedLookUp SeedIndex::beginSeed(const SeedRun& run, uint64_t unlike) const {
  const uint64_t hash = mixed(run.kind);
  prefetch(seedLevel_, hash);
  return {run, hash, unlike};
}

bool SeedIndex::advanceSeed(const SeedLookUp& lookUp) const {
  // Of m-mers that tie, the reverse complement of a window may have another for its seed.
  if (lookUp.run.isTied) return true;
  return anyPlace(seedLevel_, lookUp.hash, [&](uint64_t place) {
    if (place == lookUp.unlike) return false;
    const auto around = static_cast<uint64_t>(seeds_.offsets()) - 1;
    text_.prefetchRange(place - around, place + static_cast<uint64_t>(text_.windowLength()));
    return true;
  });
}

SeedIndex::SeedVerdict SeedIndex::endSeed(const SeedLookUp& lookUp,
                                          const PackedBases& bases) const {
  SeedVerdict verdict;
  const SeedRun& run = lookUp.run;
  if (run.isTied) return verdict;
  const int length = seeds_.length();
  const uint64_t seed = bases.at(run.at, length);
  const uint64_t reversed = reversedKey(seed, length);
  uint32_t open =
      offsetBits(static_cast<int>(run.at - run.last), static_cast<int>(run.at - run.first));
  anyPlace(seedLevel_, lookUp.hash, [&](uint64_t place) {
    if (place == lookUp.unlike) return false;
    if (place == kElsewhere) {
      open = 0;
      return true;
    }
    const uint64_t there = text_.basesAt(place, length);
    if (there != seed && there != reversed) return false;
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
  const int length = seeds_.length();
  const int before = static_cast<int>(run.at - run.first);  // the run's bases before its seed
  const int behind = seeds_.offsets() - 1 - static_cast<int>(run.at - run.last);
  const auto textBases = [&](uint64_t from, int count) {
    const uint64_t there = text_.basesAt(from, count);
    return isReversed ? reversedKey(there, count) : there;
  };
  // Compared are the bases on either side together with the seed's, which are equal.
  const int left = before + length;
  const int right = length + behind;
  const uint64_t atLeft = isReversed ? place : place - static_cast<uint64_t>(before);
  const uint64_t atRight = isReversed ? place - static_cast<uint64_t>(behind) : place;
  const uint64_t leftDiffers = bases.at(run.first, left) ^ textBases(atLeft, left);
  const uint64_t rightDiffers = bases.at(run.at, right) ^ textBases(atRight, right);
  const int unused = 64 - LEN_TO_BITLEN * right;
  const int equalLeft = std::min(left, std::countr_zero(leftDiffers) / LEN_TO_BITLEN);
  const int equalRight = (std::countl_zero(rightDiffers) - unused) / LEN_TO_BITLEN;
  return offsetBits(seeds_.windowLength() - equalRight, equalLeft - length);
}

}  // namespace velk
