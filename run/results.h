// The results of a run: a folder of whole files with a summary, or none.
#pragma once

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "run/arguments.h"
#include "run/assembly.h"
#include "run/foundStore.h"
#include "run/inputs.h"
#include "run/library.h"
#include "run/resultFolder.h"
#include "run/search.h"
#include "run/session.h"
#include "run/summary.h"

namespace velk::run {

/// What was searched, by a run itself or by the tasks of a plan.
struct Searched {
  InputFile assemblyFile;
  std::vector<InputFacts> inputs;       // in the order of the run
  std::vector<ReadCounts> counts;       // by library
  std::vector<std::string> warnings{};  // of the look at the inputs
  std::vector<PhaseTime> times{};       // of tasks
  std::set<std::string> machines{};     // names of those of tasks
  uint64_t peakMemory = 0;              // of the largest task, bytes
  uint64_t spilledBytes = 0;            // by tasks
};

/// Makes the report of a result, whose files are in `folder` and whose summary has this text, in
/// the same folder. Returns what the summary is to say of it: the text of a JSON object.
using ReportMaker = std::function<std::string(const std::string& folder, const std::string& text)>;

class Results {
 public:
  /// `inputs`: all files that the run reads. Claims the folder. Throws Failure.
  Results(const Arguments& arguments, const std::vector<std::string>& inputs);

  /// Removes an earlier result. Called before anything is searched. Throws Failure.
  void clear() { folder_.clear(); }

  const ResultFolder& folder() const { return folder_; }

  /// Writes all files, the summary last, and says so; `makeReport` may be empty. Throws Failure.
  void finish(const Assembly& assembly, const FixedValues& fixed, const Searched& searched,
              FoundStore& found, Session& session, const ReportMaker& makeReport);

 private:
  Summary summaryOf(const FixedValues& fixed, const Searched& searched, const FoundStore& found,
                    const Session& session) const;

  const Arguments& arguments_;
  ResultFolder folder_;
  std::vector<ResultFile> files_;
  std::string report_;  // what the summary says of it
};

/// All files that a run reads.
std::vector<std::string> filesOf(const Arguments& arguments);

/// A file as it is now.
InputFile factsOf(const std::string& file);

/// The inputs of these libraries, with the files as they are now, and nothing read of them yet.
std::vector<InputFacts> inputFactsOf(const std::vector<Library>& libraries);

/// Sets what was read of an input (inout).
void setCounts(InputFacts& facts, const reads::ReadInput& input);

/// The options of the files of a result.
OutputOptions outputOptionsOf(const Arguments& arguments, int threads);

}  // namespace velk::run
