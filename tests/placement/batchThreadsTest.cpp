// FindReads by all workers at once, as in a run; for ThreadSanitizer above all.
#include <thread>

#include "placement/Read2Scaf.h"
#include "tests/placement/batchTest.h"

namespace velk::test {
namespace {

constexpr int kWorkers = 4;

class FindReadsThreads : public FindReadsTest {
 protected:
  // The records of all workers, which scan one after the other or at the same time.
  static std::vector<Records> recordsOfAll(bool atOnce) {
    std::vector<std::thread> workers;
    for (int t = 0; t < kWorkers; ++t) {
      workers.emplace_back(velk::FindReads, t);
      if (!atOnce) workers.back().join();
    }
    std::vector<Records> records;
    for (int t = 0; t < kWorkers; ++t) {
      if (atOnce) workers[static_cast<std::size_t>(t)].join();
      records.push_back(recordsOf(t, foundReadNum[t]));
    }
    return records;
  }

  static std::size_t count(const std::vector<Records>& all) {
    std::size_t sum = 0;
    for (const Records& records : all) sum += records.size();
    return sum;
  }
};

TEST_F(FindReadsThreads, SingleReads) {
  setWorkers(kWorkers);
  std::vector<std::string> reads;
  for (int64_t j = 0; j < 150; ++j) {
    reads.push_back(j % 3 == 0 ? readAt(x, 220 + j % 40, 100) : readAt(y, -60 + j % 40, 100));
  }
  setBatch(reads);
  const std::vector<Records> inTurns = recordsOfAll(false);
  EXPECT_EQ(150U, count(inTurns));
  EXPECT_EQ(inTurns, recordsOfAll(true));
}

// Every worker rewrites its own pairs.
TEST_F(FindReadsThreads, PairsOfLargeInserts) {
  assemble({{{x}, {y, 2000}}});
  setWorkers(kWorkers);
  insertLength = 1500;
  const std::vector<std::string> strays(150, stray);
  const std::vector<std::string> anchors(150, reverseComplement(onX));
  setBatch(strays, anchors);
  const std::vector<Records> inTurns = recordsOfAll(false);
  EXPECT_EQ(150U, count(inTurns));
  setBatch(strays, anchors);
  EXPECT_EQ(inTurns, recordsOfAll(true));
  EXPECT_EQ(std::vector<std::string>(150, onX), firstReads());
}

}  // namespace
}  // namespace velk::test
