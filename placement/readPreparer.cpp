#include "placement/readPreparer.h"

#include <algorithm>
#include <string_view>

namespace velk {
namespace {

void prefetchLetters(std::string_view letters) {
  constexpr std::size_t kCacheLine = 64;
  if (letters.empty()) return;
  for (std::size_t at = 0; at < letters.size(); at += kCacheLine) prefetchLine(&letters[at]);
  prefetchLine(&letters.back());
}

// Prefetches the text that an alignment through `window` compares, and the contig's letters there,
// which the base checks read.
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

// Looks up the seeds of the windows that do not agree with the text. `part` selects the windows.
// The places of a seed rule windows out, or align the read.
void ReadPreparer::lookUpSeeds(std::span<PreparedRead> reads, Part part) {
  seeds_.clear();
  for (PreparedRead& read : reads) {
    if (!read.isPacked() || read.isDeferred) continue;
    if (part != Part::kAll && read.alignment.isThere()) continue;
    const WindowSet& matches = read.alignment.matches();
    const std::size_t end = part == Part::kFirst ? 1 : read.windows;
    const std::size_t start = part == Part::kLast ? end - 1 : 0;
    for (std::size_t from = matches.firstMissing(start); from < end;) {
      const std::size_t to = std::min(end, matches.firstContained(from));
      index_.seeds().forEachRun(read.packed, from, to, [&](const SeedRun& run) {
        index_.prefetchSeed(run);
        seeds_.emplace_back(&read, run);
      });
      from = matches.firstMissing(to);
    }
  }
  for (const auto& [read, run] : seeds_) index_.prefetchText(run);
  found_.clear();
  for (const auto& [read, run] : seeds_) {
    const SeedIndex::SeedVerdict verdict = index_.verdictOn(run, read->packed);
    for (WindowSet& skipped : read->skipped) skipped.insertMask(run.first, verdict.absent);
    if (!verdict.diagonal || read->alignment.isThere()) continue;
    prefetchAlong(index_.text(), *read, *verdict.diagonal, verdict.window);
    found_.emplace_back(read, verdict);
  }
  for (const auto& [read, verdict] : found_) {
    if (read->alignment.isThere()) continue;
    read->alignment.align(index_.text(), read->packed, *verdict.diagonal, verdict.window);
  }
}

// Whether the first window of a strand that is not skipped is known to be a hit. For k > 32 it may
// lie in front of those that the walk visits.
bool ReadPreparer::beginsWithHit(const PreparedRead& read, bool isReversed) const {
  if (!read.isPacked()) return false;
  const std::size_t window =
      isReversed ? read.skipped[1].lastMissing(read.windows) : read.skipped[0].firstMissing(0);
  return window < read.windows && read.alignment.agreesAt(window, isReversed) &&
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
    read.isFiltered = false;
    read.isDeferred = false;
    for (WindowSet& skipped : read.skipped) skipped.reset(read.windows);
  }
}

void ReadPreparer::align(std::span<PreparedRead> reads) {
  if (!steps_.align) return;
  lookUpSeeds(reads, Part::kFirst);
  lookUpSeeds(reads, Part::kLast);
}

void ReadPreparer::filter(std::span<PreparedRead> reads) {
  if (steps_.filter) lookUpSeeds(reads, Part::kAll);
  for (PreparedRead& read : reads) {
    if (read.isDeferred) continue;
    read.isFiltered = true;
    const Alignment& alignment = read.alignment;
    if (!steps_.reversed || !alignment.isThere()) continue;
    alignment.addNotReversed(index_.text(), read.skipped[alignment.diagonal().isReversed ? 0 : 1]);
  }
}

void ReadPreparer::prepare(std::span<PreparedRead> leads, std::span<PreparedRead> others,
                           bool isReversedFirst) {
  assert(others.empty() || others.size() == leads.size());
  pack(leads);
  pack(others);
  const auto deferHits = [&](std::span<PreparedRead> reads) {
    for (std::size_t n = 0; n < others.size() && steps_.leads; ++n) {
      reads[n].isDeferred = beginsWithHit(leads[n], isReversedFirst);
    }
  };
  align(leads);
  deferHits(leads);
  filter(leads);
  deferHits(others);
  align(others);
  filter(others);
}

void ReadPreparer::complete(PreparedRead& read) {
  assert(read.isPacked());
  read.isDeferred = false;
  align({&read, 1});
  filter({&read, 1});
}

}  // namespace velk
