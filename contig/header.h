// What the loaders of both kinds of input ask of a header and of a contig.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "driver/fatal.h"

namespace velk {

/// One line of an input file, for messages; `number` counts from 1.
struct LineOfFile {
  const std::string& file;
  uint64_t number;
};

/// Returns `header` without its first `dropped` characters.
/// Exits with `status` after an "[ERROR]: ..." message when it has fewer than these.
std::string idAfter(const std::string& header, std::size_t dropped, const LineOfFile& where,
                    ExitStatus status);

/// Ends the run with `status` when a contig of `length` bases is longer than a signed 32-bit
/// number can tell, which the arithmetic of placement rests on.
void requireContigLength(std::size_t length, const std::string& file, const std::string& id,
                         ExitStatus status);

}  // namespace velk
