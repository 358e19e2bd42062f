// What the name of a read file says.
#pragma once

#include <cstddef>
#include <string_view>

namespace velk {

/// Characters of the shortest name: shorter ones cannot be looked at for ".gz".
inline constexpr std::size_t kShortestReadFileName = 3;

/// Whether a file of this name is read as gzip.
inline bool isGzipName(std::string_view file) {
  return file.ends_with(".gz");
}

}  // namespace velk
