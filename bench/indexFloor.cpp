// Measures the building of the index against the least that a table of the k-mers would cost: as
// many 16-byte writes, at random places of such a table, as there are k-mers.
//
// A second bare loop reads every place before it writes there, as a table has to that finds out
// whether a slot is free. All start with a table that has no memory behind it yet. Prints, for each
// of the rounds, the number of k-mers and the nanoseconds per k-mer of the index and of the loops,
// the one that writes first.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <string>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/contigWindows.h"
#include "kmer/fetchKmers.h"
#include "kmer/machine.h"

namespace velk::bench {
namespace {

template <class Work>
double secondsOf(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

uint64_t kmersOfModel() {
  uint64_t kmers = 0;
  forEachIndexed(
      scaffoldInfo, scaffoldSum,
      [&](uint32_t, uint32_t, const ContigInfo&, uint32_t windows) { kmers += windows; });
  return kmers;
}

// 16 bytes: a k-mer and its place.
struct Slot {
  uint64_t key;
  uint64_t place;
};

// What the loops do with a slot. Returned is what has been read.

uint64_t write(Slot& slot, uint64_t state, uint64_t i) {
  slot = {state, i};
  return 0;
}

uint64_t readAndWrite(Slot& slot, uint64_t state, uint64_t i) {
  const uint64_t seen = slot.key;
  slot = {state, i};
  return seen;
}

// Does `work` with as many slots as there are k-mers. The places come from a 64-bit linear
// congruential generator (Knuth's MMIX constants), whose high bits pick the slot: nothing but the
// memory can slow the loop down.
template <class Work>
void atRandom(uint64_t slots, uint64_t kmers, Work work) {
  Array<Slot> table;
  table.make(slots + 1);
  __extension__ using Uint128 = unsigned __int128;
  uint64_t state = 1;
  uint64_t seen = 0;
  for (uint64_t i = 0; i < kmers; ++i) {
    state = state * 6364136223846793005U + 1442695040888963407U;
    seen += work(table[static_cast<uint64_t>((Uint128{state} * slots) >> 64)], state, i);
    asm volatile("" : : "r"(seen) : "memory");  // nothing may be left out or put off
  }
}

void measure(const std::string& scaffolds, uint64_t slots, int rounds) {
  uint64_t gaps = 0;
  InitialScaffold(scaffoldInfo, scaffolds, scaffoldSum);
  LoadScaffolds(scaffoldInfo, scaffolds, scaffoldSum, gaps);
  const uint64_t kmers = kmersOfModel();
  const double nanoseconds = 1e9 / static_cast<double>(kmers);
  for (int round = 0; round < rounds; ++round) {
    const double index = secondsOf([&] {
      HashSet* set = newKmerHash(slots, LoadFactor);
      FetchKmers1(set, scaffoldInfo, scaffoldSum);
      slots = set->size;
      freeKmerHash(set);
    });
    const double writes = secondsOf([&] { atRandom(slots, kmers, write); });
    const double both = secondsOf([&] { atRandom(slots, kmers, readAndWrite); });
    std::cout << kmers << '\t' << index * nanoseconds << '\t' << writes * nanoseconds << '\t'
              << both * nanoseconds << '\n';
  }
}

}  // namespace
}  // namespace velk::bench

int main(int argc, char** argv) {
  CLI::App app{"Measures the index against bare loops that write as often."};
  std::string scaffolds;
  uint64_t slots = 0;
  int rounds = 5;
  app.add_option("scaffolds", scaffolds, "scaffold FASTA; side files are written beside it")
      ->required();
  app.add_option("slots", slots, "slots of the table")->required();
  app.add_option("--rounds", rounds, "how many times");
  app.add_option("--threads", velk::thread_num, "threads of the index");
  CLI11_PARSE(app, argc, argv);
  velk::bench::measure(scaffolds, slots, rounds);
}
