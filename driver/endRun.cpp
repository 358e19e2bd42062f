// In a file of its own, so that a program that makes many runs can link another end of a run in its
// place (tests/fuzz).
#include <cstdlib>

#include "driver/fatal.h"

namespace velk {

void endRun(int status) {
  std::exit(status);
}

}  // namespace velk
