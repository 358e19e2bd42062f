#include "tests/streaming/polls.h"

#include <unistd.h>

#include <array>
#include <atomic>

namespace {

constexpr unsigned kLongest = 100;

// One flag a number of microseconds, the last for all longer ones. Nothing here has a destructor:
// workers poll on while exit() runs those of the program.
std::array<std::atomic<bool>, kLongest + 1> seen;

}  // namespace

// The linker option --wrap sends the calls of the program to this function, under this name.
extern "C" {
int __real_usleep(useconds_t microseconds);
int __wrap_usleep(useconds_t microseconds);

int __wrap_usleep(useconds_t microseconds) {
  seen[microseconds < kLongest ? microseconds : kLongest] = true;
  return __real_usleep(microseconds);
}
}

namespace velk::test {

void watchPolls() {
  for (auto& flag : seen) flag = false;
}

std::set<unsigned> pollsSeen() {
  std::set<unsigned> polls;
  for (unsigned microseconds = 0; microseconds <= kLongest; ++microseconds) {
    if (seen[microseconds]) polls.insert(microseconds);
  }
  return polls;
}

}  // namespace velk::test
