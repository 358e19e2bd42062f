// Made reads, and the files that are written of them.
#pragma once

#include <string>
#include <thread>
#include <vector>

#include "run/outputs.h"
#include "tests/run/madeReads.h"

namespace velk::test {

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
