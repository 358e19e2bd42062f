// One run of velk-run, from the command line to the folder of results.
#pragma once

#include "run/arguments.h"
#include "run/results.h"

namespace velk::run {

/// Does what the command line asks for; `makeReport` is called unless it says otherwise. Throws
/// Failure, reads::InputError and std::bad_alloc; the folder then has no new result.
void runAll(const Arguments& arguments, const ReportMaker& makeReport);

}  // namespace velk::run
