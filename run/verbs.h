// The verbs of velk-run: a run from the command line to the folder of results; an index on disk for
// runs and tasks to come; and those for a plan: make one, run it in one go, run one task of it,
// gather the shares of all its tasks, whose result is that of the run, byte by byte. Then the
// command lines of the verbs that take no assembly and no reads.
//
// Each verb throws Failure, reads::InputError and std::bad_alloc; then nothing new stands under the
// name that was asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/arguments.h"
#include "run/extract.h"
#include "run/results.h"

namespace velk::run {

/// What all verbs that have a plan are asked for.
struct PlannedRequest {
  std::string plan;        // its file
  std::string output;      // -o: the folder that is made
  std::string root = ".";  // --inputs-root: where the names of the plan count from
  std::string index;       // --index: a saved one; empty: each verb reads the assembly
  int threads = 0;         // -t
  bool isForced = false;   // --force
  bool isQuiet = false;    // --quiet
};

/// Writes the plan of a run, `arguments.folder` being its file, with names from `root`.
void makePlan(const Arguments& arguments, const std::string& root);

/// Runs a plan in one go; `makeReport` as of runAll().
void runPlan(const PlannedRequest& request, const ReportMaker& makeReport);

/// Runs one task, by its number from 0, whose share is the output.
void runTask(const PlannedRequest& request, uint64_t number);

/// Gathers all shares, named in any order.
void gather(const PlannedRequest& request, const std::vector<std::string>& shares,
            const ReportMaker& makeReport);

/// Does what the command line asks for; `makeReport` is called unless it says otherwise. Throws
/// Failure, reads::InputError and std::bad_alloc; the folder then has no new result.
void runAll(const Arguments& arguments, const ReportMaker& makeReport);

/// Makes the file arguments.folder, whole or not at all. Throws Failure, reads::InputError and
/// std::bad_alloc.
void makeIndex(const Arguments& arguments);

/// The same of the assembly of a plan, with its options; request.output is the file.
void makeIndexOfPlan(const PlannedRequest& request);

/// Takes all sums of an index, and checks all else that a run checks. Throws as makeIndex does.
void checkIndex(const std::string& file, const Arguments& arguments);

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
