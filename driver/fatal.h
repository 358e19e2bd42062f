// How a run ends early: the ways to do so and the allocation helper.
//
// A failing run gives its listener one message and the status, on the main thread, and ends there;
// what was written to its outputs before stays (driver/outputFile.h). Worker threads never call
// these functions; streaming/workerPool.h says what happens when one of them runs out of memory.
// "Exits with status n" in a contract means such an end.
#pragma once

#include <cstddef>
#include <new>
#include <string>
#include <string_view>

#include "driver/listener.h"

namespace velk {

/// Ends the run with `message`, as it stands, and `status`.
[[noreturn]] void fatal(ExitStatus status, std::string_view message);

/// Ends the run with `status` after a text for standard output.
[[noreturn]] void endOnOutput(ExitStatus status, std::string_view text);

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
