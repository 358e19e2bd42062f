// One run of velk-run, from the command line to the folder of results.
#pragma once

#include "run/arguments.h"

namespace velk::run {

/// Does what the command line asks for. Throws Failure, reads::InputError and std::bad_alloc; the
/// folder then has no new result.
void runAll(const Arguments& arguments);

}  // namespace velk::run
