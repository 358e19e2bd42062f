#include "survey/timeModel.h"

#include <cassert>
#include <chrono>

#include "placement/Read2Scaf.h"
#include "placement/batchScan.h"
#include "placement/verdict.h"

namespace velk::survey {
namespace {

// A sink that counts records.
struct CountingSink {
  static constexpr bool kTakesRefusals = false;

  uint64_t count = 0;

  void found(const Found& /*found*/, const std::string& /*bases*/) { ++count; }
  static void anchored(const Anchored& /*anchored*/) {}
};

}  // namespace

SearchTrial trySearch(const BoundedIndex& index, Scaffolds scaffolds,
                      const PlacementOptions& options, std::vector<Sample> samples) {
  SearchTrial trial;
  Engine engine = index.engine();
  CountingSink sink;
  const auto start = std::chrono::steady_clock::now();
  for (Sample& sample : samples) {
    const bool arePairs = sample.insert != 0;
    assert(!arePairs || sample.b.size() == sample.a.size());
    PlacementOptions ofSample = options;
    ofSample.insert = sample.insert;
    ofSample.areOutward = sample.insert > kLongestShortInsert;
    const Batch batch{sample.a.data(),
                      arePairs ? sample.b.data() : nullptr,
                      static_cast<int64_t>(sample.a.size()),
                      0,
                      1,
                      scaffolds.data(),
                      ofSample};
    scanBatch(engine, batch, sink);
    trial.reads += sample.a.size() * (arePairs ? 2 : 1);
  }
  const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
  trial.seconds = used.count();
  trial.found = sink.count;
  return trial;
}

double inputSeconds(const InputCost& input, double secondsPerRead, int threads) {
  const double searching = secondsPerRead * (input.arePairs ? 2 : 1) / threads;
  return static_cast<double>(input.records) * (input.secondsToRead + searching);
}

}  // namespace velk::survey
