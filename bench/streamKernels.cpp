// Kernels of streaming: the line sources and the output.
#include <benchmark/benchmark.h>

#include "bench/world.h"
#include "streaming/lineSource.h"
#include "streaming/readBuffer.h"

namespace velk::bench {
namespace {

// The line sources, a FASTQ record.

template <class Source>
void lines(benchmark::State& state, const std::string& name) {
  const std::string file = readFile(name);
  std::string entry;
  int64_t records = 0;
  for (auto _ : state) {
    Source source(file);
    if (!source.open()) state.SkipWithError("no file");
    for (; source.startRecord(); ++records) {
      source.keepLine(entry);
      source.skipLine();
      source.skipLine();
    }
    source.finish();
  }
  state.SetItemsProcessed(records);
}

void plainLines(benchmark::State& state) {
  lines<PlainLineSource>(state, "reads.fq");
}
BENCHMARK(plainLines);

void gzipLines(benchmark::State& state) {
  lines<GzipLineSource>(state, "reads.fq.gz");
}
BENCHMARK(gzipLines);

// Output, a record.

void output(benchmark::State& state) {
  makeWorld();
  constexpr uint32_t kRecords = 10000;
  fout.open("/dev/null");
  std::mt19937_64 random(10);
  const std::string read = randomBases(random, kRead);
  uint32_t n = 0;
  while (n < kRecords) recordFound(0, n, read, {n % scaffoldSum, n, -75, 0, 300});
  foundReadNum[0] = kRecords;
  for (auto _ : state) OutputBuffer();
  foundReadNum[0] = 0;
  fout.close();
  state.SetItemsProcessed(state.iterations() * int64_t{kRecords});
}
BENCHMARK(output);

}  // namespace
}  // namespace velk::bench

BENCHMARK_MAIN();
