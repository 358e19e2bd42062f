// The results of a run: takes what the search finds, and leaves a folder of whole files with a
// summary, or none.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "run/arguments.h"
#include "run/assembly.h"
#include "run/inputs.h"
#include "run/library.h"
#include "run/outputs.h"
#include "run/resultFolder.h"
#include "run/search.h"
#include "run/spillSorter.h"
#include "run/summary.h"

namespace velk::run {

/// What a run is made of, once everything is fixed. All of it outlives the results.
struct Fixed {
  const Assembly& assembly;
  const std::vector<Library>& libraries;
  const Inputs& inputs;
  const SearchValues& values;
  uint64_t placeholderLength;  // bases
};

/// Makes the report of a result, whose files are in `folder` and whose summary has this text, in
/// the same folder. Returns what the summary is to say of it: the text of a JSON object.
using ReportMaker = std::function<std::string(const std::string& folder, const std::string& text)>;

class Results : public FoundReceiver {
 public:
  /// Claims the folder, and removes an earlier result. Throws Failure.
  explicit Results(const Arguments& arguments);

  /// Notes that a phase of the run begins.
  void beginPhase(const std::string& name);

  /// To be called before anything is found.
  void begin(const Fixed& fixed);

  void take(int worker, const FoundEntry& entry) override;
  void takeSpan(const Span& span) override;
  Evidence& evidence() override { return outputs_->evidence(); }

  /// Reads that have been found so far.
  uint64_t foundReads() const { return outputs_->reads(); }

  /// Writes all files, the summary last; `makeReport` may be empty. Throws Failure.
  void finish(const std::vector<std::string>& warnings, const std::vector<ReadCounts>& counts,
              const ReportMaker& makeReport);

  /// What the user is told at the end. REQUIRES: finish().
  std::vector<std::string> closingLines() const;

 private:
  using Clock = std::chrono::steady_clock;

  void endPhase();
  void writeNative();
  Summary summary() const;
  uint64_t searched(std::size_t library) const;
  std::string fixedText() const;

  const Arguments& arguments_;
  ResultFolder folder_;
  const Fixed* fixed_ = nullptr;
  std::unique_ptr<Outputs> outputs_;
  std::unique_ptr<SpillSorter> native_;                    // null: not asked for
  std::unique_ptr<std::atomic<uint64_t>[]> nativeCounts_;  // records by gap
  std::unique_ptr<std::atomic<uint64_t>[]> foundReads_;    // by library
  std::vector<std::string> warnings_;
  std::vector<ReadCounts> counts_;  // by library
  std::vector<ResultFile> files_;
  std::string report_;  // what the summary says of it
  std::vector<PhaseTime> times_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point phaseStart_ = start_;
};

}  // namespace velk::run
