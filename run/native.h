// velk's own files, as `velk -t 1` writes them for the same data in its own forms: scaffolds in
// upper case, named 1, 2, ..., placeholders as long as the search takes them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/assembly.h"
#include "run/found.h"
#include "run/library.h"

namespace velk::run {

/// The records of an entry, as found.fa has them.
std::string nativeRecords(const FoundEntry& entry, const Library& library,
                          const Assembly& assembly);

/// Writes scaffolds.fa.contig, scaffolds.fa.contigPos and scaffolds.fa.gapsinfo into `folder`.
/// found: the records of each gap, by its number in the assembly. Throws Failure.
void writeNativeTables(const std::string& folder, const Assembly& assembly,
                       const std::vector<uint64_t>& found);

}  // namespace velk::run
