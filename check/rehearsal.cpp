#include "check/rehearsal.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <cmath>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "check/hyperLogLog.h"
#include "check/progress.h"
#include "check/readFile.h"
#include "driver/velk.h"
#include "kmer/Sequence.h"
#include "kmer/hashSet.h"
#include "kmer/packedBases.h"
#include "placement/Read2Scaf.h"
#include "streaming/library.h"
#include "streaming/lineSource.h"
#include "survey/costModel.h"
#include "survey/machine.h"

namespace velk::check {

void RefusingListener::end(ExitStatus status, std::string_view message) {
  while (message.ends_with('\n')) message.remove_suffix(1);
  throw Refusal{status, std::string(message)};
}

namespace {

constexpr std::size_t kRecords = 20000;  // that are read

// Reads records of `lines` lines, of which the second is kept. Returns the seconds for one.
template <class Source>
double secondsPerRecord(const std::string& file, int lines) {
  Source source(file);
  if (!source.open()) return 0;
  std::vector<std::string> reads(kRecords);
  const auto start = std::chrono::steady_clock::now();
  std::size_t records = 0;
  for (; records < kRecords && source.startRecord(); ++records) {
    source.keepLine(reads[records]);
    for (int i = 2; i < lines; ++i) source.skipLine();
  }
  const std::chrono::duration<double> used = std::chrono::steady_clock::now() - start;
  return records == 0 ? 0 : used.count() / static_cast<double>(records);
}

double secondsOfFile(const std::string& file, bool isGzip, int lines) {
  return isGzip ? secondsPerRecord<GzipLineSource>(file, lines)
                : secondsPerRecord<PlainLineSource>(file, lines);
}

}  // namespace

double secondsToReadRecord(const ReadInput& input) {
  const bool isGzip = isGzipName(input.fileA);
  const int lines = input.isFasta ? 2 : 4;
  const double first = secondsOfFile(input.fileA, isGzip, lines);
  if (!input.isPaired) return first;
  return first + (input.fileB.empty() ? first : secondsOfFile(input.fileB, isGzip, lines));
}

namespace {

constexpr uint64_t kLongIndexing = 3000000;  // k-mers, from which on it takes a second or so
constexpr double kShareOfFree = 0.25;        // of the free memory, that the index may take

// The k-mers, of all these, whose index takes no more than a part of the free memory.
uint64_t affordedKmers(uint64_t kmers) {
  const uint64_t bases = survey::contigBases(assemblyOfRun());
  const double each =
      static_cast<double>(survey::indexBytes(Kmer, kmers, bases)) / static_cast<double>(kmers);
  return static_cast<uint64_t>(kShareOfFree * static_cast<double>(survey::freeMemory()) / each);
}

// More than the estimate, so that with near certainty it is no less than the truth.
uint64_t sketchedKmers(uint64_t kmers) {
  constexpr double kDeviations = 4;
  HyperLogLog sketch;
  Progress progress("counting k-mers", kmers);
  uint64_t done = 0;
  PackedBases packed;
  survey::forEachContig(assemblyOfRun(), [&](const ContigInfo& contig) {
    const uint64_t windows = windowsOf(contig);
    if (windows == 0) return;
    const std::string_view bases = contig.bases();
    const auto length = static_cast<std::size_t>(Kmer);
    const bool isPacked = packed.fill(bases) && 1 <= Kmer && Kmer <= DATA_LEN;
    for (uint64_t w = 0; w < windows; ++w) {
      const uint64_t key = isPacked ? packed.at(w, Kmer) : packedKmer(bases.substr(w, length));
      sketch.add(hash_code(Entity{key, 0, 0, 0, 0}));
    }
    progress.update(done += windows);
  });
  const double high = sketch.estimate() * (1 + kDeviations * HyperLogLog::kError);
  return std::min(kmers, static_cast<uint64_t>(high));
}

}  // namespace

bool countKmers(Survey& survey) {
  survey.kmers = survey::indexedKmers(assemblyOfRun());
  return survey.kmers > 0;
}

double buildIndex(Survey& survey, uint64_t mostKmers) {
  assert(survey.kmers > 0);
  const survey::FirstContigs contigs(assemblyOfRun(),
                                     std::min(mostKmers, affordedKmers(survey.kmers)));
  {
    Progress progress("indexing", contigs.kmers());
    if (contigs.kmers() >= kLongIndexing) progress.show();
    survey.index = std::make_unique<survey::BoundedIndex>(contigs, Kmer, thread_num);
  }
  survey.secondsPerKmer = survey.index->secondsPerKmer();
  survey.isExact = contigs.areAll();
  survey.distinctKmers =
      survey.isExact ? survey.index->distinctKmers() : sketchedKmers(survey.kmers);
  return static_cast<double>(contigs.kmers()) / static_cast<double>(survey.kmers);
}

void measurePairs(Survey& survey) {
  assert(survey.index != nullptr);
  for (std::size_t library = 0; library < survey.measures.size(); ++library) {
    survey::PairSurvey pairs(*survey.index, assemblyOfRun(), optionsOfRun());
    for (const ReadInput& input : survey.inputs) {
      if (input.library != static_cast<int>(library) || !input.isReadable) continue;
      Progress progress("placing pairs", input.b.size());
      for (std::size_t i = 0; i < input.b.size(); ++i) {
        pairs.add(input.a[i], input.b[i]);
        progress.update(i);
      }
    }
    survey.measures[library] = pairs.measure();
  }
}

uint64_t searchSample(Survey& survey) {
  assert(survey.index != nullptr);
  std::vector<survey::Sample> samples;
  for (ReadInput& input : survey.inputs) {
    const int insert = input.isPaired ? survey.libs[input.library].avg_ins : 0;
    if (!input.isReadable || (insert != 0 && input.b.size() != input.a.size())) continue;
    samples.push_back({insert, std::move(input.a), std::move(input.b)});
  }
  const survey::SearchTrial trial =
      survey::trySearch(*survey.index, assemblyOfRun(), optionsOfRun(), std::move(samples));
  survey.secondsPerRead = trial.secondsPerRead();
  survey.foundPerRead = trial.foundPerRead();
  return trial.reads;
}

}  // namespace velk::check
