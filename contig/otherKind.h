// Files of another kind in the place of the scaffolds: told by name, as what they then end with
// tells nothing of it. Main thread only.
#pragma once

#include <string>

namespace velk {

/// Tells a warning when the first line of `file` begins as a compressed file does, or when `line`,
/// which no header precedes, opens a section of a library file. Returns whether it did.
bool warnOfOtherKind(const std::string& file, const std::string& line, bool isFirstLine);

}  // namespace velk
