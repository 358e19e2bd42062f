// A run in one piece, and one task of a plan.
#include <future>
#include <optional>

#include "driver/velk.h"
#include "run/checksum.h"
#include "run/failure.h"
#include "run/foundStore.h"
#include "run/plan.h"
#include "run/preparation.h"
#include "run/resultFolder.h"
#include "run/resultNames.h"
#include "run/results.h"
#include "run/savedIndex.h"
#include "run/session.h"
#include "run/share.h"
#include "run/verbs.h"

namespace velk::run {
namespace {

// Throws Failure unless the index is that of these files. All of the assembly is summed by a thread
// beside the run, as nothing else reads it: the future holds what comes of it.
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
  const std::shared_future<void> sums = sumBeside(saved);
  Results results(arguments, filesOf(arguments));
  session.begin("preparing");
  Preparation preparation(arguments, session.threads(), session, saved);
  Assembly& assembly = preparation.assembly();
  session.judge(checkMemory(assembly, arguments.kmer));
  const FixedValues fixed = preparation.measure();
  assembly.lengthenPlaceholders(fixed.placeholderLength);

  results.clear();
  FoundStore found(results.folder(), assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  const Inputs& inputs = preparation.inputs();
  Searched searched{factsOf(arguments.assembly), inputFactsOf(fixed.libraries), {}};
  searched.counts = searchInputs({arguments, assembly, fixed, inputs}, session, found);
  for (std::size_t n = 0; n < inputs.all().size(); ++n) {
    setCounts(searched.inputs[n], *inputs.all()[n].reads);
  }
  if (saved != nullptr) saved->requireAssembly(arguments.assembly, sum.get());
  sums.get();
  searched.warnings = session.warnings();
  session.begin("writing");
  results.finish(assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

void runPlan(const PlannedRequest& request, const ReportMaker& makeReport) {
  Session session(request.isQuiet, request.isForced, request.threads);
  const PlanInUse plan(request);
  const Arguments& arguments = plan.arguments();
  const FixedValues& fixed = plan.fixed();
  Results results(arguments, plan.files());
  session.begin("preparing");
  plan.requireCommonFiles();
  const auto inputCount = static_cast<uint32_t>(plan.plan().inputs.size());
  for (uint32_t n = 0; n < inputCount; ++n) plan.requireInput(n);
  const Inputs inputs(fixed.libraries, session.threads(), std::nullopt);
  const std::unique_ptr<Assembly> assembly = plan.assembly();
  session.judge(checkMemory(*assembly, arguments.kmer));

  results.clear();
  FoundStore found(results.folder(), *assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  Searched searched{plan.assemblyFacts(), plan.inputFacts(), {}};
  searched.warnings = plan.plan().warnings;
  searched.counts = searchInputs({arguments, *assembly, fixed, inputs}, session, found);
  for (uint32_t n = 0; n < inputCount; ++n) {
    plan.requireInput(n);
    setCounts(searched.inputs[n], *inputs.all()[n].reads);
  }
  plan.requireIndex();
  session.begin("writing");
  results.finish(*assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

namespace {

uint32_t requireTask(const PlanInUse& plan, const std::string& file, uint64_t task) {
  const std::size_t tasks = plan.plan().inputs.size();
  if (task < tasks) return static_cast<uint32_t>(task);
  throw Failure(Status::kUsage, "there is no task " + std::to_string(task) + "; " + file + " has " +
                                    std::to_string(tasks) + ", numbered from 0");
}

// The share as far as the plan fixes it.
Share shareOf(const Plan& plan, uint32_t task) {
  Share share;
  share.program = ownChecksum();
  share.plan = plan.checksum;
  share.task = task;
  share.library = plan.inputs[task].library;
  for (const PlannedFile& file : plan.inputs[task].files) share.inputs.push_back(file.identity);
  return share;
}

}  // namespace

void runTask(const PlannedRequest& request, uint64_t number) {
  Session session(request.isQuiet, request.isForced, request.threads);
  const PlanInUse plan(request);
  const uint32_t task = requireTask(plan, request.plan, number);
  const Arguments& arguments = plan.arguments();
  const FixedValues& fixed = plan.fixed();
  requireNoOther(request.output, plan.plan().checksum);
  ResultFolder folder(request.output, plan.files(), shareForm());
  folder.begin();
  session.begin("preparing");
  plan.requireCommonFiles();
  plan.requireInput(task);
  const Inputs inputs(fixed.libraries, session.threads(), task);
  const std::unique_ptr<Assembly> assembly = plan.assembly();
  session.judge(checkMemory(*assembly, arguments.kmer));

  folder.clear();
  FoundStore found(folder, *assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  Share share = shareOf(plan.plan(), task);
  share.counts = searchInputs({arguments, *assembly, fixed, inputs}, session, found)[share.library];
  plan.requireInput(task);
  const reads::ReadInput& input = *inputs.all().front().reads;
  share.records = input.records();
  share.fixes = input.fixes();
  session.begin("writing");
  found.writeShare(share);
  share.files = folder.seal(session.threads());
  plan.requireIndex();
  session.end();
  share.times = session.times();
  share.machine = machineName();
  share.peakMemory = peakMemory();
  folder.publish(shareText(share));
  session.say("Task " + std::to_string(task) + " of " + request.plan + ": found " +
              countText(share.found) + " of " +
              countText(share.records * (input.files().arePairs() ? 2 : 1)) + " reads; share in " +
              folder.path());
}

}  // namespace velk::run
