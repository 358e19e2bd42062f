// The verb gather: the shares of all tasks of a plan become one result.
#include <algorithm>
#include <map>
#include <utility>

#include "run/failure.h"
#include "run/foundStore.h"
#include "run/plan.h"
#include "run/preflight.h"
#include "run/resultNames.h"
#include "run/results.h"
#include "run/session.h"
#include "run/share.h"
#include "run/verbs.h"
#include "survey/machine.h"

namespace velk::run {
namespace {

// A share, and the folder that holds it.
struct Held {
  std::string folder;
  Share share;
};

[[noreturn]] void fail(const std::string& what) {
  throw Failure(Status::kFailed, what);
}

std::string nameOf(const Plan& plan, uint32_t task) {
  std::string name = "task " + std::to_string(task) + " (";
  for (const PlannedFile& file : plan.inputs[task].files) {
    name += (name.ends_with('(') ? "" : ", ") + file.name;
  }
  return name + ")";
}

// Throws Failure unless it is one of the plan's, made by this program of the plan's files.
void requireOwn(const Held& held, const Plan& plan, const std::string& program) {
  const Share& share = held.share;
  if (share.plan != plan.checksum || share.task >= plan.inputs.size()) {
    fail(held.folder + " is a share of another plan");
  }
  if (share.program != program) {
    fail(held.folder + " was made by another velk-run than this one");
  }
  const auto& files = plan.inputs[share.task].files;
  const bool areSame =
      std::equal(files.begin(), files.end(), share.inputs.begin(), share.inputs.end(),
                 [](const PlannedFile& file, const FileIdentity& identity) {
                   return file.identity == identity;
                 });
  if (!areSame) fail(held.folder + " was made of other files than the plan's");
}

// All shares of the plan, in the order of its tasks.
std::vector<Held> readShares(const Plan& plan, const std::vector<std::string>& folders) {
  if (const uint64_t handles = folders.size() + kOtherFiles; handles > survey::fileHandles()) {
    fail("too many shares for one process (ulimit -n): it opens " + countText(handles) +
         " files, and " + countText(survey::fileHandles()) + " are allowed");
  }
  const std::string program = ownChecksum();
  std::map<uint32_t, Held> shares;
  for (const std::string& folder : folders) {
    Held held{folder, readShare(folder)};
    requireOwn(held, plan, program);
    const uint32_t task = held.share.task;
    held.share.library = plan.inputs[task].library;
    const auto [other, isNew] = shares.emplace(task, std::move(held));
    if (!isNew) {
      fail(other->second.folder + " and " + folder + " are both shares of " + nameOf(plan, task));
    }
  }
  std::vector<Held> all;
  for (uint32_t task = 0; task < plan.inputs.size(); ++task) {
    const auto found = shares.find(task);
    if (found == shares.end()) fail("the share of " + nameOf(plan, task) + " is missing");
    all.push_back(std::move(found->second));
  }
  return all;
}

// Adds up what the tasks have counted.
void addCounts(const Held& held, Searched& searched) {
  const Share& share = held.share;
  InputFacts& input = searched.inputs[share.task];
  input.records = share.records;
  input.fixes = share.fixes;
  searched.counts[share.library] += share.counts;
  searched.machines.insert(share.machine);
  searched.peakMemory = std::max(searched.peakMemory, share.peakMemory);
  searched.spilledBytes += share.spilledBytes;
  for (const PhaseTime& time : share.times) {
    const auto same = std::find_if(searched.times.begin(), searched.times.end(),
                                   [&](const PhaseTime& sum) { return sum.name == time.name; });
    if (same == searched.times.end()) {
      searched.times.push_back(time);
    } else {
      same->seconds += time.seconds;
    }
  }
}

std::vector<std::string> filesRead(const PlanInUse& plan, const std::vector<std::string>& shares) {
  std::vector<std::string> files = plan.files();
  for (const std::string& share : shares) {
    for (const char* name : shareForm().names) files.push_back(share + "/" + name);
  }
  return files;
}

}  // namespace

void gather(const PlannedRequest& request, const std::vector<std::string>& shares,
            const ReportMaker& makeReport) {
  Session session(request.isQuiet, false, request.threads);
  const PlanInUse plan(request);
  const std::vector<Held> all = readShares(plan.plan(), shares);
  const Arguments& arguments = plan.arguments();
  const FixedValues& fixed = plan.fixed();
  Results results(arguments, filesRead(plan, shares));
  session.begin("gathering");
  plan.requireCommonFiles();
  const std::unique_ptr<Assembly> assembly = plan.assembly();
  results.clear();
  FoundStore found(results.folder(), *assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  Searched searched{plan.assemblyFacts(), plan.inputFacts(),
                    std::vector<ReadCounts>(fixed.libraries.size())};
  searched.warnings = plan.plan().warnings;
  for (const Held& held : all) {
    found.addShare(held.folder, held.share);
    addCounts(held, searched);
  }
  plan.requireIndex();
  results.finish(*assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

}  // namespace velk::run
