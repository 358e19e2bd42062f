// The classes by which page.css and drawing.css give libraries, kinds of reads and reasons their
// colours.
#pragma once

#include <cstddef>
#include <string>

#include "report/judgement.h"
#include "report/runData.h"

namespace velk::report {

constexpr std::size_t kLibraryColours = 8;

inline std::string libraryClass(std::size_t library) {
  return "lib" + std::to_string(library % kLibraryColours);
}

inline const char* kindClass(ReadKind kind) {
  switch (kind) {
    case ReadKind::kExact:
      return "exact";
    case ReadKind::kEstimate:
      return "estimate";
    case ReadKind::kContained:
      return "contained";
    case ReadKind::kAnchor:
      break;
  }
  return "anchor";
}

inline std::string reasonClass(Reason reason) {
  return "why" + std::to_string(static_cast<int>(reason));
}

}  // namespace velk::report
