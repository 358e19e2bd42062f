// velk-run index: an assembly's index on disk, for runs and tasks to come.
#pragma once

#include <string>

#include "run/arguments.h"
#include "run/planned.h"

namespace velk::run {

/// Makes the file arguments.folder, whole or not at all. Throws Failure, reads::InputError and
/// std::bad_alloc.
void makeIndex(const Arguments& arguments);

/// The same of the assembly of a plan, with its options; request.output is the file.
void makeIndexOfPlan(const PlannedRequest& request);

/// Takes all sums of an index, and checks all else that a run checks. Throws as makeIndex does.
void checkIndex(const std::string& file, const Arguments& arguments);

}  // namespace velk::run
