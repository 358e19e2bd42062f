// The gap report: per scaffold a header line, per gap its number, length, reads found and flanks.
// Called once by the driver, after the workers have been joined. Format: doc/formats.md.
#pragma once

#include <string>

namespace velk {

/// The name of the gap report of this run's inputs.
std::string gapReportFile();

/// Writes the gap report of `scaffoldInfo` and `readSumInEachGap` to gapReportFile(). Exits with
/// status 1 when the report cannot be opened or written.
void writeGapReport();

}  // namespace velk
