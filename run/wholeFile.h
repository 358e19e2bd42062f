// A file that appears under its name as a whole, or not at all.
#pragma once

#include <string>
#include <string_view>

namespace velk::run {

/// Writes a file beside its name and then moves it there. What is no regular file, such as a pipe,
/// is written as it stands. Throws Failure; then, as after a signal, what was there before stays.
void writeWhole(const std::string& file, std::string_view text);

}  // namespace velk::run
