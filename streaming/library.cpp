#include "streaming/library.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <utility>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/textInput.h"
#include "driver/velk.h"
#include "streaming/filesAhead.h"
#include "streaming/gzipInput.h"
#include "streaming/libraryFiles.h"
#include "streaming/lineSource.h"
#include "streaming/readBuffer.h"
#include "streaming/readers.h"

namespace velk {
namespace {

// The look at a read file before it is streamed.
struct FirstLine {
  char letter;         // the first character, NUL of an empty line
  std::string damage;  // what is wrong with a gzip file as far as the end of the line
};

// Reads the first line of a gzip file; nothing, after a message, when the file cannot be opened.
std::optional<FirstLine> firstLineOfGzip(const std::string& file) {
  refusePipe(file);
  GzipInput probe;
  if (!probe.open(file)) {
    listener->complain("Can't open file: " + file + "\n");
    return std::nullopt;
  }
  FirstLine first{'\0', ""};
  for (std::size_t seen = 0; seen < GzipLineSource::kLongestPiece;) {
    const std::string_view bytes = probe.next();
    if (bytes.empty()) {
      first.damage = probe.damage();
      break;
    }
    if (seen == 0) first.letter = bytes.front();
    if (bytes.find('\n') != std::string_view::npos) break;
    seen += bytes.size();
  }
  return first;
}

// Reads the first line of a plain file; exits with `cannotOpen` when the file cannot be opened.
FirstLine firstLineOfPlain(const std::string& file, const std::string& cannotOpen) {
  refusePipe(file);
  PlainLineSource probe(file);
  if (!probe.open()) fatal(kUserError, cannotOpen);
  std::string line;
  probe.keepLine(line);
  return {line.empty() ? '\0' : line.front(), ""};
}

[[noreturn]] void refuseFormat(const std::string& file, const FirstLine& first,
                               const char* message) {
  if (!first.damage.empty()) reportGzipDamage(file, first.damage);
  fatal(kUserError, message);
}

void streamPairs(const std::string& fileA, const std::string& fileB, bool isFasta) {
  const bool isGzip = isGzipName(fileA);
  if (fileB.empty()) {
    if (isFasta) {
      isGzip ? LoadPEfaPair_gz(fileA) : LoadPEfaPair(fileA);
      say("Load pair-end reads in *.pair format done!\n");
    } else {
      isGzip ? LoadPEfqPair_gz(fileA) : LoadPEfqPair(fileA);
      say("Load pari-end reads in *.pair format done!\n");  // sic
    }
  } else if (isFasta) {
    isGzip ? LoadPEfa_gz(fileA, fileB) : LoadPEfa(fileA, fileB);
    say("Load pair-end reads in *.fa format done!\n");
  } else {
    isGzip ? LoadPEfq_gz(fileA, fileB) : LoadPEfq(fileA, fileB);
    say("Load pair-end reads in *.fq format done!\n");
  }
}

void streamSingles(const std::string& fileA, const std::string& fileB, bool isFasta) {
  const bool isGzip = isGzipName(fileA);
  if (isFasta) {
    isGzip ? LoadSEfa_gz(fileA) : LoadSEfa(fileA, fileB);
    say("Load single-end reads in *.fa format done!\n");
  } else {
    isGzip ? LoadSEfq_gz(fileA) : LoadSEfq(fileA, fileB);
    say("Load single-end reads in *.fq format done!\n");
  }
}

// One side of the read buffer between two files: the next one finds the memory at hand.
class SpareReads {
 public:
  // Returns empty entries; exits with the message of `line` when there is no memory for them.
  std::string* take(int line) {
    if (entries_ != batchLimit) release();
    if (reads_ == nullptr) {
      return allocateArray<std::string>(static_cast<std::size_t>(batchLimit),
                                        {line, "FindReadsInGaps", kMemoryError});
    }
    std::for_each(reads_, reads_ + entries_, [](std::string& read) { read.clear(); });
    return std::exchange(reads_, nullptr);
  }

  // Takes entries back, and sets the pointer to null.
  void keep(std::string*& reads) {
    if (reads == nullptr) return;
    reads_ = std::exchange(reads, nullptr);
    entries_ = batchLimit;
  }

  void release() {
    delete[] reads_;
    reads_ = nullptr;
  }

 private:
  std::string* reads_ = nullptr;
  int entries_ = 0;
};

SpareReads spareA;
SpareReads spareB;

void keepReads() {
  spareA.keep(readsA);
  spareB.keep(readsB);
}

// Returns whether the file could be opened.
bool findPairs(const std::string& fileA, const std::string& fileB) {
  const std::optional<FirstLine> first =
      isGzipName(fileA)
          ? firstLineOfGzip(fileA)
          : firstLineOfPlain(fileA, "[ERROR]: can't open input file: " + fileA + "\n");
  if (!first) return false;
  constexpr int kMessageLine = 1736;  // KEPT: the same in every version (OutOfMemory.BufferOfPairs)
  readsA = spareA.take(kMessageLine);
  readsB = spareB.take(kMessageLine);
  if (first->letter != '>' && first->letter != '@') {
    refuseFormat(fileA, *first, " reads should be kept in *.fa or *.fq format!\n");
  }
  streamPairs(fileA, fileB, first->letter == '>');
  keepReads();
  return true;
}

// Returns whether the file could be opened.
bool findSingles(const std::string& fileA, const std::string& fileB) {
  say("load SE file:" + fileA + "!\n");
  const std::optional<FirstLine> first =
      isGzipName(fileA) ? firstLineOfGzip(fileA)
                        : firstLineOfPlain(fileA, "[ERROR]: can't open input file\n");
  if (!first) return false;
  constexpr int kMessageLine = 1625;  // KEPT: as above (OutOfMemory.BufferOfSingleReads)
  readsA = spareA.take(kMessageLine);
  readsB = nullptr;  // puts the workers in single-end mode
  if (first->letter != '>' && first->letter != '@') {
    refuseFormat(fileA, *first, "Input files should be in *.fa or *.fq format!\n");
  }
  streamSingles(fileA, fileB, first->letter == '>');
  keepReads();
  say("load SE read finished!\n");
  return true;
}

// Streams file j of its kind; `key` and `library` (from 1) name its place in the library file.
void streamFile(Pair file, Len_t j, const char* key, int library) {
  if (file.read1file.size() < kShortestReadFileName) {
    fatal(kUserError, "[ERROR]: read file name \"" + file.read1file +
                          "\" is shorter than three characters, library " +
                          std::to_string(library) + ", key " + key + "\n");
  }
  FindReadsInGaps(file.read1file, file.read2file, thread_num);
  say("\tlibrary " + std::to_string(j + 1) + " done.\n");
}

void streamLibrary(const Lib& lib, int library, FilesAhead& ahead) {
  for (const FilesOfKind& kind : kindsOf(lib)) {
    insertLength = kind.insert;
    if (kind.files.empty()) continue;
    say(kind.begins + std::to_string(kind.files.size()) + kind.librarys);
    for (Len_t j = 0; j < kind.files.size(); ++j) {
      ahead.beginTurn();
      streamFile(kind.files[j], j, kind.key, library);
    }
    say(kind.done);
  }
}

}  // namespace

void libread2gap(Lib*& libs, int libSum) {
  say("Starting to find reads for each gap in " + std::to_string(libSum) + " librarys.\n");  // sic
  const std::time_t start = std::time(nullptr);
  FilesAhead ahead(gzipFilesOf(libs, libSum));
  for (int i = 0; i < libSum; ++i) {
    say("Processing library " + std::to_string(i + 1) + "...\n");
    streamLibrary(libs[i], i + 1, ahead);
  }
  say("Find reads in gaps done! There are " + std::to_string(totalFoundNum) +
      " reads found. Used time: " + std::to_string(std::time(nullptr) - start) + "s.\n");
  spareA.release();
  spareB.release();
}

// cppcheck-suppress constParameter ; the declaration is part of the interface
void FindReadsInGaps(std::string& readFileA, std::string& readFileB, int threadnum) {
  threadNum = threadnum;
  const bool isOpened =
      insertLength != 0 ? findPairs(readFileA, readFileB) : findSingles(readFileA, readFileB);
  if (!isOpened) return;
  say(std::to_string(foundNumInLib) + " reads were found in gaps.\n");
  totalFoundNum += foundNumInLib;
  foundNumInLib = 0;
}

}  // namespace velk
