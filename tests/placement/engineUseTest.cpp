// What is asked of an engine: reverse complements when a walk or a record needs them, once at most;
// and to prepare those reads as leads that are walked over first.
#include <span>
#include <string>
#include <vector>

#include "placement/batchScan.h"
#include "tests/placement/batchTest.h"
#include "tests/placement/engines.h"
#include "tests/placement/eventSink.h"

namespace velk::test {
namespace {

// The plain engine, with a count of the reverse complements that it makes, and the reads that it
// prepared.
class WatchedEngine {
 public:
  using Prepared = PlainEngine::Prepared;
  using Windows = PlainEngine::Windows;
  static constexpr std::size_t kGroup = PlainEngine::kGroup;

  explicit WatchedEngine(const PlainEngine& engine) : engine_(engine) {}

  void prepare(std::span<Prepared*> leads, std::span<Prepared*> others, bool isReversedFirst) {
    engine_.prepare(leads, others, isReversedFirst);
    isReversedFirst_ = isReversedFirst;
    for (const Prepared* read : leads) leads_.push_back(*read->bases);
    for (const Prepared* read : others) others_.push_back(*read->bases);
  }
  bool hasBasesAlone(const Prepared& read) const { return engine_.hasBasesAlone(read); }
  const std::string& reverseComplement(Prepared& read) {
    made_ += read.hasReversed ? 0 : 1;
    return engine_.reverseComplement(read);
  }
  Windows windows(const Prepared& read, const std::string& bases, bool isReversed) const {
    return engine_.windows(read, bases, isReversed);
  }

  int made() const { return made_; }
  const std::vector<std::string>& leads() const { return leads_; }
  const std::vector<std::string>& others() const { return others_; }
  bool isReversedFirst() const { return isReversedFirst_; }

 private:
  PlainEngine engine_;
  int made_ = 0;
  std::vector<std::string> leads_;
  std::vector<std::string> others_;
  bool isReversedFirst_ = false;
};

class EngineUse : public FindReadsTest {
 protected:
  // The engine after a batch of one entry; a pair, if it has a second read.
  static WatchedEngine usedFor(std::string read, std::string mate = {}) {
    WatchedEngine engine(engineOver<PlainEngine>());
    EventSink sink;
    const Batch batch{&read, mate.empty() ? nullptr : &mate, 1, 0, 1, scaffoldInfo, optionsOfRun()};
    scanBatch(engine, batch, sink);
    return engine;
  }

  static int madeFor(const std::string& read, const std::string& mate = {}) {
    return usedFor(read, mate).made();
  }
};

TEST_F(EngineUse, ReverseComplementOfASingleRead) {
  EXPECT_EQ(madeFor(readAt(x, 250, 100)), 0);
  EXPECT_EQ(madeFor(stray), 1);
}

TEST_F(EngineUse, ReverseComplementOfTheMateThatTryOneRecords) {
  EXPECT_EQ(madeFor(onX, stray), 1);
}

TEST_F(EngineUse, NoReverseComplementWhereTryOneRecordsNoMate) {
  insertLength = 180;
  EXPECT_EQ(madeFor(onX, stray), 0);
}

TEST_F(EngineUse, ReverseComplementOfTheSecondReadForTryTwo) {
  EXPECT_EQ(madeFor(stray, reverseComplement(onY)), 1);
}

TEST_F(EngineUse, ReverseComplementOfBothForTriesThreeAndFour) {
  EXPECT_EQ(madeFor(reverseComplement(onY), stray), 2);
  EXPECT_EQ(madeFor(stray, onX), 2);
  EXPECT_EQ(madeFor(stray, randomBases(100, 75)), 2);
}

TEST_F(EngineUse, TheReadsThatLead) {
  using Reads = std::vector<std::string>;
  EXPECT_EQ(usedFor(onX).leads(), Reads{onX});
  EXPECT_EQ(usedFor(onX).others(), Reads{});
  EXPECT_EQ(usedFor(onX, stray).leads(), Reads{onX});
  EXPECT_EQ(usedFor(onX, stray).others(), Reads{stray});
  EXPECT_FALSE(usedFor(onX, stray).isReversedFirst());
  insertLength = 1001;
  EXPECT_TRUE(usedFor(stray, onX).isReversedFirst());
  EXPECT_EQ(usedFor(stray, onX).leads(), Reads{onX});
  EXPECT_EQ(usedFor(stray, onX).others(), Reads{stray});
}

}  // namespace
}  // namespace velk::test
