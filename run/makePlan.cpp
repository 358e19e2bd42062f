// The verb plan: measures the inputs and writes the plan of a run.
#include <cmath>

#include "driver/velk.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/plan.h"
#include "run/preparation.h"
#include "run/results.h"
#include "run/savedIndex.h"
#include "run/session.h"
#include "run/verbs.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

constexpr double kFaster = 0.8;  // of the time of one run, below which tasks pay

PlannedFile plannedFile(const std::string& file, const std::string& root, Summed summed) {
  const FileIdentity identity = identityOf(file, summed);
  return {nameFromRoot(file, root), identity};
}

// All files, as they are now.
void addFiles(Plan& plan, const Arguments& arguments, const std::string& root) {
  plan.common.push_back(plannedFile(arguments.assembly, root, Summed::kAll));
  if (!arguments.agp.empty()) {
    plan.common.push_back(plannedFile(arguments.agp, root, Summed::kAll));
  }
  for (uint32_t n = 0; n < arguments.libraries.size(); ++n) {
    for (const reads::InputFiles& files : arguments.libraries[n].inputs) {
      PlannedInput input{
          n, {plannedFile(files.first, root, Summed::kEnds)}, files.areInterleaved, {}};
      if (!files.second.empty()) {
        input.files.push_back(plannedFile(files.second, root, Summed::kEnds));
      }
      plan.inputs.push_back(input);
    }
  }
}

std::string minutesText(double seconds) {
  return durationText(std::ceil(seconds));
}

// What a user wants to know before tasks are submitted.
std::vector<std::string> closingLines(const Plan& plan, const std::string& file) {
  std::vector<TaskEstimate> tasks;
  uint64_t memory = 0;
  for (const PlannedInput& input : plan.inputs) {
    tasks.push_back(input.estimate);
    memory = std::max(memory, input.estimate.memory);
  }
  const RunEstimate estimate = estimateRun(tasks, plan.estimate);
  std::vector<std::string> lines;
  lines.push_back("Planned " + countText(tasks.size()) +
                  (tasks.size() == 1 ? " task in " : " tasks in ") + file + ", each with " +
                  std::to_string(plan.threads) + (plan.threads == 1 ? " thread" : " threads") +
                  " and up to " + countText(memory / 1000000 + 1) + " MB of memory.");
  lines.push_back("One run takes about " + minutesText(estimate.oneRun) +
                  "; all tasks at once, and gathering, about " + minutesText(estimate.inTasks) +
                  ".");
  if (estimate.inTasks > kFaster * estimate.oneRun) {
    lines.emplace_back("One machine is as fast: velk-run --plan does it in one go.");
  }
  return lines;
}

}  // namespace

void makePlan(const Arguments& arguments, const std::string& root) {
  Kmer = arguments.kmer;  // read by the index
  Session session(arguments.quiet, arguments.force, arguments.threads);
  requireNoInput(arguments.folder, filesOf(arguments), "plan");
  session.judge(checkFiles(arguments.assembly, arguments.libraries));
  const std::shared_ptr<const SavedIndex> saved = openIndex(arguments);
  const std::shared_future<void> sums = sumBeside(saved);
  Plan plan;
  plan.arguments = arguments;
  addFiles(plan, arguments, root);
  if (saved != nullptr) {
    requireSources(*saved, plan);
    plan.index = saved->checksum();
  }
  session.begin("preparing");
  // Samples are taken without helpers, so that a plan is the same on every machine.
  Preparation preparation(arguments, 1, session, saved);
  plan.fixed = preparation.measure();
  plan.threads = session.threads();
  plan.estimate = estimateCommon(preparation.assembly(), arguments.kmer, plan.threads);
  for (std::size_t n = 0; n < plan.inputs.size(); ++n) {
    const OpenInput& input = preparation.inputs().all()[n];
    plan.inputs[n].estimate = estimateTask(input, preparation.foundPerRead(input, plan.fixed),
                                           plan.threads, plan.estimate);
  }
  plan.warnings = session.warnings();
  sums.get();
  const std::string text = textOfPlan(plan);
  writeWhole(arguments.folder, [&](int descriptor, const std::string& name) {
    writeDescriptor(descriptor, name, text);
  });
  for (const std::string& line : closingLines(plan, arguments.folder)) session.say(line);
}

}  // namespace velk::run
