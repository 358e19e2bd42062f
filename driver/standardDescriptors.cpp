#include "driver/standardDescriptors.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "driver/fatal.h"

namespace velk {

void openStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (fcntl(descriptor, F_GETFD) != -1) continue;
    // All lower numbers are taken, so open() gives this one. The direction is the useless one:
    // whatever is written fails, as it would have, instead of passing for written.
    const int direction = descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY;
    if (open("/dev/null", direction) != descriptor) {
      const std::string reason = std::strerror(errno);
      fatal(kUserError, "[ERROR]: can't open /dev/null: " + reason + "\n");
    }
  }
}

}  // namespace velk
