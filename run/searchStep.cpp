#include "run/searchStep.h"

#include <new>
#include <optional>

#include "driver/velk.h"
#include "run/terminal.h"

namespace velk::run {
namespace {

constexpr double kWritingShare = 0.1;  // of the time of the search, that writing takes

}  // namespace

std::vector<ReadCounts> searchInputs(const ToSearch& toSearch, Session& session,
                                     FoundReceiver& receiver) {
  const Arguments& arguments = toSearch.arguments;
  const FixedValues& fixed = toSearch.fixed;
  session.begin("indexing");
  Kmer = arguments.kmer;  // read by the index
  SeedIndex index;
  if (!index.build(toSearch.assembly.model(),
                   static_cast<uint32_t>(toSearch.assembly.scaffolds().size()), arguments.kmer,
                   session.threads())) {
    throw std::bad_alloc();
  }
  const SearchValues values{arguments.kmer,   fixed.readLength,    fixed.bigGapLength,
                            arguments.mapCut, arguments.overRatio, session.threads()};
  const uint64_t bytes = toSearch.inputs.bytes();
  session.begin("searching", bytes == 0 ? std::nullopt : std::optional(kWritingShare));
  return Search(toSearch.assembly, index, fixed.libraries, values)
      .run(toSearch.inputs.toSearch(), receiver, [&](const Progress& progress) {
        const double done =
            bytes == 0 ? 0 : static_cast<double>(progress.bytes) / static_cast<double>(bytes);
        session.terminal().update(done, progress.reads);
      });
}

}  // namespace velk::run
