// Placement against the plain model: the given functions, and all that every engine gives a sink.
// Input: placementInput.h.
#include <string>
#include <vector>

#include "contig/contig.h"
#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/batchScan.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/placementInput.h"
#include "tests/placement/engines.h"
#include "tests/placement/eventSink.h"
#include "tests/placement/placementTest.h"
#include "tests/placement/plainPlacement.h"

namespace velk::fuzz {
namespace {

using test::Outcome;
using test::PlainEvent;
using test::PlainPlacement;
using test::TestRecord;

// The fixture of the placement tests, outside a test.
class Ground : public test::PlacementTest {
 public:
  void TestBody() override {}

  void compare(PlacementInput input) {
    prepare(input);
    PlainPlacement plain(input.assembly, input.settings);
    for (std::size_t k = 0; k < input.first.size(); ++k) {
      compareRoutines(plain, input.first[k], input.second[k]);
      compareRoutines(plain, test::plainReverseComplement(input.first[k]), input.second[k]);
    }
    plain.takeEvents();
    const std::vector<BatchEvents> expected = plainEvents(plain, input);
    compareEvents<PlainEngine>(input, expected);
#ifndef VELK_PLAIN_ENGINE
    compareEvents<FastEngine>(input, expected);
    compareEvents<test::FastInGroups>(input, expected);
    compareEvents<test::FastUnprepared>(input, expected);
    compareEvents<test::FastPacked>(input, expected);
#endif
    compareBatches(plain, input);
  }

 private:
  void prepare(const PlacementInput& input) {
    setWorkers(input.workers);
    makeParameters(input.settings);
    assemble(input.assembly);
  }

  // What an engine finds of worker t's share of a batch.
  template <class Engine>
  static std::vector<PlainEvent> eventsOf(std::vector<std::string>& reads, std::string* mates,
                                          std::size_t t, std::size_t workers) {
    Engine engine = test::engineOver<Engine>();
    test::EventSink sink;
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

  // What is found of a worker's share of the single reads, and of the pairs.
  struct BatchEvents {
    std::vector<PlainEvent> ofSingles;
    std::vector<PlainEvent> ofPairs;
  };

  static std::vector<BatchEvents> plainEvents(PlainPlacement& plain, PlacementInput input) {
    const auto workers = static_cast<std::size_t>(input.workers);
    std::vector<BatchEvents> events(workers);
    for (std::size_t t = 0; t < workers; ++t) {
      plain.scan(input.reads, t, workers);
      events[t].ofSingles = plain.takeEvents();
      plain.scan(input.first, input.second, t, workers);
      events[t].ofPairs = plain.takeEvents();
    }
    return events;
  }

  template <class Engine>
  static void compareEvents(PlacementInput input, const std::vector<BatchEvents>& expected) {
    for (std::size_t t = 0; t < expected.size(); ++t) {
      require(expected[t].ofSingles == eventsOf<Engine>(input.reads, nullptr, t, expected.size()),
              "a batch of single reads differs");
      require(expected[t].ofPairs ==
                  eventsOf<Engine>(input.first, input.second.data(), t, expected.size()),
              "a batch of pairs differs");
    }
  }

  template <class Model>
  static void compare(const Outcome& outcome, Model model, std::string_view what) {
    std::vector<TestRecord> records;
    require(model(records) == outcome.stop && records == outcome.records, what);
  }

  static void compareRoutines(PlainPlacement& plain, const std::string& read,
                              const std::string& mate) {
    if (read.size() < static_cast<std::size_t>(Kmer)) return;
    compare(
        single(read), [&](auto& records) { return plain.single(read, records); },
        "a single read is placed otherwise");
    compare(
        forward(read, mate), [&](auto& records) { return plain.forward(read, mate, records); },
        "a forward read is placed otherwise");
    compare(
        reverse(read, mate), [&](auto& records) { return plain.reverse(read, mate, records); },
        "a reverse read is placed otherwise");
  }

  void compareBatches(PlainPlacement& plain, PlacementInput& input) {
    const auto workers = static_cast<std::size_t>(input.workers);
    setBatch(input.reads);
    for (std::size_t t = 0; t < workers; ++t) {
      require(plain.scan(input.reads, t, workers) == scan(static_cast<int>(t)),
              "a batch of single reads gives other records");
    }
    require(input.reads == firstReads(), "a batch of single reads is changed");
    setBatch(input.first, input.second);
    for (std::size_t t = 0; t < workers; ++t) {
      require(plain.scan(input.first, input.second, t, workers) == scan(static_cast<int>(t)),
              "a batch of pairs gives other records");
    }
    require(input.first == firstReads() && input.second == secondReads(),
            "a batch of pairs is changed otherwise");
  }
};

}  // namespace

void tryInput(Input input) {
  static Ground ground;
  Said said;
  ground.compare(placementInput(input));
}

}  // namespace velk::fuzz
