// A plan: a run with all its values fixed, as a file of JSON (doc/cluster.md). Its tasks, one for
// each input, run anywhere and in any order. File names count from the root of the inputs, which
// may be another folder on each machine.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/arguments.h"
#include "run/estimate.h"
#include "run/fileIdentity.h"
#include "run/fixed.h"
#include "run/summary.h"

namespace velk::run {

class SavedIndex;

/// A file that the tasks read.
struct PlannedFile {
  std::string name;  // from the root of the inputs
  FileIdentity identity;
};

/// An input, which is a task.
struct PlannedInput {
  uint32_t library;                // number
  std::vector<PlannedFile> files;  // one, or two of mates
  bool areInterleaved;
  TaskEstimate estimate;
};

struct Plan {
  std::string checksum;             // of its text, once it was read
  Arguments arguments;              // without libraries, and with the files' names in the plan
  FixedValues fixed;                // its libraries without inputs
  std::vector<PlannedFile> common;  // that all tasks read: the assembly, and an AGP file if any
  std::string index;                // checksum of the saved index that tasks take; empty: of none
  std::vector<PlannedInput> inputs;
  std::vector<std::string> warnings;  // of the look at the inputs
  int threads = 1;                    // that the estimates are for
  CommonEstimate estimate;
};

/// Throws Failure unless the index is that of the plan's files.
void requireSources(const SavedIndex& index, const Plan& plan);

/// The text of the file. Throws Failure where a name can't be written in it.
std::string textOfPlan(const Plan& plan);

/// Throws Failure where the file can't be read, or is no plan of this version.
Plan readPlan(const std::string& file);

/// The name of a file from the root of the inputs. Throws Failure where it does not lie below.
std::string nameFromRoot(const std::string& file, const std::string& root);

/// The file of such a name.
std::string fileAtRoot(const std::string& name, const std::string& root);

}  // namespace velk::run
