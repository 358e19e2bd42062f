// Files of another kind in the place of the scaffolds. The error with which the run then ends does
// not say so; these warnings do, and name the file. Main thread only.
#pragma once

#include <string>

namespace velk {

/// Gives a warning when the first line of `file` begins as a compressed file does, or when `line`,
/// which no header precedes, opens a section of a library file. Returns whether it did.
bool warnOfOtherKind(const std::string& file, const std::string& line, bool isFirstLine);

}  // namespace velk
