#include "run/session.h"

#include <sys/resource.h>
#include <sys/utsname.h>

#include "run/failure.h"
#include "survey/machine.h"

namespace velk::run {

Session::Session(bool isQuiet, bool isForced, int threads)
    : terminal_(isQuiet),
      isForced_(isForced),
      threads_(threads == 0 ? survey::allowedProcessors() : threads) {}

void Session::begin(const std::string& phase) {
  end();
  times_.push_back({phase, 0});
  terminal_.begin(phase);
  terminal_.update(0, 0, 0);
}

void Session::end() {
  const Clock::time_point now = Clock::now();
  if (!times_.empty()) {
    times_.back().seconds = std::chrono::duration<double>(now - phaseStart_).count();
  }
  phaseStart_ = now;
}

void Session::warn(const std::string& line) {
  terminal_.warn(line);
  warnings_.push_back(line);
}

void Session::judge(const std::vector<Finding>& findings) {
  std::string errors;
  for (const Finding& finding : findings) {
    if (finding.isError && !isForced_) {
      errors += (errors.empty() ? "" : "\n[ERROR]: ") + finding.line();
    } else {
      warn(finding.line());
    }
  }
  if (!errors.empty()) throw Failure(Status::kPreflight, errors);
}

double Session::seconds() const {
  return std::chrono::duration<double>(Clock::now() - start_).count();
}

uint64_t peakMemory() {
  struct rusage used {};
  getrusage(RUSAGE_SELF, &used);
  return static_cast<uint64_t>(used.ru_maxrss) * 1024;
}

std::string machineName() {
  struct utsname names {};
  return uname(&names) == 0 ? names.nodename : "";
}

}  // namespace velk::run
