#include "run/failure.h"
#include "run/foundStore.h"
#include "run/planInUse.h"
#include "run/planned.h"
#include "run/resultFolder.h"
#include "run/resultNames.h"
#include "run/searchStep.h"
#include "run/session.h"
#include "run/share.h"

namespace velk::run {
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
  ResultFolder folder(request.output, plan.files(), shareForm());
  folder.begin();
  session.begin("preparing");
  plan.requireCommonFiles();
  plan.requireInput(task);
  const Inputs inputs(fixed.libraries, session.threads(), task);
  const std::unique_ptr<Assembly> assembly = plan.assembly();
  session.judge(checkMemory(*assembly, arguments.kmer));

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
  session.end();
  share.times = session.times();
  share.peakMemory = peakMemory();
  folder.publish(shareText(share));
  session.say("Task " + std::to_string(task) + " of " + request.plan + ": found " +
              countText(share.found) + " of " +
              countText(share.records * (input.files().arePairs() ? 2 : 1)) + " reads; share in " +
              folder.path());
}

}  // namespace velk::run
