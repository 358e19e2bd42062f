// A plan: a run with all its values fixed, as a file of JSON (doc/cluster.md), and as a verb uses
// it. Its tasks, one for each input, run anywhere and in any order. File names count from the root
// of the inputs, which may be another folder on each machine.
#pragma once

#include <cstdint>
#include <future>
#include <memory>
#include <string>
#include <vector>

#include "run/arguments.h"
#include "run/checksum.h"
#include "run/estimate.h"
#include "run/library.h"
#include "run/results.h"
#include "run/summary.h"
#include "run/verbs.h"

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

  /// Waits until all of the index was looked at, if there is one. Throws Failure unless it is
  /// whole.
  void requireIndex() const { sums_.get(); }

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
  std::shared_future<void> sums_;            // of its parts
};

}  // namespace velk::run
