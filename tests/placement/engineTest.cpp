// Every call of a sink, engine by engine, against the plain model: records with their kinds,
// origins and unmoved positions, anchors, and refusals with their reasons.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "placement/Read2Scaf.h"
#include "placement/batchScan.h"
#include "tests/placement/batchTest.h"
#include "tests/placement/engines.h"
#include "tests/placement/eventSink.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/plainPlacement.h"
#include "tests/placement/randomPlacement.h"

namespace velk::test {
namespace {

#ifdef VELK_SHORT
constexpr std::array kKmersOfMismatches = {9, 31, 40};
constexpr std::array kKmersOfHardInputs = {0, 8, 31, 70};
#else
constexpr std::array kKmersOfMismatches = {1, 5, 9, 15, 16, 19, 24, 31, 32, 33, 40};
constexpr auto kKmersOfHardInputs = kHardKmers;
#endif

template <class Engine>
class EngineDifferential : public PlacementTest {
 protected:
  // Compares worker by worker what a batch of single reads and one of pairs give.
  void compareBatches(RandomPlacement random, const std::string& name) {
    makeParameters(random.settings);
    assemble(random.assembly);
    PlainPlacement plain(random.assembly, random.settings);
    const auto workers = static_cast<std::size_t>(random.workers);
    std::vector<std::string> reads = random.reads;
    std::vector<std::string> first = random.first;
    std::vector<std::string> second = random.second;
    for (std::size_t t = 0; t < workers; ++t) {
      plain.scan(random.reads, t, workers);
      compareEvents(plain.takeEvents(), scanShare(reads, nullptr, t, workers),
                    name + ", single reads, worker " + std::to_string(t));
      plain.scan(random.first, random.second, t, workers);
      compareEvents(plain.takeEvents(), scanShare(first, second.data(), t, workers),
                    name + ", pairs, worker " + std::to_string(t));
    }
    ASSERT_EQ(random.reads, reads) << name;
    ASSERT_EQ(random.first, first) << name;
    ASSERT_EQ(random.second, second) << name;
  }

  // The hits of reads of which nothing is known: the walk may leave out one at a place at which it
  // has shown one, and no other.
  void compareHits(const RandomPlacement& random, const std::string& name) {
    makeParameters(random.settings);
    assemble(random.assembly);
    const PlainPlacement plain(random.assembly, random.settings);
    Engine engine = engineOver<Engine>();
    for (const std::string& read : random.reads) {
      if (read.size() < static_cast<std::size_t>(Kmer)) continue;
      typename Engine::Prepared unknown{};
      ReadStrand<Engine> strand(engine, unknown, read, {});
      std::vector<Hit> shown;
      const int64_t stop = strand.visitHits([&](const Hit& hit) {
        shown.push_back(hit);
        return Walk::kGoOn;
      });
      ASSERT_EQ(stop, static_cast<int64_t>(read.size()) - Kmer + 1) << name;
      compareHits(plain.hitsOf(read), shown, name);
    }
  }

  // How often each thing was found, by its name.
  const std::map<std::string, int>& met() const { return met_; }

 private:
  static std::vector<PlainEvent> scanShare(std::vector<std::string>& reads, std::string* mates,
                                           std::size_t t, std::size_t workers) {
    Engine engine = engineOver<Engine>();
    EventSink sink;
    const Batch batch{reads.data(),
                      mates,
                      static_cast<int64_t>(reads.size()),
                      static_cast<int64_t>(t),
                      static_cast<int64_t>(workers),
                      scaffoldInfo,
                      optionsOfRun()};
    scanBatch(engine, batch, sink);
    return sink.events();
  }

  void compareEvents(const std::vector<PlainEvent>& expected, const std::vector<PlainEvent>& events,
                     const std::string& name) {
    for (std::size_t e = 0; e < std::min(expected.size(), events.size()); ++e) {
      ASSERT_EQ(expected[e], events[e]) << name << ", event " << e;
    }
    ASSERT_EQ(expected.size(), events.size()) << name;
    for (const PlainEvent& event : events) ++met_[event.what];
  }

  static void compareHits(const std::vector<PlainHit>& plain, const std::vector<Hit>& shown,
                          const std::string& name) {
    std::size_t next = 0;
    std::set<Hit> seen;
    for (const PlainHit& one : plain) {
      const Hit hit{static_cast<uint64_t>(one.scaffold), static_cast<uint64_t>(one.contig),
                    one.offset};
      if (next < shown.size() && shown[next] == hit) {
        seen.insert(hit);
        ++next;
        continue;
      }
      ASSERT_TRUE(seen.contains(hit)) << name;
    }
    ASSERT_EQ(next, shown.size()) << name;
  }

  std::map<std::string, int> met_;
};

TYPED_TEST_SUITE(EngineDifferential, Engines);

TYPED_TEST(EngineDifferential, RandomAssemblies) {
  for (uint32_t seed = 0; seed < part(600U) && !this->HasFatalFailure(); ++seed) {
    this->compareBatches(randomPlacement(seed), "seed " + std::to_string(seed));
  }
  const std::map<std::string, int> least = {{"anchored", 5000},
                                            {"record: anchor", 2000},
                                            {"record: edge", 3000},
                                            {"record: gap beyond", 180},
                                            {"record: mate", 2800},
                                            {"refused: at the first base", 200},
                                            {"refused: inside the contig", 3500},
                                            {"refused: no gap", 14000},
                                            {"refused: short overlap", 1500},
                                            {"refused: small gap", 1400},
                                            {"refused: unlike", 5500}};
  for (const auto& [what, times] : this->met()) EXPECT_EQ(1U, least.count(what)) << what;
  for (const auto& [what, times] : least) EXPECT_GE(this->met().at(what), leastOf(times)) << what;
}

TYPED_TEST(EngineDifferential, RepeatsOnBothStrands) {
  for (uint32_t seed = 0; seed < part(300U) && !this->HasFatalFailure(); ++seed) {
    this->compareBatches(repeatPlacement(seed), "seed " + std::to_string(seed));
  }
}

TYPED_TEST(EngineDifferential, WrongBases) {
  for (const int kmer : kKmersOfMismatches) {
    if (this->HasFatalFailure()) return;
    this->compareBatches(mismatchPlacement(kmer), "k-mers of " + std::to_string(kmer));
  }
}

TYPED_TEST(EngineDifferential, HardInputs) {
  for (const Hard input : kHardInputs) {
    for (const int kmer : kKmersOfHardInputs) {
      for (uint32_t seed = 0; seed < part(5U) && !this->HasFatalFailure(); ++seed) {
        const RandomPlacement hard = hardPlacement(input, kmer, seed);
        const std::string name = "hard input " + std::to_string(static_cast<int>(input)) +
                                 ", k-mers of " + std::to_string(kmer) + ", seed " +
                                 std::to_string(seed);
        this->compareBatches(hard, name);
        if (seed == 0) this->compareHits(hard, name);
      }
    }
  }
}

TYPED_TEST(EngineDifferential, HitsOfReadsOfWhichNothingIsKnown) {
  for (uint32_t seed = 0; seed < part(300U) && !this->HasFatalFailure(); ++seed) {
    this->compareHits(randomPlacement(seed), "seed " + std::to_string(seed));
    this->compareHits(repeatPlacement(seed), "repeats, seed " + std::to_string(seed));
  }
}

// What is asked of an engine: to prepare those reads as leads that are walked over first; and of a
// strand: its reverse complement when a walk or a record needs it, once at most.

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
