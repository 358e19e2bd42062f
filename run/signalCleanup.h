// Removes a run's unfinished files when a signal ends the process.
//
// One object at a time. While it lives, SIGHUP, SIGINT, SIGQUIT, SIGPIPE and SIGTERM remove the
// files and then end the process as they always do; one that was ignored stays so. SIGXFSZ is
// ignored, so that a file that grows too large is an error of its write.
#pragma once

#include <string>
#include <vector>

namespace velk::run {

class SignalCleanup {
 public:
  /// `files` are removed first, then `folders`, in this order.
  SignalCleanup(const std::vector<std::string>& files, const std::vector<std::string>& folders);
  ~SignalCleanup();
  SignalCleanup(const SignalCleanup&) = delete;
  SignalCleanup& operator=(const SignalCleanup&) = delete;

  /// Between these two a signal waits.
  void hold();
  void release();
};

/// Removes the files and folders of the object that lives, if any; a handler of signals may call
/// it.
void removeUnfinished();

}  // namespace velk::run
