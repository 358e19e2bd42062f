// Made reads whose true places are known, found as placement finds them.
#pragma once

#include <map>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "run/outputs.h"
#include "tests/run/world.h"

namespace velk::test {

/// Where a read truly lies: its first base on its scaffold.
struct TruePlace {
  int64_t start;
  bool isReversed;
};

/// Fixture with a made assembly of several scaffolds and reads of it.
class MadeReads : public RunWorld {
 protected:
  static constexpr int kReadLength = 60;

  /// Makes the assembly: scaffolds with gaps of all lengths, a short contig between two gaps, N at
  /// both ends.
  void makeWorld(unsigned seed, const std::vector<uint64_t>& placeholders = {});

  /// Adds what is found of `count` reads, or pairs, of a library; with every tenth read changed to
  /// random bases, and a share of them without qualities.
  void makeReads(const run::Library& library, std::size_t count, double shareWithoutQuality);

  /// The true place of a read.
  TruePlace truthOf(uint32_t input, uint64_t record, int mate) const {
    return truth_.at({input, record, mate});
  }

  std::vector<run::Library> libraries_;
  std::vector<run::FoundEntry> entries_;

 private:
  using Random = std::mt19937;

  void makePair(const run::Library& library, uint64_t record, bool hasQuality, Random& random);
  void makeSingle(uint64_t record, bool hasQuality, Random& random);
  bool findFrom(int mate, const run::Library& library, run::FoundEntry& entry);
  reads::RecordView made(uint64_t record, std::size_t scaffold, const TruePlace& place, int mate,
                         bool hasQuality, Random& random);
  std::string onScaffold(const run::FoundEntry& entry, int mate) const;

  std::vector<std::string> genomes_;  // the scaffolds without gaps
  std::vector<std::size_t> scaffold_;
  std::map<std::tuple<uint32_t, uint64_t, int>, TruePlace> truth_;
};

/// Fixture that writes what is found of three libraries, of which two have equal names.
class OutputsTest : public MadeReads {
 protected:
  OutputsTest() {
    makeWorld(1);
    makeReads(pairs("short", 200, 15), 4000, 0);
    run::Library mates = pairs("mates", 700, 40);
    mates.orientation = run::Orientation::kOutward;
    makeReads(mates, 4000, 0.5);
    makeReads(singles("single"), 3000, 0);
  }

  // Writes everything to a new folder of that name and returns its path.
  std::string write(const std::string& name, const run::OutputOptions& options) {
    const std::string dir = folder_.path(name);
    run::ResultFolder results(dir, {});
    results.begin();
    results.clear();
    run::Outputs outputs(results, assembly(), libraries_, options);
    const auto threads = static_cast<std::size_t>(options.threads);
    std::vector<std::thread> workers;
    for (std::size_t t = 0; t < threads; ++t) {
      workers.emplace_back([&, t] {
        for (std::size_t n = t; n < entries_.size(); n += threads) outputs.take(entries_[n]);
      });
    }
    for (std::thread& worker : workers) worker.join();
    outputs.write();
    reads_ = outputs.reads();
    spilledBytes_ = outputs.spilledBytes();
    results.seal(2);
    results.publish("{\"program\": {\"name\": \"velk-run\"}}");
    return dir;
  }

  std::string write(const std::string& name) { return write(name, {}); }

  uint64_t reads_ = 0;
  uint64_t spilledBytes_ = 0;
};

}  // namespace velk::test
