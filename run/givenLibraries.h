// The libraries that a command line names: as files, in a sample sheet, in velk's own library file.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "run/library.h"

namespace velk::run {

/// Reads a sample sheet: columns library, R1, R2, kind, insert and orientation, divided by tabs,
/// named in the first line in any order. Only library and R1 must be there. Rows of one library
/// follow each other or not; paths are relative to the folder of the sheet. Throws Failure.
std::vector<Library> readSampleSheet(const std::string& file);

/// Reads a library file of velk; see velk.lib(5). Its first section is named after the number
/// `first`, as in "lib2", and the single reads of that "lib2s". Throws Failure.
std::vector<Library> readLibraryFile(const std::string& file, int first);

/// What is read of the command line before libraries are made of it.
struct GivenReads {
  std::vector<std::string> bare;
  std::vector<std::pair<std::string, std::string>> pairs;
  std::vector<std::pair<std::string, std::string>> matePairs;
  std::vector<std::string> interleaved;
  std::vector<std::vector<std::string>> single;
  std::string sheet;
  std::string library;
};

/// The libraries, in the order of doc/run.md. Throws Failure with Status::kUsage where there are
/// none, or two of one name, and where a file that describes them cannot be used. `moreInHelp`:
/// what messages end with, see run/commandLine.h.
std::vector<Library> librariesOf(const GivenReads& given, const std::string& moreInHelp);

/// Throws Failure unless `word` can stand in the header of a SAM file; `what` it is.
void requireWord(const std::string& what, const std::string& word);

}  // namespace velk::run
