// Many hand-offs in a row, from the reader to the output file: food for the thread sanitizer.
#include <algorithm>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "streaming/library.h"
#include "streaming/readBuffer.h"
#include "tests/streaming/gapAssembly.h"

namespace velk::test {
namespace {

class HandOffStress : public GapAssemblyTest {
 protected:
  static constexpr unsigned kWorkers = 8;
  static constexpr unsigned kReads = 1000;

  // Streams "reads" in batches of `limit` entries. Returns what is written for them.
  std::string stream(int insert, int limit) {
    start(static_cast<int>(kWorkers));
    openOutputFile();
    insertLength = insert;
    batchLimit = limit;
    std::string file = "reads";
    std::string none;
    const CapturedErrors progress;
    FindReadsInGaps(file, none, static_cast<int>(kWorkers));
    stop();
    return writtenOutput();
  }

  void writeSingles() {
    std::vector<std::string> reads;
    for (unsigned i = 0; i < kReads; ++i) reads.push_back(singleRead(gapOf(i), i));
    write("reads", fasta(reads));
  }

  static int gapOf(unsigned i) { return static_cast<int>(i % 2); }
};

TEST_F(HandOffStress, BatchesOfOneRead) {
  writeSingles();
  std::string expected;
  for (unsigned i = 0; i < kReads; ++i) expected += singleRecord(gapOf(i), i);
  EXPECT_EQ(stream(0, 1), expected);
}

TEST_F(HandOffStress, BatchesOfFewReadsMoreThanWorkers) {
  constexpr unsigned kLimit = 11;
  writeSingles();
  std::string expected;
  for (unsigned first = 0; first < kReads; first += kLimit) {
    const unsigned end = std::min(first + kLimit, kReads);
    for (unsigned t = 0; t < kWorkers; ++t) {
      for (unsigned i = first + t; i < end; i += kWorkers) expected += singleRecord(gapOf(i), i);
    }
  }
  EXPECT_EQ(stream(0, static_cast<int>(kLimit)), expected);
}

TEST_F(HandOffStress, BatchesOfOnePair) {
  std::vector<std::string> reads;
  std::string expected;
  for (unsigned i = 0; i < kReads; ++i) {
    reads.push_back(firstMate(gapOf(i), i % 50));
    reads.push_back(secondMate(i % 50));
    expected += mateRecord(gapOf(i), i % 50);
  }
  write("reads", fasta(reads));
  EXPECT_EQ(stream(kInsert, 1), expected);
}

}  // namespace
}  // namespace velk::test
