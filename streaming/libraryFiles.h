// The read files of a library, in the order in which they are streamed.
#pragma once

#include <string>
#include <vector>

#include "libinfo/libinfo.h"

namespace velk {

/// The files of one kind in a library, and what is said around them.
struct FilesOfKind {
  std::vector<Pair> files;  // single files have no read2file
  int insert;               // that they are streamed with, bases; 0: as single reads
  const char* key;          // in the library file
  const char* begins;       // said in front of them, in front of their number
  const char* librarys;     // behind their number  // sic
  const char* done;         // behind them
};

/// All kinds of a library.
std::vector<FilesOfKind> kindsOf(const Lib& lib);

/// The gzip files that are read at each turn, which is a file or a pair of files, of
/// libs[0] to libs[libSum - 1]; of a pair in a section without avg_ins that is the first one.
std::vector<std::vector<std::string>> gzipFilesOf(const Lib* libs, int libSum);

}  // namespace velk
