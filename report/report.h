// What velk-report makes of a run: for velk-run at its end, and by itself.
#pragma once

#include <cstdint>
#include <string>

#include "report/velkRun.h"

namespace velk::report {

/// Makes report.html and the files for MultiQC in `target`, of the run whose files are in `folder`
/// and whose summary has the text `summary`. Returns what the summary is to say of it: the text of
/// a JSON object. Throws Failure.
std::string writeReport(const std::string& folder, const std::string& summary,
                        const std::string& target);

/// Makes them in the folder of a whole result, in place of earlier ones, and lists them in its
/// summary. Throws Failure, also where another process writes to the folder; then it is as it was.
void reportOn(const std::string& folder);

/// The drawing of a gap. Throws Failure.
std::string drawingOf(const std::string& folder, uint64_t gap);

/// A summary of at most `width` characters a line. Throws Failure.
std::string textOf(const std::string& folder, std::size_t width);

/// The same of velk's own files: the page, the drawing of a gap by its number there, the summary.
std::string pageOf(const VelkFiles& files);
std::string drawingOf(const VelkFiles& files, uint64_t gap);
std::string textOf(const VelkFiles& files, std::size_t width);

/// Two runs side by side: a page, or text. Throws Failure.
std::string comparisonOf(const std::string& folder, const std::string& other);
std::string comparisonTextOf(const std::string& folder, const std::string& other,
                             std::size_t width);

}  // namespace velk::report
