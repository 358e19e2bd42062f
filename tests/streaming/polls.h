// Watches how the threads of the test program poll.
#pragma once

#include <set>

namespace velk::test {

/// Begins to watch.
void watchPolls();

/// The microseconds that usleep() has been asked for since then, each once; 100 stands for
/// 100 and more.
std::set<unsigned> pollsSeen();

}  // namespace velk::test
