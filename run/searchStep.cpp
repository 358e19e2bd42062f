#include "run/searchStep.h"

#include <algorithm>
#include <cmath>
#include <new>

#include "driver/velk.h"
#include "run/estimate.h"
#include "run/gapFlanks.h"
#include "run/savedIndex.h"
#include "run/terminal.h"

namespace velk::run {
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
