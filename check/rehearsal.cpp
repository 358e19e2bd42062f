#include "check/rehearsal.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <optional>

#include "check/hyperLogLog.h"
#include "check/machine.h"
#include "check/memoryModel.h"
#include "check/pairGeometry.h"
#include "check/progress.h"
#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/contigWindows.h"
#include "kmer/fetchKmers.h"
#include "kmer/hashSet.h"
#include "kmer/rollingKey.h"
#include "placement/Read2Scaf.h"
#include "streaming/readBuffer.h"

namespace velk::check {
namespace {

constexpr uint64_t kLongIndexing = 3000000;  // k-mers, from which on it takes a second or so
constexpr double kShareOfFree = 0.25;        // of the free memory, that the index may take
constexpr float kRoomy = 0.75F;              // load factor of a table with two slots a k-mer

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

// The first part of the model, up to a number of k-mers: whole scaffolds and some contigs of one
// more. As long as it lives the scaffold in which it ends has no other contigs.
class ModelPart {
 public:
  explicit ModelPart(uint64_t mostKmers) {
    for (; scaffolds_ < scaffoldSum; ++scaffolds_) {
      ScaffoldInfo& info = scaffoldInfo[scaffolds_];
      for (uint32_t j = 0; j < info.contigsSum; ++j) {
        const uint64_t windows = windowsOf(info.contigsInfo[j]);
        if (kmers_ > 0 && kmers_ + windows > mostKmers) {
          cut_ = &info;
          whole_ = info.contigsSum;
          info.contigsSum = j;
          ++scaffolds_;
          return;
        }
        kmers_ += windows;
      }
    }
  }
  ~ModelPart() {
    if (cut_ != nullptr) cut_->contigsSum = whole_;
  }
  ModelPart(const ModelPart&) = delete;
  ModelPart& operator=(const ModelPart&) = delete;

  uint32_t scaffolds() const { return scaffolds_; }
  uint64_t kmers() const { return kmers_; }
  bool isAll() const { return cut_ == nullptr; }

 private:
  uint32_t scaffolds_ = 0;
  uint64_t kmers_ = 0;
  ScaffoldInfo* cut_ = nullptr;
  uint32_t whole_ = 0;
};

// The k-mers, of all these, whose index takes no more than a part of the free memory.
uint64_t affordedKmers(uint64_t kmers) {
  const double each =
      static_cast<double>(indexBytes(kmers, contigBases())) / static_cast<double>(kmers);
  return static_cast<uint64_t>(kShareOfFree * static_cast<double>(freeMemory()) / each);
}

template <class OnContig>
void forEachContig(OnContig onContig) {
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      onContig(scaffoldInfo[i].contigsInfo[j]);
    }
  }
}

// More than the estimate, so that with near certainty it is no less than the truth.
uint64_t sketchedKmers(uint64_t kmers) {
  constexpr double kDeviations = 4;
  HyperLogLog sketch;
  Progress progress("counting k-mers", kmers);
  uint64_t done = 0;
  forEachContig([&](const ContigInfo& contig) {
    const uint64_t windows = windowsOf(contig);
    if (windows == 0) return;
    RollingKey keys(contig.contigSeq, Kmer);
    for (uint64_t w = 0; w < windows; ++w) {
      if (w != 0) keys.advance();
      sketch.add(hash_code(Entity{keys.key(), 0, 0, 0, 0}));
    }
    progress.update(done += windows);
  });
  const double high = sketch.estimate() * (1 + kDeviations * HyperLogLog::kError);
  return std::min(kmers, static_cast<uint64_t>(high));
}

}  // namespace

bool countKmers(Survey& survey) {
  forEachContig([&](const ContigInfo& contig) { survey.kmers += windowsOf(contig); });
  return survey.kmers > 0;
}

double buildIndex(Survey& survey, uint64_t mostKmers) {
  uint64_t indexed = 0;
  {
    const ModelPart part(std::min(mostKmers, affordedKmers(survey.kmers)));
    indexed = part.kmers();
    survey.isExact = part.isAll();
    kmerHash = newKmerHash(2 * indexed, kRoomy);
    Progress progress("indexing", indexed);
    if (indexed >= kLongIndexing) progress.show();
    const Clock::time_point start = Clock::now();
    FetchKmers1(kmerHash, scaffoldInfo, part.scaffolds());
    survey.secondsPerKmer = secondsSince(start) / static_cast<double>(indexed);
  }
  survey.distinctKmers = survey.isExact ? kmerHash->count : sketchedKmers(survey.kmers);
  return static_cast<double>(indexed) / static_cast<double>(survey.kmers);
}

void measurePairs(Survey& survey) {
  Engine engine = engineOfRun();
  std::vector<uint64_t> lengths;
  forEachContig([&](const ContigInfo& contig) {
    if (windowsOf(contig) > 0) lengths.push_back(contig.contigSeq.size());
  });
  for (std::size_t library = 0; library < survey.measures.size(); ++library) {
    PairGeometry geometry(lengths);
    for (const ReadInput& input : survey.inputs) {
      if (input.library != static_cast<int>(library) || !input.isReadable) continue;
      Progress progress("placing pairs", input.b.size());
      for (std::size_t i = 0; i < input.b.size(); ++i) {
        const std::optional<ReadPlace> one = placeOfRead(engine, input.a[i]);
        const std::optional<ReadPlace> other = one ? placeOfRead(engine, input.b[i]) : std::nullopt;
        if (other) geometry.add(*one, *other);
        progress.update(i);
      }
    }
    survey.measures[library] = geometry.measure();
  }
}

uint64_t searchSample(Survey& survey) {
  const int before = thread_num;
  thread_num = threadNum = 1;
  allocateWorkerArrays(1);
  allocateRow(0, 1);
  uint64_t searched = 0;
  uint64_t found = 0;
  const Clock::time_point start = Clock::now();
  for (ReadInput& input : survey.inputs) {
    const int insert = survey.libs[input.library].avg_ins;
    const bool asPairs = input.isPaired && insert != 0;
    if (!input.isReadable || (asPairs && input.b.size() != input.a.size())) continue;
    insertLength = asPairs ? insert : 0;
    readsA = input.a.data();
    readsB = asPairs ? input.b.data() : nullptr;
    bufferNum = static_cast<int>(input.a.size());
    FindReads(0);
    found += foundReadNum[0];
    searched += input.a.size() * (asPairs ? 2 : 1);
  }
  const double seconds = secondsSince(start);
  readsA = readsB = nullptr;
  releaseRows(1);
  thread_num = before;
  if (searched > 0) {
    survey.secondsPerRead = seconds / static_cast<double>(searched);
    survey.foundPerRead = static_cast<double>(found) / static_cast<double>(searched);
  }
  return searched;
}

}  // namespace velk::check
