// What the fast engine meets on the hard inputs, that their comparison (engineTest.cpp) proves
// something of every skip.
#include <gtest/gtest.h>

#include "placement/batchScan.h"
#include "tests/placement/eventSink.h"
#include "tests/placement/hardPlacement.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/watchedFast.h"

namespace velk::test {
namespace {

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
                          {"read: left to its windows", 1000},
                          {"read: long", 600},
                          {"read: not packed", 4000},
                          {"read: packed", 20000},
                          {"read: sifted", 20000},
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
                          {"skipped: behind no hit", 60000},
                          {"skipped: first windows", 20000}};
  for (const auto& [what, times] : met_) EXPECT_EQ(1U, least.count(what)) << what << ": " << times;
  for (const auto& [what, times] : least) EXPECT_GE(met_[what], times) << what;
}

}  // namespace
}  // namespace velk::test
