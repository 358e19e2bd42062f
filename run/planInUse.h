// A plan as a verb uses it: with its files where they lie on this machine.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "run/plan.h"
#include "run/planned.h"
#include "run/results.h"

namespace velk::run {

class PlanInUse {
 public:
  /// Reads the plan, and opens the index. Throws Failure.
  explicit PlanInUse(const PlannedRequest& request);

  const Plan& plan() const { return plan_; }

  /// As of the command line; its folder is the output.
  const Arguments& arguments() const { return plan_.arguments; }
  const FixedValues& fixed() const { return plan_.fixed; }

  /// Throws Failure unless the files that all tasks read, and those of an input, are the ones that
  /// the plan was made with. With an index the former are not read.
  void requireCommonFiles() const;
  void requireInput(uint32_t input) const;

  /// The plan itself and all files of it, none of which may be written to.
  std::vector<std::string> files() const;

  /// The inputs as the plan names them, with nothing read of them yet, and the assembly.
  std::vector<InputFacts> inputFacts() const;
  InputFile assemblyFacts() const;

  /// The assembly, with gaps of unknown length as long as the plan says.
  std::unique_ptr<Assembly> assembly() const;

 private:
  const PlannedRequest& request_;
  Plan plan_;
  std::shared_ptr<const SavedIndex> saved_;  // of --index, if any
};

}  // namespace velk::run
