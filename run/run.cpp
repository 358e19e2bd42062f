#include "run/run.h"

#include "driver/velk.h"
#include "run/foundStore.h"
#include "run/preparation.h"
#include "run/results.h"
#include "run/searchStep.h"
#include "run/session.h"

namespace velk::run {

void runAll(const Arguments& arguments, const ReportMaker& makeReport) {
  Kmer = arguments.kmer;  // read by the index
  Session session(arguments.quiet, arguments.force, arguments.threads);
  session.judge(checkFiles(arguments.assembly, arguments.libraries));
  Results results(arguments, filesOf(arguments));
  session.begin("preparing");
  Preparation preparation(arguments, session.threads(), session);
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
  searched.warnings = session.warnings();
  session.begin("writing");
  results.finish(assembly, fixed, searched, found, session,
                 arguments.noReport ? ReportMaker() : makeReport);
}

}  // namespace velk::run
