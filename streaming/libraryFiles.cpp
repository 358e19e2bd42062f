#include "streaming/libraryFiles.h"

#include <algorithm>

#include "streaming/library.h"

namespace velk {
namespace {

template <class Entry>
std::vector<Pair> withoutMates(const Entry* entries, Len_t count) {
  std::vector<Pair> files;
  std::for_each(entries, entries + count, [&](const Entry& entry) {
    files.push_back({entry.readfile, ""});
  });
  return files;
}

std::vector<std::string> gzipFilesOf(const Pair& files, bool arePairs) {
  if (!isGzipName(files.read1file)) return {};
  if (!arePairs || files.read2file.empty()) return {files.read1file};
  return {files.read1file, files.read2file};
}

}  // namespace

std::vector<FilesOfKind> kindsOf(const Lib& lib) {
  constexpr const char* kLibrarys = " librarys...\n";  // sic
  constexpr const char* kPairsDone = "\tprocessing pair-end read files done!\n";
  constexpr const char* kSinglesDone = "\tprocessing single read files done!\n";
  return {{{lib.pairs, lib.pairs + lib.pfilenum},
           lib.avg_ins,
           "q1/f1",
           "\t processing pair-end read files in ",
           kLibrarys,
           kPairsDone},
          {withoutMates(lib.single2, lib.s2filenum), lib.avg_ins, "p",
           "\tprocessing pair-end read files in ", kLibrarys, kPairsDone},
          {withoutMates(lib.single, lib.sfilenum), 0, "f", "\tprocessing single read files in ",
           kLibrarys, kSinglesDone},
          {withoutMates(lib.singlequal, lib.qfilenum), 0, "q",
           "\tprocessing single qual read files in ", " librarys... \n", kSinglesDone}};  // sic
}

std::vector<std::vector<std::string>> gzipFilesOf(const Lib* libs, int libSum) {
  std::vector<std::vector<std::string>> turns;
  std::for_each(libs, libs + libSum, [&](const Lib& lib) {
    for (const FilesOfKind& kind : kindsOf(lib)) {
      for (const Pair& files : kind.files) {
        turns.push_back(gzipFilesOf(files, kind.insert != 0));
      }
    }
  });
  return turns;
}

}  // namespace velk
