// A plan as a verb uses it: its files below a root, compared with what the plan says of them.
#include "run/plan.h"

#include "driver/velk.h"
#include "run/failure.h"
#include "run/preparation.h"
#include "run/savedIndex.h"

namespace velk::run {

PlanInUse::PlanInUse(const PlannedRequest& request)
    : request_(request), plan_(readPlan(request.plan)) {
  Arguments& ofPlan = plan_.arguments;
  const auto place = [&](std::string& name) {
    if (!name.empty()) name = fileAtRoot(name, request_.root);
  };
  ofPlan.folder = request.output;
  place(ofPlan.assembly);
  place(ofPlan.agp);
  for (Library& library : plan_.fixed.libraries) {
    for (reads::InputFiles& input : library.inputs) {
      place(input.first);
      place(input.second);
    }
  }
  ofPlan.libraries = plan_.fixed.libraries;
  ofPlan.index = request.index;
  saved_ = openIndex(ofPlan);
  sums_ = sumBeside(saved_);
  if (saved_ == nullptr) return;
  requireSources(*saved_, plan_);
  if (!plan_.index.empty() && plan_.index != saved_->checksum()) {
    throw Failure(
        Status::kFailed,
        saved_->file() + " is not the index that the plan was made with: its checksum differs");
  }
}

void PlanInUse::requireCommonFiles() const {
  if (saved_ != nullptr) return;
  for (const PlannedFile& file : plan_.common) {
    requireIdentity(fileAtRoot(file.name, request_.root), Summed::kAll, file.identity);
  }
}

void PlanInUse::requireInput(uint32_t input) const {
  for (const PlannedFile& file : plan_.inputs[input].files) {
    requireIdentity(fileAtRoot(file.name, request_.root), Summed::kEnds, file.identity);
  }
}

std::vector<std::string> PlanInUse::files() const {
  std::vector<std::string> all = filesOf(arguments());
  all.push_back(request_.plan);
  return all;
}

std::vector<InputFacts> PlanInUse::inputFacts() const {
  std::vector<InputFacts> facts;
  for (const PlannedInput& input : plan_.inputs) {
    InputFacts ofInput{plan_.fixed.libraries[input.library].name,
                       {},
                       input.areInterleaved || input.files.size() == 2,
                       0,
                       {}};
    for (const PlannedFile& file : input.files) {
      ofInput.files.push_back({file.name, file.identity.bytes});
    }
    facts.push_back(ofInput);
  }
  return facts;
}

InputFile PlanInUse::assemblyFacts() const {
  const PlannedFile& file = plan_.common.front();
  return {file.name, file.identity.bytes};
}

std::unique_ptr<Assembly> PlanInUse::assembly() const {
  Kmer = arguments().kmer;  // read by the index
  std::unique_ptr<Assembly> assembly = loadAssembly(arguments(), fixed().readLength, saved_);
  assembly->lengthenPlaceholders(fixed().placeholderLength);
  return assembly;
}

}  // namespace velk::run
