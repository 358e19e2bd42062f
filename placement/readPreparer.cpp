#include "placement/readPreparer.h"

#include <bit>
#include <string_view>

namespace velk {
namespace {

void prefetchLetters(std::string_view letters) {
  constexpr std::size_t kCacheLine = 64;
  if (letters.empty()) return;
  for (std::size_t at = 0; at < letters.size(); at += kCacheLine) prefetchLine(&letters[at]);
  prefetchLine(&letters.back());
}

// Prefetches what an alignment through `window` compares, and the contig's letters there: the base
// checks read them.
void prefetchAlong(const ContigText& text, const PreparedRead& read, const Diagonal& diagonal,
                   std::size_t window) {
  const uint64_t start =
      diagonal.isReversed ? diagonal.positionOf(read.windows - 1) : diagonal.origin;
  const uint64_t length = read.windows + static_cast<uint64_t>(text.windowLength()) - 1;
  text.prefetchRange(start, start + length);
  const std::size_t contig = text.contigOf(diagonal.positionOf(window));
  const uint64_t first = start - text.contigs()[contig].start;  // huge in front of the contig
  const std::string_view letters = text.letters(contig);
  prefetchLetters(letters.substr(first < letters.size() ? first : 0, length));
}

}  // namespace

// Ends a look-up, on both strands, and prefetches along the diagonal.
void ReadPreparer::endLookUp(WindowLookUp& window) const {
  Occurrence found = index_.end(window.lookUp);
  const bool isReversed = !found.isThere();
  if (isReversed) found = index_.end(index_.beginReversed(window.lookUp));
  if (!found.isThere()) return;
  window.diagonal = Diagonal::through(found.position, window.window, isReversed);
  prefetchAlong(index_.text(), *window.read, *window.diagonal, window.window);
}

// Where the seed of windows that do not agree with the text lies on the read's diagonal, if it
// agrees there itself and all of the windows lie on one contig.
uint64_t ReadPreparer::placeOnDiagonal(const PreparedRead& read, const SeedRun& run) const {
  if (!read.alignment.covers(run.first, run.last)) return Occurrence::kAbsent;
  const Diagonal& diagonal = read.alignment.diagonal();
  const int length = index_.seeds().length();
  const uint64_t seed = read.packed.at(run.at, length);
  const auto behind = static_cast<uint64_t>(index_.text().windowLength() - length);
  const uint64_t place = diagonal.positionOf(run.at) + (diagonal.isReversed ? behind : 0);
  const uint64_t there = index_.text().basesAt(place, length);
  const bool agrees = there == (diagonal.isReversed ? reversedKey(seed, length) : seed);
  return agrees ? place : Occurrence::kAbsent;
}

// Begins to look up the seeds of the windows that do not agree with the text.
void ReadPreparer::beginSeeds(PreparedRead& read) {
  const WindowSet& matches = read.alignment.matches();
  for (std::size_t from = matches.firstMissing(0); from < read.windows;) {
    const std::size_t to = matches.firstContained(from);
    index_.seeds().forEachRun(read.packed, from, to, [&](const SeedRun& run) {
      seeds_.push_back({&read, index_.beginSeed(run, placeOnDiagonal(read, run))});
    });
    from = matches.firstMissing(to);
  }
}

// Ends the look-up of a seed: its places rule windows out, or show how the read is aligned.
void ReadPreparer::endSeed(const SeedOfRead& seed) const {
  PreparedRead& read = *seed.read;
  const SeedIndex::SeedVerdict verdict = index_.endSeed(seed.lookUp, read.packed);
  for (uint32_t left = verdict.absent; left != 0; left &= left - 1) {
    const std::size_t window = seed.lookUp.run.at - static_cast<uint64_t>(std::countr_zero(left));
    for (WindowSet& skipped : read.skipped) skipped.insert(window);
  }
  if (!verdict.isFound || read.alignment.isThere()) return;
  read.alignment.align(index_.text(), read.packed,
                       Diagonal::through(verdict.position, verdict.window, verdict.isReversed),
                       verdict.window);
}

// Finds the windows that the index has on neither strand.
void ReadPreparer::findAbsent(std::span<PreparedRead* const> reads) {
  seeds_.clear();
  for (PreparedRead* read : reads) beginSeeds(*read);
  std::erase_if(seeds_, [&](const SeedOfRead& seed) {
    if (index_.advanceSeed(seed.lookUp)) return false;
    const SeedRun& run = seed.lookUp.run;
    for (WindowSet& skipped : seed.read->skipped) skipped.insertRange(run.first, run.last + 1);
    return true;
  });
  for (const SeedOfRead& seed : seeds_) endSeed(seed);
}

// Whether the first window that is walked over is known to be a hit.
bool ReadPreparer::isHitFirst(const PreparedRead& read, bool isReversedFirst) const {
  const std::size_t window = isReversedFirst ? read.windows - 1 : 0;
  return read.isPacked() && read.alignment.agreesAt(window, isReversedFirst) &&
         !index_.text().isMarkedRepeated(read.alignment.diagonal().positionOf(window));
}

void ReadPreparer::pack(std::span<PreparedRead> reads) {
  for (const PreparedRead& read : reads) prefetchLine(read.bases);
  for (const PreparedRead& read : reads) prefetchLetters(*read.bases);
  const auto window = static_cast<std::size_t>(index_.text().windowLength());
  for (PreparedRead& read : reads) {
    const std::string& bases = *read.bases;
    const bool isPacked = index_.hasText() && bases.size() >= window && read.packed.fill(bases);
    read.windows = isPacked ? bases.size() - window + 1 : 0;
    read.alignment.reset(read.windows);
    read.isSifted = false;
    for (WindowSet& skipped : read.skipped) skipped.reset(read.windows);
  }
}

void ReadPreparer::align(std::span<PreparedRead* const> reads) {
  if (!steps_.align) return;
  for (const bool isFirst : {true, false}) {
    lookUps_.clear();
    for (PreparedRead* read : reads) {
      if (!read->isPacked() || read->alignment.isThere()) continue;
      const std::size_t window = isFirst ? 0 : read->windows - 1;
      const uint64_t key = read->packed.at(window, index_.text().windowLength());
      lookUps_.push_back({read, window, index_.begin(key)});
    }
    for (WindowLookUp& window : lookUps_) index_.advance(window.lookUp);
    for (WindowLookUp& window : lookUps_) endLookUp(window);
    for (const auto& [read, window, lookUp, diagonal] : lookUps_) {
      if (diagonal) read->alignment.align(index_.text(), read->packed, *diagonal, window);
    }
  }
}

void ReadPreparer::sift(std::span<PreparedRead* const> reads) {
  if (steps_.sift) findAbsent(reads);
  for (PreparedRead* read : reads) {
    read->isSifted = true;
    const Alignment& alignment = read->alignment;
    if (!steps_.reversed || !alignment.isThere()) continue;
    WindowSet& opposite = read->skipped[alignment.diagonal().isReversed ? 0 : 1];
    alignment.addMarked(index_.text(), Alignment::Mark::kNotReversed, opposite);
  }
}

void ReadPreparer::prepareGroup(std::span<PreparedRead> leads, std::span<PreparedRead> others,
                                bool isReversedFirst) {
  pack(leads);
  pack(others);
  open_.clear();
  mates_.clear();
  for (PreparedRead& lead : leads) open_.push_back(&lead);
  align(open_);
  open_.clear();
  for (std::size_t n = 0; n < leads.size(); ++n) {
    const bool isPair = n < others.size();
    if (isPair && steps_.leads && isHitFirst(leads[n], isReversedFirst)) continue;
    open_.push_back(&leads[n]);
    if (isPair) mates_.push_back(&others[n]);
  }
  align(mates_);
  open_.insert(open_.end(), mates_.begin(), mates_.end());
  sift(open_);
}

void ReadPreparer::complete(PreparedRead& read) {
  PreparedRead* const one = &read;
  align({&one, 1});
  sift({&one, 1});
}

}  // namespace velk
