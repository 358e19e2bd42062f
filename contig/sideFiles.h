// The names of the files that are written beside a scaffold file.
#pragma once

#include <string>

namespace velk {

inline std::string contigPositionsFileOf(const std::string& scaffoldFile) {
  return scaffoldFile + ".contigPos";
}

inline std::string contigFileOf(const std::string& scaffoldFile) {
  return scaffoldFile + ".contig";
}

}  // namespace velk
