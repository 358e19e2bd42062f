// The names of mates. Pure functions, any thread.
#pragma once

#include <string_view>

namespace velk::reads {

/// Whether two reads have names of mates: the same, or the same but for "/1" or ".1" at the end of
/// the first and "/2" or ".2" at the end of the second, which are then cut off (inout).
bool haveOneName(std::string_view& first, std::string_view& second);

}  // namespace velk::reads
