// What the fast engine meets on the hard inputs, that their comparison (engineTest.cpp) proves
// something of every skip.
#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <span>
#include <string>

#include "placement/Read2Scaf.h"
#include "placement/batchScan.h"
#include "placement/fastEngine.h"
#include "tests/placement/eventSink.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/randomPlacement.h"

namespace velk::test {
namespace {

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
    ++met_[read.isFiltered ? "read: filtered" : "read: left to its windows"];
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

class HardInputs : public PlacementTest {
 protected:
  void scanBatches(RandomPlacement hard) {
    makeParameters(hard.settings);
    assemble(hard.assembly);
    scanBatchOf(hard.reads, nullptr);
    scanBatchOf(hard.first, hard.second.data());
  }

  Meetings met_;

 private:
  void scanBatchOf(std::vector<std::string>& reads, std::string* mates) {
    WatchedFast engine(*seedIndex, Kmer, met_);
    EventSink sink;
    const Batch batch{reads.data(), mates,         static_cast<int64_t>(reads.size()), 0, 1,
                      scaffoldInfo, optionsOfRun()};
    scanBatch(engine, batch, sink);
    for (const PlainEvent& event : sink.events()) ++met_[event.what];
  }
};

TEST_F(HardInputs, MeetEverySkip) {
  for (const Hard input : kHardInputs) {
    for (const int kmer : kHardKmers) {
      for (uint32_t seed = 0; seed < 4; ++seed) scanBatches(hardPlacement(input, kmer, seed));
    }
  }
  const Meetings least = {{"alignment: forward", 1000},
                          {"alignment: no reverse complements", 8000},
                          {"alignment: of all windows", 2000},
                          {"alignment: of some windows", 10000},
                          {"alignment: repeated windows", 7000},
                          {"alignment: reverse complements, or others", 10000},
                          {"alignment: reversed", 4000},
                          {"anchored", 2000},
                          {"group: not full", 700},
                          {"group: reversed pairs", 200},
                          {"read: filtered", 20000},
                          {"read: left to its windows", 1000},
                          {"read: long", 600},
                          {"read: not packed", 4000},
                          {"read: packed", 20000},
                          {"read: windows skipped on both strands", 10000},
                          {"record: anchor", 500},
                          {"record: edge", 500},
                          {"record: gap beyond", 10},
                          {"record: mate", 800},
                          {"refused: at the first base", 50},
                          {"refused: inside the contig", 2000},
                          {"refused: no gap", 20000},
                          {"refused: short overlap", 2000},
                          {"refused: small gap", 300},
                          {"refused: unlike", 10000},
                          {"seed: heavy, not tied", 45000},
                          {"seed: not in the index", 200000},
                          {"seed: tied", 90000},
                          {"seed: windows ruled out by its places", 30000},
                          {"skipped: behind a refused hit", 20000},
                          {"skipped: behind no hit", 20000},
                          {"skipped: first windows", 20000}};
  for (const auto& [what, times] : met_) EXPECT_EQ(1U, least.count(what)) << what << ": " << times;
  for (const auto& [what, times] : least) EXPECT_GE(met_[what], times) << what;
}

}  // namespace
}  // namespace velk::test
