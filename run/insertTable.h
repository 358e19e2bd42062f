// inserts.tsv: how long the fragments of each library are in the samples that were measured
// (doc/run.md).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "run/library.h"

namespace velk::run {

/// The names of the orientations of pairs, in the order of Library::inserts.
inline constexpr std::array kOrientationNames{"FR", "RF", "same"};

/// A line of names, then a line for each library, orientation and bin that has pairs.
std::string insertTable(const std::vector<Library>& libraries);

}  // namespace velk::run
