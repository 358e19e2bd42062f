// The files of a run, by the run parameters and the libraries: what it reads and what it writes.
#pragma once

#include <string>
#include <vector>

#include "libinfo/libinfo.h"

namespace velk {

struct RunFile {
  std::string name;
  std::string role;  // "the library file"
};

/// The inputs that are named, also those that are not read: -l, -s, -c, then the read files of
/// libs[0] to libs[libSum - 1].
std::vector<RunFile> inputsOfRun(const Lib* libs, int libSum);

/// The outputs, in the order in which they are opened.
std::vector<RunFile> outputsOfRun();

}  // namespace velk
