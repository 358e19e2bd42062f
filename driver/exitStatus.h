// The exit statuses of velk.
#pragma once

namespace velk {

enum ExitStatus : int {
  kSuccess = 0,
  kUserError = 1,     // help, bad input, files that cannot be opened or written
  kMemoryError = 2,   // allocation failures of the driver, the splitter and the read streaming
  kHeaderError = 3,   // scaffold headers that cannot be understood
  kInputError = 255,  // stray argument, unreadable library file, bad contig input
};

}  // namespace velk
