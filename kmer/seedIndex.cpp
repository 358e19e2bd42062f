#include "kmer/seedIndex.h"

#include <bit>

namespace velk {

void SeedIndex::lay(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum, int kmer,
                    uint64_t leastWindows) {
  text_.lay(scaffoldInfo, scaffoldSum, kmer);
  seeds_ = Seeds(text_.windowLength(), std::max(text_.windows(), leastWindows));
  shape_ = BucketShape::forPlacesBelow(placeBase_ + text_.end());
}

std::optional<KmerAnswer> SeedIndex::placeOf(uint64_t key) const {
  if (emptyKmer_) return key == 0 ? emptyKmer_ : std::nullopt;
  const Occurrence found = find(key);
  if (!found.isThere()) return std::nullopt;
  return KmerAnswer{text_.placeOf(found.position), found.isUnique};
}

Occurrence SeedIndex::find(uint64_t key) const {
  Occurrence found;
  if (!hasText()) return found;
  const Seeds::KeySeed seed = seeds_.seedOf(key);
  anyPlace(seedLevel_, seed.hash, [&](uint64_t place) {
    if (place == kElsewhere) {
      return anyPlace(windowLevel_, windowHash(seed.hash, key), [&](uint64_t position) {
        if (text_.keyAt(position) != key || !text_.isOfContig(position)) return false;
        found = {position, text_.isUnique(position)};
        return true;
      });
    }
    const uint64_t position = place - static_cast<uint64_t>(seed.offset);
    if (text_.basesAt(position, text_.windowLength()) != key) return false;
    if (!text_.isWindow(position)) return false;
    found = {position, !text_.isMarkedRepeated(position)};
    return true;
  });
  return found;
}

bool SeedIndex::prefetchText(const SeedRun& run) const {
  return run.isTied || anyPlace(seedLevel_, run.hash, [&](uint64_t place) {
           const auto around = static_cast<uint64_t>(seeds_.offsets()) - 1;
           text_.prefetchRange(place - around, place + static_cast<uint64_t>(text_.windowLength()));
           return true;
         });
}

SeedIndex::SeedVerdict SeedIndex::verdictOn(const SeedRun& run, const PackedBases& bases) const {
  SeedVerdict verdict;
  // With a tie, a window and its reverse complement may have different seeds.
  if (run.isTied) return verdict;
  const int length = seeds_.length();
  const uint64_t seed = bases.at(run.at, length);
  const uint64_t reversed = reversedKey(seed, length);
  verdict.absent = run.windowMask();
  anyPlace(seedLevel_, run.hash, [&](uint64_t place) {
    if (place == kElsewhere) {
      verdict.absent = 0;
      return true;
    }
    const uint64_t there = text_.basesAt(place, length);
    if (there != seed && there != reversed) return false;
    const bool isReversed = there != seed;
    const auto before = static_cast<uint64_t>(isReversed ? seeds_.offsets() - 1 : 0);
    const Diagonal diagonal = Diagonal::through(place - before, run.at, isReversed);
    const auto [from, to] = windowsUnder(diagonal, run, bases);
    if (from == to) return false;
    verdict.absent &= ~(((uint64_t{1} << (to - from)) - 1) << (from - run.first));
    if (!verdict.diagonal && text_.isWindow(diagonal.positionOf(from))) {
      verdict.diagonal = diagonal;
      verdict.window = from;
    }
    return verdict.absent == 0;
  });
  return verdict;
}

// The windows [first, second) of a run that agree with the text on a diagonal. REQUIRES: the seed
// does.
std::pair<uint64_t, uint64_t> SeedIndex::windowsUnder(const Diagonal& diagonal, const SeedRun& run,
                                                      const PackedBases& bases) const {
  // Compares the bases on either side of the seed, and with them the seed's, which are equal.
  const auto differing = [&](uint64_t from, int count) {
    return bases.at(from, count) ^ text_.basesUnder(diagonal, from, count);
  };
  const auto k = static_cast<uint64_t>(text_.windowLength());
  const uint64_t seedEnd = run.at + static_cast<uint64_t>(seeds_.length());
  const auto left = static_cast<int>(seedEnd - run.first);
  const auto right = static_cast<int>(run.last + k - run.at);
  const int equalLeft = std::countr_zero(differing(run.first, left)) / LEN_TO_BITLEN;
  const int equalRight =
      std::countl_zero(differing(run.at, right) << (64 - LEN_TO_BITLEN * right)) / LEN_TO_BITLEN;
  const uint64_t from = seedEnd - static_cast<uint64_t>(std::min(left, equalLeft));
  const uint64_t end = run.at + static_cast<uint64_t>(std::min(right, equalRight));
  return {from, std::max(from + k, end + 1) - k};
}

}  // namespace velk
