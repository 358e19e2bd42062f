// The gap report: per scaffold a header line, per gap its number, length, reads found and flanks.
// Written once by the driver, after the workers have been joined. Format: doc/formats.md.
#pragma once

#include <cstdint>
#include <string>

namespace velk {

/// The name of the gap report of this run's inputs.
std::string gapReportFile();

/// Makes `readSumInEachGap`, of zeros, for `gapSum` gaps. Exits with status 2 after "Out of memory!
/// ..." when there is no memory for it. The caller releases it.
void makeReadSums(uint64_t gapSum);

/// Writes the gap report of `scaffoldInfo` and `readSumInEachGap` to gapReportFile(). Exits with
/// status 1 when the report cannot be opened or written.
void writeGapReport();

}  // namespace velk
