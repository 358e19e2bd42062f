#include "run/foundStore.h"
#include "run/planInUse.h"
#include "run/planned.h"
#include "run/results.h"
#include "run/searchStep.h"
#include "run/session.h"

namespace velk::run {

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

  FoundStore found(results.folder(), *assembly, fixed.libraries,
                   outputOptionsOf(arguments, session.threads()), arguments.native);
  Searched searched{plan.assemblyFacts(), plan.inputFacts(), {}};
  searched.warnings = plan.plan().warnings;
  searched.counts = searchInputs({arguments, *assembly, fixed, inputs}, session, found);
  for (uint32_t n = 0; n < inputCount; ++n) {
    plan.requireInput(n);
    setCounts(searched.inputs[n], *inputs.all()[n].reads);
  }
  session.begin("writing");
  results.finish(*assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

}  // namespace velk::run
