#include "kmer/seedIndexBuilder.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/contigWindows.h"
#include "kmer/parallel.h"
#include "kmer/rollingKey.h"

namespace velk {

SeedIndexBuilder::SeedIndexBuilder(SeedIndex& index, int threads, uint64_t placeBase)
    : index_(index), text_(index.text_), threads_(static_cast<std::size_t>(std::max(threads, 1))) {
  index_.placeBase_ = placeBase;
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
  threads_ = std::min(threads_, static_cast<std::size_t>(pieces()));
  packContigs();
  addOddWindows();
  makeBuckets();
  insertRuns();
  shrinkBuckets();
  layDeepLevels();
  joinOddKmers();
  settleReversed();
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

// Calls onPiece(from, to) for all pieces of the text, by all threads.
template <class OnPiece>
void SeedIndexBuilder::forEachPiece(OnPiece onPiece) {
  forEachInParallel(threads_, pieces(), [&](std::size_t n) {
    onPiece(n * kPiece, std::min((n + 1) * kPiece, text_.end()));
  });
}

// Calls onContig(number) for the contigs that have a position in [from, to).
template <class OnContig>
void SeedIndexBuilder::forEachContigOf(uint64_t from, uint64_t to, OnContig onContig) const {
  const auto& contigs = text_.contigs();
  for (std::size_t n = text_.contigOf(from); n < contigs.size() && contigs[n].start < to; ++n) {
    onContig(n);
  }
}

void SeedIndexBuilder::packContigs() {
  forEachPiece([&](uint64_t from, uint64_t to) {
    forEachContigOf(from, to, [&](std::size_t n) {
      const uint64_t start = text_.contigs()[n].start;
      const uint64_t end = start + text_.letters(n).size();
      if (std::max(from, start) < std::min(to, end)) {
        packWords(n, std::max(from, start), std::min(to, end));
      }
    });
  });
}

// Packs the letters of a contig at the positions [from, to) into their words.
// REQUIRES: from is a multiple of DATA_LEN.
void SeedIndexBuilder::packWords(std::size_t contig, uint64_t from, uint64_t to) {
  const uint64_t start = text_.contigs()[contig].start;
  const std::string_view letters = text_.letters(contig);
  for (uint64_t at = from; at < to; at += DATA_LEN) {
    const std::string_view next = letters.substr(at - start, DATA_LEN);
    uint64_t word = 0;
    if (next.size() < DATA_LEN || !packBases(next.data(), word)) {
      word = 0;
      for (const char letter : next) {
        const uint8_t code = baseCode(letter);
        word = word << LEN_TO_BITLEN | (code & 3U);
        if (code > 3) text_.noteOddLetter(contig);
      }
      word <<= LEN_TO_BITLEN * (DATA_LEN - next.size());
    }
    text_.setWord(at / DATA_LEN, word);
  }
}

// Adds the windows that hold a letter which is no base to the table of their own.
void SeedIndexBuilder::addOddWindows() {
  const auto length = static_cast<uint64_t>(text_.windowLength());
  for (std::size_t n = 0; n < text_.contigs().size(); ++n) {
    const TextContig& contig = text_.contigs()[n];
    if (contig.hasOddLetters == 0) continue;
    const uint64_t before = contig.firstWindow - contig.start;
    const std::string_view letters = text_.letters(n);
    RollingKey key(letters.substr(before), text_.windowLength());
    uint64_t odd = 0;  // windows before this one, counted in letters, hold an odd letter
    for (uint64_t i = before; i < before + length - 1; ++i) {
      if (baseCode(letters[i]) > 3) odd = i + 1;
    }
    for (uint64_t w = before; w < before + contig.windows; ++w) {
      if (w != before) key.advance();
      if (baseCode(letters[w + length - 1]) > 3) odd = w + length;
      if (w >= odd) continue;
      text_.markRange(contig.start + w, contig.start + w + 1);
      index_.odd_.add(key.key(), contig.start + w);
    }
  }
  index_.odd_.settle();
}

// Calls onRun(const SeedRun&) for the runs that begin in [from, to), in text order.
template <class OnRun>
void SeedIndexBuilder::forEachRunOf(uint64_t from, uint64_t to, OnRun onRun) const {
  const auto reach = static_cast<uint64_t>(index_.seeds_.offsets());  // windows of a run, at most
  const auto isOdd = [&](uint64_t window) {
    return text_.isMarkedRepeated(window) && !text_.isWindow(window);
  };
  const auto keep = [&](const SeedRun& run) {
    if (run.first >= from && run.first < to) onRun(run);
  };
  forEachContigOf(from, to, [&](std::size_t n) {
    const TextContig& contig = text_.contigs()[n];
    // One window more in front tells whether a run begins with the piece, or before it.
    uint64_t window = std::max(contig.firstWindow, from == 0 ? 0 : from - 1);
    const uint64_t end = std::min(contig.endWindow(), to + reach);
    while (window < end) {
      uint64_t stretchEnd = end;
      if (contig.hasOddLetters != 0) {
        while (window < end && isOdd(window)) ++window;
        stretchEnd = window;
        while (stretchEnd < end && !isOdd(stretchEnd)) ++stretchEnd;
      }
      if (window < stretchEnd) index_.seeds_.forEachRun(text_, window, stretchEnd, keep);
      window = stretchEnd;
    }
  });
}

void SeedIndexBuilder::makeBuckets() {
  std::vector<uint64_t> counts(SeedIndex::kRegions);
  forEachPiece([&](uint64_t from, uint64_t to) {
    std::array<uint64_t, SeedIndex::kRegions> ofPiece{};
    uint64_t kind = 0;
    unsigned streak = 0;  // runs of this kind, one after the other
    forEachRunOf(from, to, [&](const SeedRun& run) {
      streak = run.kind == kind ? streak + 1 : 1;
      kind = run.kind;
      // No more places of a kind have room.
      if (streak <= SeedIndex::kLongestChain) ++ofPiece[SeedIndex::regionOf(mixed(kind))];
    });
    for (std::size_t r = 0; r < ofPiece.size(); ++r) {
      __atomic_fetch_add(&counts[r], ofPiece[r], __ATOMIC_RELAXED);
    }
  });
  regions_.resize(SeedIndex::kRegions);
  makeBuckets(counts);
}

// Makes empty buckets for so many places in each region.
void SeedIndexBuilder::makeBuckets(const std::vector<uint64_t>& places) {
  uint64_t buckets = 0;
  for (std::size_t r = 0; r < places.size(); ++r) {
    index_.regions_[r] = {buckets, bucketsFor(places[r]), 0, 0};
    buckets += index_.regions_[r].seedBuckets;
  }
  index_.seedBuckets_.make(buckets);
  for (std::size_t r = 0; r < regions_.size(); ++r) {
    const SeedIndex::Region& region = index_.regions_[r];
    regions_[r].seeds = {&index_.seedBuckets_[region.firstSeed], region.seedBuckets, index_.shape_};
  }
}

// A run adds no place when all its windows are known: repeats leave buckets empty.
void SeedIndexBuilder::shrinkBuckets() {
  std::vector<uint64_t> places;
  uint64_t needed = 0;
  for (const RegionBuild& region : regions_) {
    places.push_back(region.seedPlaces);
    needed += bucketsFor(region.seedPlaces);
  }
  const auto there = static_cast<double>(index_.seedBuckets_.size());
  if (static_cast<double>(needed) > kWorthKeeping * there) return;
  const auto old = index_.regions_;
  const ZeroedArray<Bucket> buckets = std::move(index_.seedBuckets_);
  makeBuckets(places);
  forEachInParallel(threads_, regions_.size(), [&](std::size_t r) {
    moveSeeds({&buckets[old[r].firstSeed], old[r].seedBuckets, index_.shape_}, regions_[r].seeds);
  });
}

// Adds all places of a range to another, those of a hash in their order.
void SeedIndexBuilder::moveSeeds(ConstBucketRange from, BucketRange to) const {
  // No place lies beyond a bucket that is not full, seen from its home; so one begins behind it.
  const Bucket* last = from.first;
  while (last->isFull(from.shape)) last = from.next(last);
  const Bucket* bucket = last;
  do {
    bucket = from.next(bucket);
    for (unsigned i = 0; i < bucket->count(); ++i) {
      const uint64_t place = bucket->place(i, from.shape);
      Bucket* const added = to.add(place, mixed(kindAt(place - index_.placeBase_)));
      if (bucket->isHeavy(i)) added->setHeavy(added->count() - 1);
    }
  } while (bucket != last);
}

void SeedIndexBuilder::insertRuns() {
  std::vector<SortedRuns> sorted;
  for (uint64_t first = 0; first < pieces(); first += kPiecesOfRound) {
    sorted.resize(std::min<std::size_t>(kPiecesOfRound, pieces() - first));
    forEachInParallel(threads_, sorted.size(), [&](std::size_t n) {
      const uint64_t from = (first + n) * kPiece;
      sorted[n] = sortedRuns(from, std::min(from + kPiece, text_.end()));
    });
    forEachInParallel(threads_, regions_.size(), [&](std::size_t r) { insertInto(r, sorted); });
  }
  for (const RegionBuild& region : regions_) index_.distinctKeys_ += region.distinctKeys;
}

SeedIndexBuilder::SortedRuns SeedIndexBuilder::sortedRuns(uint64_t from, uint64_t to) const {
  std::vector<Run> runs;
  SortedRuns sorted;
  sorted.starts.fill(0);
  forEachRunOf(from, to, [&](const SeedRun& run) {
    const uint64_t hash = mixed(run.kind);
    runs.push_back({hash, run.at & kMostPositions, (run.at - run.first) & 31U,
                    (run.at - run.last) & 31U, run.isTied ? 1U : 0U});
    ++sorted.starts[SeedIndex::regionOf(hash) + 1];
  });
  for (std::size_t r = 0; r < SeedIndex::kRegions; ++r) sorted.starts[r + 1] += sorted.starts[r];
  auto next = sorted.starts;
  sorted.runs.resize(runs.size());
  for (const Run& run : runs) sorted.runs[next[SeedIndex::regionOf(run.hash)]++] = run;
  return sorted;
}

void SeedIndexBuilder::insertInto(std::size_t region, const std::vector<SortedRuns>& pieces) {
  constexpr std::size_t kFar = 16;  // runs between a bucket's prefetch and its use
  constexpr std::size_t kNear = 8;  // and between the text's prefetch and its use
  RegionBuild& filled = regions_[region];
  std::vector<Run> runs;
  for (const SortedRuns& piece : pieces) {
    runs.insert(runs.end(), piece.runs.begin() + piece.starts[region],
                piece.runs.begin() + piece.starts[region + 1]);
  }
  for (std::size_t n = 0; n < runs.size() + kFar; ++n) {
    if (n < runs.size()) prefetchLine(filled.seeds.home(runs[n].hash));
    if (n >= kNear && n - kNear < runs.size()) prefetchTextOf(filled, runs[n - kNear]);
    if (n >= kFar) insert(filled, runs[n - kFar]);
  }
}

void SeedIndexBuilder::prefetchTextOf(const RegionBuild& region, const Run& run) const {
  const Bucket& bucket = *region.seeds.home(run.hash);
  const unsigned hits = bucket.hits(run.hash);
  if (hits == 0) return;
  const auto i = static_cast<unsigned>(std::countr_zero(hits));
  text_.prefetch(bucket.place(i, index_.shape_) - index_.placeBase_);
}

// Adds the place of a run's seed, if it has a window that is new, and marks those that are not.
void SeedIndexBuilder::insert(RegionBuild& region, const Run& run) {
  const int length = index_.seeds_.length();
  const auto around = static_cast<uint64_t>(index_.seeds_.offsets()) - 1;
  const uint64_t seed = text_.basesAt(run.at, length);
  const uint64_t reversed = reversedKey(seed, length);
  if (run.isTied != 0) markMaybeReversed(run.first(), run.last());
  uint32_t open = (~uint32_t{0} >> (31 - (run.before - run.least))) << run.least;
  unsigned chain = 0;
  bool isHeavy = false;
  const bool isDone =
      region.seeds.anyHit(run.hash, [&](const Bucket& bucket, unsigned i, uint64_t place) {
        place -= index_.placeBase_;
        const uint64_t there = text_.basesAt(place, length);
        if (there != seed && there != reversed) return false;
        isHeavy = bucket.isHeavy(i);
        if (isHeavy) return true;
        ++chain;
        if (there == reversed) {
          markMaybeReversed(run.first(), run.last());
          markMaybeReversed(place - around, place);
          return false;
        }
        open = markEqual(run, place, open);
        return open == 0;
      });
  // All its windows are marked as repeated, so settleReversed looks them up: no place is needed.
  if (isDone && !isHeavy) return;
  if (isHeavy || chain >= SeedIndex::kLongestChain) {
    if (!isHeavy) makeHeavy(region, std::min(seed, reversed), run.hash);
    markMaybeReversed(run.first(), run.last());
    insertDeep(region, run.first(), run.last() + 1);
    return;
  }
  region.seeds.add(run.at + index_.placeBase_, run.hash);
  ++region.seedPlaces;
  region.distinctKeys += static_cast<uint64_t>(std::popcount(open));
}

// Marks the windows of the run that are equal to windows around the place of an equal seed, and
// these. Returns the offsets of the seed in `open` whose windows are not.
uint32_t SeedIndexBuilder::markEqual(const Run& run, uint64_t place, uint32_t open) {
  const int length = index_.seeds_.length();
  const int around = index_.seeds_.offsets() - 1;
  int equalBefore = 0;
  int equalBehind = 0;
  if (around != 0) {
    const auto count = static_cast<uint64_t>(around);
    const auto behind = static_cast<uint64_t>(length);
    const uint64_t left =
        text_.basesAt(run.at - count, around) ^ text_.basesAt(place - count, around);
    const uint64_t right =
        text_.basesAt(run.at + behind, around) ^ text_.basesAt(place + behind, around);
    const int unused = 64 - LEN_TO_BITLEN * around;
    equalBefore = left == 0 ? around : std::countr_zero(left) / LEN_TO_BITLEN;
    equalBehind = right == 0 ? around : (std::countl_zero(right) - unused) / LEN_TO_BITLEN;
  }
  for (int o = std::max(around - equalBehind, static_cast<int>(run.least));
       o <= std::min(equalBefore, static_cast<int>(run.before)); ++o) {
    const auto offset = static_cast<uint64_t>(o);
    const uint64_t window = place - offset;
    // What is no window was marked before any thread began; other marks do not matter here.
    if (text_.isMarkedRepeated(window) && !text_.isWindow(window)) continue;
    text_.markRepeated(window);
    text_.markRepeated(run.at - offset);
    open &= ~(uint32_t{1} << o);
  }
  return open;
}

// Marks the windows [from, last]; settleReversed takes the marks back where they are wrong.
void SeedIndexBuilder::markMaybeReversed(uint64_t from, uint64_t last) {
  for (uint64_t window = from; window <= last; ++window) text_.markReversed(window);
}

// Takes the windows of all places of a seed into the second level; the first place says so.
void SeedIndexBuilder::makeHeavy(RegionBuild& region, uint64_t kind, uint64_t hash) {
  const auto around = static_cast<uint64_t>(index_.seeds_.offsets()) - 1;
  const uint64_t before = region.distinctKeys;
  bool isFirst = true;
  region.seeds.anyHit(hash, [&](Bucket& bucket, unsigned i, uint64_t place) {
    place -= index_.placeBase_;
    if (kindAt(place) != kind) return false;
    if (std::exchange(isFirst, false)) bucket.setHeavy(i);
    markMaybeReversed(place - around, place);
    for (uint64_t o = around + 1; o-- > 0;) {
      const uint64_t window = place - o;
      const bool isOfSeed =
          text_.isWindow(window) && index_.seeds_.offsetIn(keyAt(window)) == static_cast<int>(o);
      if (isOfSeed) insertDeep(region, window, window + 1);
    }
    return false;
  });
  region.distinctKeys = before;  // they had been counted
}

// Inserts the windows [from, to) into the second level, or marks them. At most as many as a run
// has.
void SeedIndexBuilder::insertDeep(RegionBuild& region, uint64_t from, uint64_t to) {
  if (!region.deep.empty()) {
    for (uint64_t window = from; window < to; ++window) {
      prefetchLine(deepRange(region).home(SeedIndex::deepHashOf(keyAt(window))));
    }
    for (uint64_t window = from; window < to; ++window) {
      const uint64_t hash = SeedIndex::deepHashOf(keyAt(window));
      const Bucket& bucket = *deepRange(region).home(hash);
      const unsigned hits = bucket.hits(hash);
      if (hits == 0) continue;
      const auto i = static_cast<unsigned>(std::countr_zero(hits));
      text_.prefetch(bucket.place(i, index_.shape_) - index_.placeBase_);
    }
  }
  for (uint64_t window = from; window < to; ++window) {
    if (addDeep(region, window)) ++region.distinctKeys;
  }
}

// Returns whether the window's key is new.
bool SeedIndexBuilder::addDeep(RegionBuild& region, uint64_t position) {
  const uint64_t key = keyAt(position);
  const uint64_t hash = SeedIndex::deepHashOf(key);
  const double most =
      kDeepLoad * static_cast<double>(index_.shape_.room) * static_cast<double>(region.deep.size());
  if (static_cast<double>(region.deepPlaces + 1) > most) growDeep(region);
  const bool isKnown = deepRange(region).anyHit(hash, [&](const Bucket&, unsigned, uint64_t place) {
    place -= index_.placeBase_;
    if (place == position) return true;
    if (keyAt(place) != key) return false;
    text_.markRepeated(place);
    text_.markRepeated(position);
    return true;
  });
  if (isKnown) return false;
  deepRange(region).add(position + index_.placeBase_, hash);
  ++region.deepPlaces;
  return true;
}

void SeedIndexBuilder::growDeep(RegionBuild& region) {
  std::vector<Bucket> old(region.deep.size() + region.deep.size() / 2 + 1);
  old.swap(region.deep);
  const BucketRange range = deepRange(region);
  for (const Bucket& bucket : old) {
    for (unsigned i = 0; i < bucket.count(); ++i) {
      const uint64_t place = bucket.place(i, index_.shape_);
      range.add(place, SeedIndex::deepHashOf(keyAt(place - index_.placeBase_)));
    }
  }
}

void SeedIndexBuilder::layDeepLevels() {
  uint64_t buckets = 0;
  for (std::size_t r = 0; r < regions_.size(); ++r) {
    index_.regions_[r].firstDeep = buckets;
    index_.regions_[r].deepBuckets = regions_[r].deep.size();
    buckets += regions_[r].deep.size();
  }
  if (buckets == 0) return;
  index_.deepBuckets_.make(buckets);
  for (std::size_t r = 0; r < regions_.size(); ++r) {
    const std::vector<Bucket> deep = std::exchange(regions_[r].deep, {});
    std::copy(deep.begin(), deep.end(), &index_.deepBuckets_[index_.regions_[r].firstDeep]);
  }
}

void SeedIndexBuilder::joinOddKmers() {
  constexpr std::size_t kSlots = 4096;  // of the table, that one thread takes
  const std::span<OddKmers::Entry> slots = index_.odd_.slots();
  forEachInParallel(threads_, (slots.size() + kSlots - 1) / kSlots, [&](std::size_t n) {
    uint64_t distinct = 0;
    for (OddKmers::Entry& entry :
         slots.subspan(n * kSlots).first(std::min(kSlots, slots.size() - n * kSlots))) {
      if (entry.place != 0 && joinOddKmer(entry)) ++distinct;
    }
    __atomic_fetch_add(&index_.distinctKeys_, distinct, __ATOMIC_RELAXED);
  });
}

// Returns whether no ordinary window has the key of the entry.
bool SeedIndexBuilder::joinOddKmer(OddKmers::Entry& entry) {
  if (!index_.isOrdinary(entry.key)) return true;
  const auto lookUp = index_.begin(entry.key);
  const std::size_t region = SeedIndex::regionOf(lookUp.hash);
  regions_[region].seeds.home(lookUp.hash)->setOdd();
  const uint64_t reversed = reversedKey(entry.key, text_.windowLength());
  const Occurrence other = index_.findOrdinary(index_.begin(reversed));
  if (other.isThere()) text_.markReversed(other.position);
  const Occurrence same = index_.findOrdinary(lookUp);
  if (!same.isThere()) return true;
  text_.markRepeated(same.position);
  entry.setRepeated();
  return false;
}

// Leaves the marks of windows whose reverse complement is in the index, and of no others.
void SeedIndexBuilder::settleReversed() {
  forEachPiece([&](uint64_t from, uint64_t to) {
    settleReversed(from / ContigText::kMarks, (to + ContigText::kMarks - 1) / ContigText::kMarks);
  });
}

void SeedIndexBuilder::settleReversed(uint64_t fromWord, uint64_t toWord) {
  constexpr std::size_t kAtOnce = 32;  // look-ups
  struct Pending {
    uint64_t position;
    SeedIndex::LookUp lookUp;
  };
  std::vector<uint64_t> marks(toWord - fromWord);
  std::array<Pending, kAtOnce> pending;
  std::size_t count = 0;
  const auto flush = [&] {
    for (std::size_t i = 0; i < count; ++i) index_.advance(pending[i].lookUp);
    for (std::size_t i = 0; i < count; ++i) {
      const uint64_t p = pending[i].position;
      if (!index_.end(pending[i].lookUp).isThere()) continue;
      marks[p / ContigText::kMarks - fromWord] |= uint64_t{1} << p % ContigText::kMarks;
    }
    count = 0;
  };
  for (uint64_t n = fromWord; n < toWord; ++n) {
    const uint64_t repeated = text_.repeatedMarks(n);
    for (uint64_t left = repeated | text_.reversedMarks(n); left != 0; left &= left - 1) {
      const auto bit = static_cast<uint64_t>(std::countr_zero(left));
      const uint64_t p = n * ContigText::kMarks + bit;
      if ((repeated >> bit & 1U) != 0 && !text_.isWindow(p)) continue;
      pending[count++] = {p, index_.begin(reversedKey(keyAt(p), text_.windowLength()))};
      if (count == kAtOnce) flush();
    }
  }
  flush();
  for (uint64_t n = fromWord; n < toWord; ++n) text_.setReversedMarks(n, marks[n - fromWord]);
}

}  // namespace velk
