// gaps.tsv and gaps.bed: each gap with what was found for it (doc/run.md).
#pragma once

#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/gapCounts.h"
#include "run/library.h"

namespace velk::run {

/// The text of gaps.tsv: a line of names, then a line a gap.
std::string gapTable(const Assembly& assembly, const std::vector<Library>& libraries,
                     const GapCounts& counts);

/// The text of gaps.bed.
std::string gapBed(const Assembly& assembly, const GapCounts& counts);

}  // namespace velk::run
