// The options as a table, for those who look at a command line or at its values: which letters
// there are, what each takes, and which values make no run possible. driver/velk.h has the rest.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace velk {

/// What the value of an option is taken for; kNone where there is no such option.
enum class OptionKind : uint8_t { kNone, kText, kWhole, kReal };

/// The kind of the option with this letter.
OptionKind kindOfOption(char letter);

/// What is wrong with the run parameters' values, option by option: "-t must be at least 1" and the
/// like. checkParameters() ends the run with the first.
std::vector<std::string> impossibleValues();

}  // namespace velk
