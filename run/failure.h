// How velk-run ends early.
#pragma once

#include <stdexcept>
#include <string>

namespace velk::run {

enum class Status : int {
  kWhole = 0,      // all results are there
  kFailed = 1,     // an input or an output failed
  kUsage = 2,      // the command line, or a file that describes the run, cannot be used
  kPreflight = 3,  // the inputs are not what a run can use
};

/// Ends the run with a status after "[ERROR]: WHAT".
struct Failure : std::runtime_error {
  Failure(Status status, const std::string& what) : std::runtime_error(what), status(status) {}

  Status status;
};

}  // namespace velk::run
