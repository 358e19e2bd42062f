// Builds the seed index of one assembly and prints what it takes: a line with the length of a
// k-mer, the threads, the number of k-mers, the bytes of the index, the most bytes that the
// building took, the seconds of wall and of processor time.
#include <sys/resource.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iostream>
#include <string>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/seedIndex.h"

namespace velk::bench {
namespace {

// The bytes behind a name of /proc/self/status.
uint64_t statusBytes(const std::string& name) {
  std::ifstream input("/proc/self/status");
  for (std::string word; input >> word;) {
    uint64_t kilobytes = 0;
    if (word == name && input >> kilobytes) return kilobytes * 1024;
  }
  return 0;
}

// From here on the peak is that of what follows. Returns the bytes that are in memory now.
uint64_t forgetPeak() {
  std::ofstream("/proc/self/clear_refs") << "5";
  return statusBytes("VmRSS:");
}

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Returns whether there was memory for it.
bool measure(const std::string& scaffolds) {
  uint64_t gaps = 0;
  InitialScaffold(scaffoldInfo, scaffolds, scaffoldSum);
  LoadScaffolds(scaffoldInfo, scaffolds, scaffoldSum, gaps);
  const uint64_t before = forgetPeak();
  const double processorBefore = processorSeconds();
  const auto start = std::chrono::steady_clock::now();
  SeedIndex index;
  if (!index.build(scaffoldInfo, scaffoldSum, Kmer, thread_num)) return false;
  const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
  const double processor = processorSeconds() - processorBefore;
  const uint64_t peak = statusBytes("VmHWM:");
  uint64_t bytes = sizeof index;
  const auto add = [&](const auto& array) { bytes += array.size() * sizeof(array[0]); };
  SeedIndex::forEachKept(index, add);
  index.text().forEachLaid(add);
  std::cout << Kmer << '\t' << thread_num << '\t' << index.text().windows() << '\t' << bytes << '\t'
            << peak - std::min(peak, before) << '\t' << wall.count() << '\t' << processor << '\n';
  return true;
}

}  // namespace
}  // namespace velk::bench

int main(int argc, char** argv) {
  CLI::App app{"Builds the index of an assembly and prints what it takes."};
  std::string scaffolds;
  app.add_option("scaffolds", scaffolds, "scaffold FASTA; side files are written beside it")
      ->required();
  app.add_option("--kmer", velk::Kmer, "bases of a k-mer");
  app.add_option("--threads", velk::thread_num, "threads that build it");
  CLI11_PARSE(app, argc, argv);
  if (!velk::bench::measure(scaffolds)) {
    std::cerr << "[ERROR]: no memory for the index\n";
    return 1;
  }
}
