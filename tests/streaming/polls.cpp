#include "tests/streaming/polls.h"

#include <unistd.h>

#include <mutex>

namespace {

std::mutex inUse;
std::set<unsigned> seen;

}  // namespace

// The linker option --wrap sends the calls of the program to this function, under this name.
extern "C" {
int __real_usleep(useconds_t microseconds);
int __wrap_usleep(useconds_t microseconds);

int __wrap_usleep(useconds_t microseconds) {
  {
    const std::lock_guard guard(inUse);
    seen.insert(microseconds);
  }
  return __real_usleep(microseconds);
}
}

namespace velk::test {

void watchPolls() {
  const std::lock_guard guard(inUse);
  seen.clear();
}

std::set<unsigned> pollsSeen() {
  const std::lock_guard guard(inUse);
  return seen;
}

}  // namespace velk::test
