// Watches how the threads of the test program poll.
#pragma once

#include <set>
#include <utility>

namespace velk::test {

/// Begins to watch.
void watchPolls();

/// The kinds of polls seen since then: the microseconds that usleep() was asked for, and the
/// nanoseconds by which it may come late in the thread that called it.
std::set<std::pair<unsigned, int>> pollsSeen();

}  // namespace velk::test
