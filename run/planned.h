// The verbs of velk-run for a plan: make one, run it in one go, run one task of it, gather the
// shares of all its tasks. The result of the last is that of the second, byte by byte.
//
// Each throws Failure, reads::InputError and std::bad_alloc; then nothing new stands under the name
// that was asked for.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/arguments.h"
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

}  // namespace velk::run
