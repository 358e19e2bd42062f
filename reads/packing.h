// How a file is packed, found from its first bytes.
#pragma once

#include <string_view>

namespace velk::reads {

enum class Packing { kNone, kGzip, kZstd, kXz, kBzip2 };

/// Returns how a file that starts so is packed.
Packing packingOf(std::string_view start);

/// Returns its name, as in "gzip".
std::string_view nameOf(Packing packing);

}  // namespace velk::reads
