#include "run/run.h"

#include <future>
#include <optional>

#include "driver/velk.h"
#include "run/fileIdentity.h"
#include "run/foundStore.h"
#include "run/preparation.h"
#include "run/results.h"
#include "run/savedIndex.h"
#include "run/searchStep.h"
#include "run/session.h"

namespace velk::run {

namespace {

// Throws Failure unless the index is that of these files. All of the assembly is summed by a thread
// beside the run, as nothing else reads it: what comes of it is told by the future.
std::future<FileIdentity> requireSources(const SavedIndex* saved, const Arguments& arguments) {
  if (saved == nullptr) return {};
  saved->requireAssemblyEnds(arguments.assembly, identityOf(arguments.assembly, Summed::kEnds));
  saved->requireAgp(arguments.agp.empty() ? std::nullopt
                                          : std::optional(identityOf(arguments.agp, Summed::kAll)));
  return std::async([&] { return identityOf(arguments.assembly, Summed::kAll); });
}

}  // namespace

void runAll(const Arguments& arguments, const ReportMaker& makeReport) {
  Kmer = arguments.kmer;  // read by the index
  Session session(arguments.quiet, arguments.force, arguments.threads);
  session.judge(checkFiles(arguments.assembly, arguments.libraries));
  const std::shared_ptr<const SavedIndex> saved = openIndex(arguments);
  std::future<FileIdentity> sum = requireSources(saved.get(), arguments);
  Results results(arguments, filesOf(arguments));
  session.begin("preparing");
  Preparation preparation(arguments, session.threads(), session, saved);
  Assembly& assembly = preparation.assembly();
  session.judge(checkMemory(assembly, arguments.kmer));
  const FixedValues fixed = preparation.measure();
  assembly.lengthenPlaceholders(fixed.placeholderLength);

  FoundStore found(results.folder(), assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  const Inputs& inputs = preparation.inputs();
  Searched searched{factsOf(arguments.assembly), inputFactsOf(fixed.libraries), {}};
  searched.counts = searchInputs({arguments, assembly, fixed, inputs}, session, found);
  for (std::size_t n = 0; n < inputs.all().size(); ++n) {
    setCounts(searched.inputs[n], *inputs.all()[n].reads);
  }
  if (saved != nullptr) saved->requireAssembly(arguments.assembly, sum.get());
  searched.warnings = session.warnings();
  session.begin("writing");
  results.finish(assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

}  // namespace velk::run
