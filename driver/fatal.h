// How a run ends early: the exit statuses, the two ways to die and the allocation helper.
//
// A failing run prints one message on standard error and exits at once, on the main thread; what
// was written to its outputs before stays (driver/outputFile.h). Worker threads never call these
// functions; streaming/workerPool.h says what happens when one of them runs out of memory.
#pragma once

#include <cstddef>
#include <iosfwd>
#include <new>
#include <string>
#include <string_view>

namespace velk {

enum ExitStatus : int {
  kSuccess = 0,
  kUserError = 1,     // help, bad input, files that cannot be opened or written
  kMemoryError = 2,   // allocation failures of the driver, the splitter and the read streaming
  kHeaderError = 3,   // scaffold headers that cannot be understood
  kInputError = 255,  // stray argument, unreadable library file, bad contig input
};

/// Standard error for a message about a failure: it is written even where an earlier message could
/// not be.
std::ostream& failureMessage();

/// Ends the process with `status`; the one place where velk does so before the end of main().
[[noreturn]] void endRun(int status);

/// Writes `message` to standard error as it stands and exits with `status`.
[[noreturn]] void fatal(ExitStatus status, std::string_view message);

/// Ends the run with "[ERROR]: can't read FILE: REASON", status 1; the reason is errno's.
[[noreturn]] void failReading(const std::string& file);

/// The place of an allocation, for its out-of-memory message.
struct AllocationSite {
  int line;                                     // source line that the message names
  std::string_view function;                    // function that the message names
  ExitStatus status;                            // status of the exit
  std::string_view separator = ". Function: ";  // between the line and the function
  std::string_view end = "\n";                  // after the function
};

/// Exits with the site's status after its "Out of memory! Line: ..." message.
[[noreturn]] void outOfMemory(const AllocationSite& site);

/// Returns an array of `count` value-initialised objects, to be released with delete[].
/// Exits through outOfMemory(site) when there is no memory for it.
template <class T>
T* allocateArray(std::size_t count, const AllocationSite& site) {
  try {
    return new T[count]();
  } catch (const std::bad_alloc&) {
    outOfMemory(site);
  }
}

}  // namespace velk
