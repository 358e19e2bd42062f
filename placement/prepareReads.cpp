#include "placement/prepareReads.h"

#include <bit>
#include <optional>
#include <string_view>
#include <vector>

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

// A window of a read, being looked up, and the diagonal that it is on, if any.
struct WindowLookUp {
  PreparedRead* read;
  std::size_t window;
  SeedIndex::LookUp lookUp;
  std::optional<Diagonal> diagonal{};
};

// Ends a look-up, on both strands, and prefetches along the diagonal.
void endLookUp(const SeedIndex& index, WindowLookUp& window) {
  Occurrence found = index.end(window.lookUp);
  const bool isReversed = !found.isThere();
  if (isReversed) found = index.end(index.beginReversed(window.lookUp));
  if (!found.isThere()) return;
  window.diagonal = Diagonal::through(found.position, window.window, isReversed);
  prefetchAlong(index.text(), *window.read, *window.diagonal, window.window);
}

// A seed of a read, being looked up.
struct SeedOfRead {
  PreparedRead* read;
  SeedIndex::SeedLookUp lookUp;
};

// Begins to look up the seeds of the windows that do not agree with the text.
void beginSeeds(const SeedIndex& index, PreparedRead& read, std::vector<SeedOfRead>& seeds) {
  const WindowSet& matches = read.alignment.matches();
  for (std::size_t from = matches.firstMissing(0); from < read.windows;) {
    const std::size_t to = matches.firstContained(from);
    index.seeds().forEachRun(read.packed, from, to, [&](const SeedRun& run) {
      seeds.push_back({&read, index.beginSeed(run)});
    });
    from = matches.firstMissing(to);
  }
}

// Ends the look-up of a seed: its places rule windows out, or show how the read is aligned.
void endSeed(const SeedIndex& index, PreparedRead& read, const SeedIndex::SeedLookUp& seed) {
  const SeedIndex::SeedVerdict verdict = index.endSeed(seed, read.packed);
  for (uint32_t left = verdict.absent; left != 0; left &= left - 1) {
    const std::size_t window = seed.run.at - static_cast<uint64_t>(std::countr_zero(left));
    for (WindowSet& skipped : read.skipped) skipped.insert(window);
  }
  if (!verdict.isFound || read.alignment.isThere()) return;
  read.alignment.align(index.text(), read.packed,
                       Diagonal::through(verdict.position, verdict.window, verdict.isReversed),
                       verdict.window);
}

// Finds the windows that the index has on neither strand.
void findAbsent(const SeedIndex& index, std::span<PreparedRead* const> reads) {
  std::vector<SeedOfRead> seeds;
  seeds.reserve(8 * reads.size());  // mostly enough
  for (PreparedRead* read : reads) beginSeeds(index, *read, seeds);
  std::erase_if(seeds, [&](const SeedOfRead& seed) {
    if (index.advanceSeed(seed.lookUp)) return false;
    const SeedRun& run = seed.lookUp.run;
    for (WindowSet& skipped : seed.read->skipped) skipped.insertRange(run.first, run.last + 1);
    return true;
  });
  for (const SeedOfRead& seed : seeds) endSeed(index, *seed.read, seed.lookUp);
}

// Whether the first window that is walked over is known to be a hit.
bool isHitFirst(const SeedIndex& index, const PreparedRead& read, bool isReversedFirst) {
  const std::size_t window = isReversedFirst ? read.windows - 1 : 0;
  return read.isPacked() && read.alignment.agreesAt(window, isReversedFirst) &&
         !index.text().isMarkedRepeated(read.alignment.diagonal().positionOf(window));
}

}  // namespace

void packReads(const SeedIndex& index, std::span<PreparedRead> reads) {
  for (const PreparedRead& read : reads) prefetchLine(read.bases);
  for (const PreparedRead& read : reads) prefetchLetters(*read.bases);
  const auto window = static_cast<std::size_t>(index.text().windowLength());
  for (PreparedRead& read : reads) {
    const std::string& bases = *read.bases;
    const bool isPacked = index.hasText() && bases.size() >= window && read.packed.fill(bases);
    read.windows = isPacked ? bases.size() - window + 1 : 0;
    read.alignment.reset(read.windows);
    read.isSifted = false;
    for (WindowSet& skipped : read.skipped) skipped.reset(read.windows);
  }
}

void alignReads(const SeedIndex& index, const FastSteps& steps,
                std::span<PreparedRead* const> reads) {
  if (!steps.align) return;
  for (const bool isFirst : {true, false}) {
    std::vector<WindowLookUp> lookUps;
    lookUps.reserve(reads.size());
    for (PreparedRead* read : reads) {
      if (!read->isPacked() || read->alignment.isThere()) continue;
      const std::size_t window = isFirst ? 0 : read->windows - 1;
      const uint64_t key = read->packed.at(window, index.text().windowLength());
      lookUps.push_back({read, window, index.begin(key)});
    }
    for (WindowLookUp& window : lookUps) index.advance(window.lookUp);
    for (WindowLookUp& window : lookUps) endLookUp(index, window);
    for (const auto& [read, window, lookUp, diagonal] : lookUps) {
      if (diagonal) read->alignment.align(index.text(), read->packed, *diagonal, window);
    }
  }
}

void siftReads(const SeedIndex& index, const FastSteps& steps,
               std::span<PreparedRead* const> reads) {
  if (steps.sift) findAbsent(index, reads);
  for (PreparedRead* read : reads) {
    read->isSifted = true;
    const Alignment& alignment = read->alignment;
    if (!steps.reversed || !alignment.isThere()) continue;
    WindowSet& opposite = read->skipped[alignment.diagonal().isReversed ? 0 : 1];
    alignment.addMarked(index.text(), Alignment::Mark::kNotReversed, opposite);
  }
}

void prepareGroup(const SeedIndex& index, const FastSteps& steps, std::span<PreparedRead> leads,
                  std::span<PreparedRead> others, bool isReversedFirst) {
  packReads(index, leads);
  packReads(index, others);
  std::vector<PreparedRead*> open;
  std::vector<PreparedRead*> mates;
  open.reserve(leads.size() + others.size());
  mates.reserve(others.size());
  for (PreparedRead& lead : leads) open.push_back(&lead);
  alignReads(index, steps, open);
  open.clear();
  for (std::size_t n = 0; n < leads.size(); ++n) {
    const bool isPair = n < others.size();
    if (isPair && steps.leads && isHitFirst(index, leads[n], isReversedFirst)) continue;
    open.push_back(&leads[n]);
    if (isPair) mates.push_back(&others[n]);
  }
  alignReads(index, steps, mates);
  open.insert(open.end(), mates.begin(), mates.end());
  siftReads(index, steps, open);
}

void completeRead(const SeedIndex& index, const FastSteps& steps, PreparedRead& read) {
  PreparedRead* one = &read;
  alignReads(index, steps, {&one, 1});
  siftReads(index, steps, {&one, 1});
}

}  // namespace velk
