// Library processing: every read file of every library, in order, through the matching reader.
// The driver calls libread2gap once, between the start and the stop of the workers.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "libinfo/libinfo.h"

namespace velk {

/// Characters of the shortest name of a read file: shorter ones cannot be looked at for ".gz".
inline constexpr std::size_t kShortestReadFileName = 3;

/// Whether a file of this name is read as gzip.
inline bool isGzipName(std::string_view file) {
  return file.ends_with(".gz");
}

/// Streams the files of libs[0] to libs[libSum - 1]: of each library the pairs, the one-file pairs,
/// the single-end FASTA and the single-end FASTQ files. Progress goes to the listener.
/// Exits with status 1 on a file that can't be opened (plain files only; a gzip file is skipped),
/// is neither FASTA nor FASTQ, or whose name is shorter than three characters.
void libread2gap(Lib*& libs, int libSum);

/// Streams one read file (readFileB empty) or one pair of mate files through `threadnum` workers,
/// as pairs when insertLength is not 0, else as single reads.
/// Exits with status 2 when there is no memory for the read buffer.
void FindReadsInGaps(std::string& readFileA, std::string& readFileB, int threadnum);

}  // namespace velk
