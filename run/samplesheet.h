// Files that describe libraries: the sample sheet, and velk's own library file.
#pragma once

#include <string>
#include <vector>

#include "run/library.h"

namespace velk::run {

/// Reads a sample sheet: columns library, R1, R2, kind, insert and orientation, divided by tabs,
/// named in the first line in any order. Only library and R1 must be there. Rows of one library
/// follow each other or not; paths are relative to the folder of the sheet. Throws Failure.
std::vector<Library> readSampleSheet(const std::string& file);

/// Reads a library file of velk; see velk.lib(5). Throws Failure.
std::vector<Library> readLibraryFile(const std::string& file);

}  // namespace velk::run
