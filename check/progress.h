// A progress bar on standard error, where that is a terminal.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace velk::check {

class Progress {
 public:
  /// A bar for `task` of `total` units; nothing is drawn in its first second.
  Progress(std::string task, uint64_t total);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Draws the bar at once: for a task that cannot say how far it is.
  void show();

  /// Says that `done` units are done.
  void update(uint64_t done);

 private:
  using Clock = std::chrono::steady_clock;

  std::string task_;
  uint64_t total_;
  bool isTerminal_;
  bool isDrawn_ = false;
  Clock::time_point next_;
};

}  // namespace velk::check
