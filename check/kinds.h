// All kinds of findings: the four tables as one.
#pragma once

#include <array>
#include <cassert>
#include <cstddef>

#include "check/kindsAssembly.h"
#include "check/kindsCommand.h"
#include "check/kindsLibrary.h"
#include "check/kindsReads.h"

namespace velk::check {

inline constexpr std::size_t kKindCount =
    kKindsCommand.size() + kKindsLibrary.size() + kKindsReads.size() + kKindsAssembly.size();

/// Kind i, in the order command line, library file, read files, assembly. REQUIRES: i < kKindCount.
constexpr const Kind& kindAt(std::size_t i) {
  assert(i < kKindCount);
  if (i < kKindsCommand.size()) return kKindsCommand[i];
  i -= kKindsCommand.size();
  if (i < kKindsLibrary.size()) return kKindsLibrary[i];
  i -= kKindsLibrary.size();
  if (i < kKindsReads.size()) return kKindsReads[i];
  return kKindsAssembly[i - kKindsReads.size()];
}

}  // namespace velk::check
