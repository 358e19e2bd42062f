// What the verbs that search have in common: what is said on the way, how long each phase took, and
// what is warned of. One thread calls.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "run/preflight.h"
#include "run/summary.h"
#include "run/terminal.h"

namespace velk::run {

class Session {
 public:
  /// `isForced`: errors of the look at the inputs are warnings. `threads`: 0: all that are allowed.
  Session(bool isQuiet, bool isForced, int threads);

  /// Begins a phase, and ends the one before.
  void begin(const std::string& phase);

  /// Ends the last phase.
  void end();

  Terminal& terminal() { return terminal_; }
  int threads() const { return threads_; }

  void say(const std::string& line) { terminal_.say(line); }

  /// Warns, and keeps the line for the summary.
  void warn(const std::string& line);

  /// Warns of what was found. Throws Failure if any of it is an error, unless it is forced.
  void judge(const std::vector<Finding>& findings);

  const std::vector<std::string>& warnings() const { return warnings_; }

  /// The phases so far, and the seconds since the beginning.
  const std::vector<PhaseTime>& times() const { return times_; }
  double seconds() const;

 private:
  using Clock = std::chrono::steady_clock;

  Terminal terminal_;
  bool isForced_;
  int threads_;
  std::vector<std::string> warnings_;
  std::vector<PhaseTime> times_;
  Clock::time_point start_ = Clock::now();
  Clock::time_point phaseStart_ = start_;
};

/// The most memory that the process has had, bytes.
uint64_t peakMemory();

/// What the machine is called.
std::string machineName();

}  // namespace velk::run
