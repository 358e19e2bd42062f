// What the user sees while a run goes on: a bar on a terminal, else a line a minute.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <string_view>

namespace velk::run {

class Terminal {
 public:
  /// Writes to standard error; nothing but warnings and errors if it is quiet.
  explicit Terminal(bool isQuiet);
  ~Terminal();
  Terminal(const Terminal&) = delete;
  Terminal& operator=(const Terminal&) = delete;

  /// Says a line, above the bar.
  void say(std::string_view line);

  /// Says "[WARNING]: LINE", even if it is quiet.
  void warn(std::string_view line);

  /// Begins a phase of the run.
  void begin(const std::string& phase);

  /// Shows how much of the phase is done, from 0 to 1, and the reads that were searched so far; 0
  /// where that is not known. laterSeconds: what the phases behind this one will take.
  void update(double done, uint64_t reads, double laterSeconds);

 private:
  using Clock = std::chrono::steady_clock;

  void wipe();
  std::string state(double done, uint64_t reads, double laterSeconds, Clock::time_point now);

  bool isQuiet_;
  bool isTerminal_;
  bool isDrawn_ = false;
  std::string phase_;
  Clock::time_point start_;
  Clock::time_point phaseStart_;
  Clock::time_point next_;  // when something is shown again
};

/// "1:02:03", "2:03" or "3 s".
std::string durationText(double seconds);

/// "12,345,678".
std::string countText(uint64_t count);

}  // namespace velk::run
