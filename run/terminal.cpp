#include "run/terminal.h"

#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace velk::run {
namespace {

constexpr int kWidth = 30;           // characters of the bar
constexpr double kLeastDone = 0.02;  // of a phase, before anything is said of the rest
constexpr std::chrono::milliseconds kEvery(200);
constexpr std::chrono::seconds kLineEvery(60);

void print(const std::string& text) {
  std::fputs(text.c_str(), stderr);
  std::fflush(stderr);
}

}  // namespace

Terminal::Terminal(bool isQuiet)
    : isQuiet_(isQuiet),
      isTerminal_(isatty(STDERR_FILENO) != 0),
      start_(Clock::now()),
      phaseStart_(start_),
      next_(isTerminal_ ? start_ : start_ + kLineEvery) {}

Terminal::~Terminal() {
  wipe();
}

void Terminal::wipe() {
  if (isDrawn_) print("\r\033[K");
  isDrawn_ = false;
}

void Terminal::say(std::string_view line) {
  if (isQuiet_) return;
  wipe();
  print(std::string(line) + "\n");
}

void Terminal::warn(std::string_view line) {
  wipe();
  print("[WARNING]: " + std::string(line) + "\n");
}

void Terminal::begin(const std::string& phase) {
  phase_ = phase;
  phaseStart_ = Clock::now();
}

void Terminal::update(double done, uint64_t reads, double laterSeconds) {
  if (isQuiet_) return;
  const Clock::time_point now = Clock::now();
  if (now < next_) return;
  next_ = now + (isTerminal_ ? Clock::duration(kEvery) : Clock::duration(kLineEvery));
  const std::string text = state(std::clamp(done, 0.0, 1.0), reads, laterSeconds, now);
  if (isTerminal_) {
    print("\r\033[K" + text);
    isDrawn_ = true;
  } else {
    print(text + "\n");
  }
}

// "[####    ] searching, 45 %, 1,000,000 reads, 500,000 a second, 3 s left", as far as it is known.
std::string Terminal::state(double done, uint64_t reads, double laterSeconds,
                            Clock::time_point now) {
  const double inPhase = std::chrono::duration<double>(now - phaseStart_).count();
  const double inRun = std::chrono::duration<double>(now - start_).count();
  std::string text = phase_;
  std::string left;
  if (done > kLeastDone) {
    const double seconds = inPhase / done - inPhase + laterSeconds;
    const double whole = inRun / (inRun + seconds);
    text += ", " + std::to_string(static_cast<int>(whole * 100)) + " %";
    left = ", " + durationText(seconds) + " left";
    const auto filled = static_cast<std::size_t>(whole * kWidth);
    if (isTerminal_) {
      text.insert(0, "[" + std::string(filled, '#') + std::string(kWidth - filled, ' ') + "] ");
    }
  }
  if (reads != 0) {
    const double rate = static_cast<double>(reads) / std::max(inPhase, 0.001);
    text +=
        ", " + countText(reads) + " reads, " + countText(static_cast<uint64_t>(rate)) + " a second";
  }
  return text + left;
}

std::string durationText(double seconds) {
  const auto whole = static_cast<uint64_t>(std::llround(std::max(seconds, 0.0)));
  if (whole < 60) return std::to_string(whole) + " s";
  const auto two = [](uint64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
  };
  if (whole < 3600) return std::to_string(whole / 60) + ":" + two(whole % 60);
  return std::to_string(whole / 3600) + ":" + two(whole / 60 % 60) + ":" + two(whole % 60);
}

std::string countText(uint64_t count) {
  std::string text = std::to_string(count);
  for (std::size_t at = text.size(); at > 3;) {
    at -= 3;
    text.insert(at, ",");
  }
  return text;
}

}  // namespace velk::run
