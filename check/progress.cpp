#include "check/progress.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace velk::check {
namespace {

constexpr int kWidth = 40;  // characters of the bar
constexpr std::chrono::milliseconds kFirst(1000);
constexpr std::chrono::milliseconds kEvery(200);

}  // namespace

Progress::Progress(std::string task, uint64_t total)
    : task_(std::move(task)),
      total_(std::max<uint64_t>(total, 1)),
      isTerminal_(isatty(STDERR_FILENO) != 0),
      next_(Clock::now() + kFirst) {}

Progress::~Progress() {
  if (isDrawn_) std::fputs("\r\033[K", stderr);
}

void Progress::show() {
  next_ = Clock::now();
  update(0);
}

void Progress::update(uint64_t done) {
  if (!isTerminal_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + kEvery;
  isDrawn_ = true;
  const double share = std::min(1.0, static_cast<double>(done) / static_cast<double>(total_));
  const std::string bar(static_cast<std::size_t>(share * kWidth), '#');
  std::fprintf(stderr, "\r\033[K%s [%-*s] %3d%%", task_.c_str(), kWidth, bar.c_str(),
               static_cast<int>(share * 100));
  std::fflush(stderr);
}

}  // namespace velk::check
