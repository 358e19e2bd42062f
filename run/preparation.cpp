#include "run/preparation.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "driver/velk.h"
#include "run/assembly.h"
#include "run/estimate.h"
#include "run/flanks.h"
#include "run/inputs.h"
#include "run/savedIndex.h"
#include "run/terminal.h"
#include "survey/boundedIndex.h"
#include "survey/costModel.h"

namespace velk::run {
namespace {

// Of the index on which libraries are measured: so many that some thousand pairs of a sample lie on
// it, or as many as take seconds.
constexpr double kMeasuredShare = 0.15;
constexpr uint64_t kLeastMeasured = 2000000;
constexpr uint64_t kMostMeasured = 50000000;
constexpr int kUsualReadLength = 100;  // bases, of a run without pairs

int longestShortInsert(const std::vector<Library>& libraries) {
  int longest = 0;
  for (const Library& library : libraries) {
    const auto insert = static_cast<int>(std::lround(library.insert));
    if (insert < MINLARGEINSERT) longest = std::max(longest, insert);
  }
  return longest;
}

// How far the pairs of any library reach, bases.
uint64_t longestReach(const std::vector<Library>& libraries) {
  double reach = 0;
  for (const Library& library : libraries) {
    reach = std::max(reach, library.insert + kDeviations * library.spread);
  }
  return static_cast<uint64_t>(std::llround(reach));
}

std::vector<std::string> basesOf(const std::vector<reads::KeptRead>& reads) {
  std::vector<std::string> bases;
  bases.reserve(reads.size());
  for (const reads::KeptRead& read : reads) bases.push_back(read.bases);
  return bases;
}

}  // namespace

CutOptions cutOptionsOf(const Arguments& arguments, int readLength) {
  return {arguments.shortestContig, arguments.cut, readLength};
}

std::shared_ptr<const SavedIndex> openIndex(const Arguments& arguments) {
  if (arguments.index.empty()) return nullptr;
  auto saved = std::make_shared<const SavedIndex>(arguments.index);
  saved->requireOptions(arguments);
  return saved;
}

std::unique_ptr<Assembly> loadAssembly(const Arguments& arguments, int readLength,
                                       std::shared_ptr<const SavedIndex> saved) {
  const CutOptions options = cutOptionsOf(arguments, readLength);
  if (saved == nullptr) {
    return std::make_unique<Assembly>(arguments.assembly, options,
                                      readPlaceholders(arguments.placeholders, arguments.agp));
  }
  saved->requireReadLength(readLength);
  return std::make_unique<Assembly>(arguments.assembly, options, std::move(saved));
}

Preparation::Preparation(const Arguments& arguments, int threads, Session& session,
                         std::shared_ptr<const SavedIndex> saved)
    : arguments_(arguments),
      threads_(threads),
      session_(session),
      inputs_(std::make_unique<Inputs>(arguments.libraries, threads)) {
  session_.judge(checkSamples(*inputs_));
  readLength_ = readLengthOfSamples();
  assembly_ = loadAssembly(arguments, readLength_, std::move(saved));
  session_.judge(
      checkAssembly(*assembly_, !arguments.placeholders.empty() || !arguments.agp.empty()));
}

int Preparation::readLengthOfSamples() const {
  if (arguments_.readLength != 0) return arguments_.readLength;
  const std::size_t longest = inputs_->longestPairedRead();
  return longest == 0 ? kUsualReadLength : static_cast<int>(longest);
}

FixedValues Preparation::measure() {
  FixedValues fixed;
  fixed.libraries = arguments_.libraries;
  fixed.readLength = readLength_;
  for (Library& library : fixed.libraries) library.isInsertGiven = library.insert != 0;
  measureOn(fixed);
  fixed.bigGapLength = readLength_ + longestShortInsert(fixed.libraries);
  fixed.placeholderLength = longestReach(fixed.libraries);
  return fixed;
}

// Measures the libraries (inout) on an index of a part of the assembly.
void Preparation::measureOn(FixedValues& fixed) {
  const survey::Scaffolds scaffolds(assembly_->model(), assembly_->scaffolds().size());
  const uint64_t kmers = survey::indexedKmers(scaffolds);
  if (kmers == 0) return;
  const auto some = static_cast<uint64_t>(kMeasuredShare * static_cast<double>(kmers));
  index_ = std::make_unique<survey::BoundedIndex>(
      survey::FirstContigs(scaffolds, std::clamp(some, kLeastMeasured, kMostMeasured)),
      arguments_.kmer, threads_);
  measureLibraries(fixed.libraries, *inputs_, *index_, scaffolds,
                   {arguments_.kmer, 0, 0, readLength_, arguments_.mapCut, arguments_.overRatio},
                   threads_);
  session_.judge(checkLibraries(arguments_.libraries, fixed.libraries));
}

double Preparation::foundPerRead(const OpenInput& input, const FixedValues& fixed) const {
  if (index_ == nullptr) return 0;
  const Library& library = fixed.libraries[input.library];
  survey::Sample sample{0, basesOf(input.sample().first), basesOf(input.sample().second)};
  if (library.arePairs()) sample.insert = static_cast<int>(std::lround(library.insert));
  const survey::Scaffolds scaffolds(assembly_->model(), assembly_->scaffolds().size());
  const survey::SearchTrial trial =
      survey::trySearch(*index_, scaffolds,
                        {arguments_.kmer, 0, fixed.bigGapLength, readLength_, arguments_.mapCut,
                         arguments_.overRatio},
                        {sample});
  const auto part = static_cast<double>(index_->contigs().kmers());
  return trial.foundPerRead() * static_cast<double>(survey::indexedKmers(scaffolds)) / part;
}

namespace {

// How far into the contigs beside a gap its reads may lie: as far as the fragments of the libraries
// that are used there, or a read.
FlankReach flankReach(const FixedValues& fixed) {
  const auto readLength = static_cast<uint64_t>(fixed.readLength);
  FlankReach reach{static_cast<uint64_t>(fixed.bigGapLength), readLength, readLength};
  for (const Library& library : fixed.libraries) {
    const auto bases =
        static_cast<uint64_t>(std::llround(library.insert + kDeviations * library.spread));
    reach.atBigGaps = std::max(reach.atBigGaps, bases);
    const bool isForAll = std::lround(library.insert) <= fixed.bigGapLength;
    if (isForAll) reach.atOthers = std::max(reach.atOthers, bases);
  }
  return reach;
}

}  // namespace

void setIndex(SeedIndex& index, const Assembly& assembly, int kmer, int threads) {
  if (assembly.saved() != nullptr) return assembly.saved()->setIndex(index, assembly);
  const auto scaffolds = static_cast<uint32_t>(assembly.scaffolds().size());
  if (!index.build(assembly.model(), scaffolds, kmer, threads)) throw std::bad_alloc();
}

std::vector<ReadCounts> searchInputs(const ToSearch& toSearch, Session& session,
                                     FoundReceiver& receiver) {
  const Arguments& arguments = toSearch.arguments;
  const FixedValues& fixed = toSearch.fixed;
  session.begin("indexing");
  Kmer = arguments.kmer;  // read by the index
  SeedIndex index;
  setIndex(index, toSearch.assembly, arguments.kmer, session.threads());
  const SearchValues values{arguments.kmer,   fixed.readLength,    fixed.bigGapLength,
                            arguments.mapCut, arguments.overRatio, session.threads()};
  const uint64_t bytes = toSearch.inputs.bytes();
  session.begin("searching");
  std::vector<ReadCounts> counts =
      Search(toSearch.assembly, index, fixed.libraries, values)
          .run(toSearch.inputs.toSearch(), receiver, [&](const Progress& progress) {
            if (bytes == 0) return session.terminal().update(0, progress.reads, 0);
            const double done = static_cast<double>(progress.bytes) / static_cast<double>(bytes);
            const double records = static_cast<double>(receiver.records()) / done;
            session.terminal().update(done, progress.reads,
                                      writeSeconds(records, session.threads()));
          });
  noteRepeats(index.text(), toSearch.assembly, flankReach(fixed), receiver.evidence());
  return counts;
}

}  // namespace velk::run
