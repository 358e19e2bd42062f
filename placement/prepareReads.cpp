#include "placement/prepareReads.h"

#include <algorithm>
#include <bit>
#include <string_view>

namespace velk {
namespace {

void prefetchBases(std::string_view bases) {
  constexpr std::size_t kCacheLine = 64;
  if (bases.empty()) return;
  for (std::size_t at = 0; at < bases.size(); at += kCacheLine) prefetchLine(&bases[at]);
  prefetchLine(&bases.back());
}

// Ends a look-up of `window`, on both strands, and takes the read along the diagonal that it tells.
bool findDiagonal(const SeedIndex& index, const PreparedRead& read, std::size_t window,
                  Diagonal& diagonal) {
  bool isReversed = false;
  Occurrence found = index.end(read.lookUp);
  if (!found.isThere()) {
    found = index.end(index.beginReversed(read.lookUp));
    isReversed = true;
  }
  if (!found.isThere()) return false;
  diagonal = Diagonal::through(found.position, window, isReversed);
  Alignment::prefetch(index.text(), diagonal, read.length, window);
  return true;
}

// Begins to look up the seeds of the windows that do not agree with the text.
void beginSeeds(const SeedIndex& index, PreparedRead& read) {
  read.seeds.clear();
  const auto ask = [&](std::size_t from, std::size_t to) {
    if (from >= to) return;
    index.seeds().forEachRun(read.packed, from, to, [&](const SeedRun& run) {
      read.seeds.push_back(index.beginSeed(run));
    });
  };
  if (!read.alignment.isThere()) {
    ask(0, read.windows);
    return;
  }
  const WindowSet& matches = read.alignment.matches();
  for (std::size_t from = matches.firstMissing(0); from < read.windows;) {
    const std::size_t to = matches.firstContained(from);
    ask(from, to);
    from = matches.firstMissing(to);
  }
}

}  // namespace

void packReads(const SeedIndex& index, std::span<PreparedRead*> reads) {
  for (const PreparedRead* read : reads) prefetchLine(read->bases);
  for (const PreparedRead* read : reads) prefetchBases(*read->bases);
  const auto window = static_cast<std::size_t>(index.text().windowLength());
  for (PreparedRead* read : reads) {
    read->length = read->bases->size();
    read->isPacked = index.hasText() && read->length >= window && read->packed.fill(*read->bases);
    read->windows = read->isPacked ? read->length - window + 1 : 0;
    read->isAligned = read->isSifted = read->hasReversed = false;
    read->alignment.clear();
  }
}

void alignReads(const SeedIndex& index, std::span<PreparedRead*> reads) {
  struct Found {
    Diagonal diagonal;
    std::size_t window = 0;
    bool isThere = false;
  };
  std::vector<Found> found(reads.size());
  const auto forEachOpen = [&](auto step) {
    for (std::size_t n = 0; n < reads.size(); ++n) {
      if (reads[n]->isPacked && !found[n].isThere) step(*reads[n], found[n]);
    }
  };
  for (int attempt = 0; attempt < 2; ++attempt) {
    forEachOpen([&](PreparedRead& read, Found& at) {
      at.window = attempt == 0 ? 0 : read.windows - 1;
      read.lookUp = index.begin(read.packed.at(at.window, index.text().windowLength()));
    });
    forEachOpen([&](PreparedRead& read, Found&) { index.advance(read.lookUp); });
    forEachOpen([&](const PreparedRead& read, Found& at) {
      at.isThere = findDiagonal(index, read, at.window, at.diagonal);
    });
  }
  for (std::size_t n = 0; n < reads.size(); ++n) {
    PreparedRead& read = *reads[n];
    read.isAligned = true;
    if (!read.isPacked || !found[n].isThere) continue;
    read.alignment.align(index.text(), read.packed, read.length, found[n].diagonal,
                         found[n].window);
  }
}

void siftReads(const SeedIndex& index, std::span<PreparedRead*> reads) {
  const auto forEachPacked = [&](auto step) {
    for (PreparedRead* read : reads) {
      if (read->isPacked) step(*read);
    }
  };
  forEachPacked([&](PreparedRead& read) { beginSeeds(index, read); });
  forEachPacked([&](PreparedRead& read) {
    read.isSifted = true;
    read.absent.reset(read.windows);
    std::erase_if(read.seeds, [&](const SeedIndex::SeedLookUp& seed) {
      if (index.advanceSeed(seed)) return false;
      read.absent.insertRange(seed.run.first, seed.run.last + 1);
      return true;
    });
  });
  forEachPacked([&](PreparedRead& read) {
    for (const SeedIndex::SeedLookUp& seed : read.seeds) {
      const SeedIndex::SeedVerdict verdict = index.endSeed(seed, read.packed);
      for (uint32_t left = verdict.absent; left != 0; left &= left - 1) {
        read.absent.insert(seed.run.at - static_cast<uint64_t>(std::countr_zero(left)));
      }
      if (!verdict.isFound || read.alignment.isThere()) continue;
      read.alignment.align(index.text(), read.packed, read.length,
                           Diagonal::through(verdict.position, verdict.window, verdict.isReversed),
                           verdict.window);
    }
  });
}

}  // namespace velk
