// Makes benchmark data from a seed: an assembly with gaps and repeats, and read libraries of it.
//
// Into the folder given: scaffolds.fa; pairs_1.fq and pairs_2.fq (forward-reverse, 400 bases),
// mates_1.fq and mates_2.fq (reverse-forward, 3000 bases), singles.fq; plain.lib and gzip.lib,
// which name them as they are and with .gz behind. The same options give the same bytes.
#include <CLI/CLI.hpp>
#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <string>

#include "bench/simulate.h"

namespace velk::bench {
namespace {

struct Amounts {
  uint64_t genome = 5'000'000;
  uint64_t pairs = 500'000;
  uint64_t mates = 160'000;
  uint64_t singles = 160'000;
};

class TextFile {
 public:
  explicit TextFile(const std::string& name) : name_(name), file_(name, std::ios::binary) {}

  std::ofstream& stream() { return file_; }

  void finish() {
    file_.close();
    if (!file_) throw std::runtime_error("can't write " + name_);
  }

 private:
  std::string name_;
  std::ofstream file_;
};

void writePairs(Simulator& simulator, const std::string& prefix, uint64_t pairs,
                const Fragment& fragment) {
  TextFile first(prefix + "_1.fq");
  TextFile second(prefix + "_2.fq");
  for (uint64_t i = 0; i < pairs; ++i) {
    const auto [one, two] = simulator.pair(fragment);
    simulator.writeRecord(first.stream(), one, i, '1');
    simulator.writeRecord(second.stream(), two, i, '2');
  }
  first.finish();
  second.finish();
}

void writeLibrary(const std::string& folder, const std::string& name, const std::string& ending) {
  TextFile file(folder + "/" + name);
  const auto path = [&](const char* reads) { return folder + "/" + reads + ending + "\n"; };
  file.stream() << "[LIB]\navg_ins=400\nq1=" << path("pairs_1.fq") << "q2=" << path("pairs_2.fq")
                << "[LIB]\navg_ins=3000\nq1=" << path("mates_1.fq") << "q2=" << path("mates_2.fq")
                << "[LIB]\nq=" << path("singles.fq");
  file.finish();
}

void makeAll(const Amounts& amounts, const ReadModel& reads, uint64_t seed,
             const std::string& folder) {
  Simulator simulator(amounts.genome, reads, seed);
  TextFile scaffolds(folder + "/scaffolds.fa");
  simulator.writeScaffolds(scaffolds.stream());
  scaffolds.finish();
  writePairs(simulator, folder + "/pairs", amounts.pairs, {400, 40, Facing::kInward});
  writePairs(simulator, folder + "/mates", amounts.mates, {3000, 300, Facing::kOutward});
  TextFile singles(folder + "/singles.fq");
  for (uint64_t i = 0; i < amounts.singles; ++i) {
    simulator.writeRecord(singles.stream(), simulator.single(), i, '1');
  }
  singles.finish();
  writeLibrary(folder, "plain.lib", "");
  writeLibrary(folder, "gzip.lib", ".gz");
}

}  // namespace
}  // namespace velk::bench

int main(int argc, char** argv) {
  CLI::App app{"Makes an assembly and reads to measure velk with."};
  velk::bench::Amounts amounts;
  velk::bench::ReadModel reads;
  uint64_t seed = 1;
  std::string folder;
  app.add_option("--genome", amounts.genome, "bases of the genome")
      ->check(CLI::Range(100'000, 1 << 30));
  app.add_option("--pairs", amounts.pairs, "read pairs of 400-base fragments");
  app.add_option("--mates", amounts.mates, "mate pairs of 3000-base fragments");
  app.add_option("--singles", amounts.singles, "single reads");
  app.add_option("--length", reads.length, "bases of a read")->check(CLI::Range(40, 300));
  app.add_option("--error", reads.error, "share of wrong bases")->check(CLI::Range(0.0, 0.2));
  app.add_option("--seed", seed, "of all that is random");
  app.add_option("folder", folder, "where the files go")->required()->check(CLI::ExistingDirectory);
  CLI11_PARSE(app, argc, argv);
  try {
    velk::bench::makeAll(amounts, reads, seed, folder);
  } catch (const std::exception& error) {
    std::cerr << "[ERROR]: " << error.what() << "\n";
    return 1;
  }
}
