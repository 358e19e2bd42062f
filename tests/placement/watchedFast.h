// The fast engine, with a count of what it knows of reads and of what its windows skip.
#pragma once

#include <map>
#include <optional>
#include <span>
#include <string>

#include "placement/fastEngine.h"

namespace velk::test {

/// How often each thing was met, by its name.
using Meetings = std::map<std::string, int>;

class WatchedWindows {
 public:
  WatchedWindows(const CandidateWindows& windows, Meetings& met) : windows_(windows), met_(met) {}

  std::size_t count() const { return windows_.count(); }
  std::size_t first() {
    const std::size_t window = windows_.first();
    if (window > 0) ++met_["skipped: first windows"];
    return window;
  }
  std::size_t after(std::size_t window) {
    const std::size_t next = windows_.after(window);
    if (next > window + 1) ++met_["skipped: behind " + behind_];
    return next;
  }
  std::optional<KmerPlace> uniquePlaceOf(std::size_t window) {
    behind_ = "no hit";
    return windows_.uniquePlaceOf(window);
  }
  void noteRefused(const Hit& hit) {
    windows_.noteRefused(hit);
    behind_ = "a refused hit";
  }

 private:
  CandidateWindows windows_;
  Meetings& met_;
  std::string behind_;
};

class WatchedFast : public FastEngine {
 public:
  WatchedFast(const SeedIndex& index, int kmer, Meetings& met)
      : FastEngine(index, kmer), watched_(index), met_(met) {}

  void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst) {
    FastEngine::prepare(leads, others, isReversedFirst);
    for (const Prepared& read : leads) note(read);
    for (const Prepared& read : others) note(read);
    if (leads.size() < group()) ++met_["group: not full"];
    if (isReversedFirst) ++met_["group: reversed pairs"];
  }

  template <class Strand, class Visit>
  int64_t visitHits(Strand& strand, Visit visit) {
    Prepared& read = strand.prepared();
    if (!read.isPacked()) return FastEngine::visitHits(strand, visit);
    WatchedWindows windows(CandidateWindows(*this, read, strand.origin().isReversed), met_);
    return visitUniqueHits(windows, visit);
  }

 private:
  void note(const Prepared& read) const {
    if (read.bases->size() > 1000) ++met_["read: long"];
    ++met_[read.isPacked() ? "read: packed" : "read: not packed"];
    if (!read.isPacked()) return;
    ++met_[read.isSifted ? "read: sifted" : "read: left to its windows"];
    if (skips(read.skipped[0]) && skips(read.skipped[1]))
      ++met_["read: windows skipped on both strands"];
    noteSeeds(read);
    noteAlignment(read);
  }

  static bool skips(const WindowSet& windows) { return windows.firstContained(0) < windows.size(); }

  void noteSeeds(const Prepared& read) const {
    watched_.seeds().forEachRun(read.packed, 0, read.windows, [&](const SeedRun& run) {
      if (run.isTied) ++met_["seed: tied"];
      if (!watched_.prefetchText(run)) {
        ++met_["seed: not in the index"];
        return;
      }
      const auto verdict = watched_.verdictOn(run, read.packed);
      const uint64_t key = read.packed.at(run.first, watched_.text().windowLength());
      const bool isOpen = (verdict.absent & 1U) == 0 && !verdict.diagonal && !run.isTied;
      if (isOpen && watched_.find(key).isThere()) ++met_["seed: heavy, not tied"];
      if (verdict.absent != 0) {
        ++met_["seed: windows ruled out by its places"];
      }
    });
  }

  void noteAlignment(const Prepared& read) const {
    const Alignment& alignment = read.alignment;
    if (!alignment.isThere()) return;
    ++met_[alignment.diagonal().isReversed ? "alignment: reversed" : "alignment: forward"];
    const WindowSet& matches = alignment.matches();
    ++met_[matches.firstMissing(0) == matches.size() ? "alignment: of all windows"
                                                     : "alignment: of some windows"];
    for (std::size_t w = 0; w < read.windows; ++w) {
      const uint64_t position = alignment.diagonal().positionOf(w);
      const bool isRepeated = matches.contains(w) && watched_.text().isMarkedRepeated(position);
      if (isRepeated) ++met_["alignment: repeated windows"];
    }
    WindowSet known;
    known.reset(read.windows);
    alignment.addNotReversed(watched_.text(), known);
    if (skips(known)) ++met_["alignment: no reverse complements"];
    if (known.firstMissing(0) < known.size()) ++met_["alignment: reverse complements, or others"];
  }

  const SeedIndex& watched_;
  Meetings& met_;
};

}  // namespace velk::test
