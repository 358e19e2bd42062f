// The command lines of the verbs of velk-run that take no assembly and no reads.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/extract.h"
#include "run/planned.h"

namespace velk::run {

/// `velk-run extract`.
struct ExtractArguments {
  ExtractRequest request;
  std::string output = "-";  // -o: a file; "-": standard output
};

/// `velk-run --plan`, `velk-run task` and `velk-run gather`.
struct PlannedArguments {
  PlannedRequest request;
  uint64_t task = 0;
  std::vector<std::string> shares;
};

/// Whether the command line has the option --plan.
bool hasPlan(int argc, const char* const* argv);

/// Each parses its command line. Throws TextWanted for --help, and Failure with Status::kUsage on
/// what cannot be used.
ExtractArguments parseExtract(int argc, const char* const* argv);
PlannedArguments parseRunPlan(int argc, const char* const* argv);
PlannedArguments parseTask(int argc, const char* const* argv);
PlannedArguments parseGather(int argc, const char* const* argv);

}  // namespace velk::run
