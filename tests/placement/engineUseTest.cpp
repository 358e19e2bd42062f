// What is asked of an engine: to prepare those reads as leads that are walked over first; and of a
// strand: its reverse complement when a walk or a record needs it, once at most.
#include <span>
#include <string>
#include <vector>

#include "placement/batchScan.h"
#include "tests/placement/batchTest.h"
#include "tests/placement/engines.h"
#include "tests/placement/eventSink.h"

namespace velk::test {
namespace {

// The plain engine, with the reads that it prepared.
class WatchedEngine : public PlainEngine {
 public:
  explicit WatchedEngine(const PlainEngine& engine) : PlainEngine(engine) {}

  void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst) {
    isReversedFirst_ = isReversedFirst;
    for (const Prepared& read : leads) leads_.push_back(*read.bases);
    for (const Prepared& read : others) others_.push_back(*read.bases);
  }

  const std::vector<std::string>& leads() const { return leads_; }
  const std::vector<std::string>& others() const { return others_; }
  bool isReversedFirst() const { return isReversedFirst_; }

 private:
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
};

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

TEST_F(EngineUse, AStrandAsItStands) {
  PlainEngine engine = engineOver<PlainEngine>();
  PlainEngine::Prepared prepared;
  ReadStrand<PlainEngine> strand(engine, prepared, onX, {});
  EXPECT_EQ(&strand.bases(), &onX);
  EXPECT_EQ(strand.size(), onX.size());
}

TEST_F(EngineUse, AReverseComplementIsMadeOnceWhenItIsAskedFor) {
  PlainEngine engine = engineOver<PlainEngine>();
  PlainEngine::Prepared prepared;
  std::string read = onX;
  std::string room = "A";
  ReadStrand<PlainEngine> strand(engine, prepared, read, {0, 0, true}, &room);
  EXPECT_EQ(strand.size(), read.size());
  EXPECT_EQ(room, "A");
  EXPECT_EQ(strand.bases(), reverseComplement(onX));
  read = stray;
  EXPECT_EQ(strand.bases(), reverseComplement(onX));
}

}  // namespace
}  // namespace velk::test
