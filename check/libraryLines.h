// The library file line by line: what velk skips without a message.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check/survey.h"

namespace velk::check {

/// What the lines of one [LIB] section say, with the numbers of the lines, from 1.
struct Section {
  uint64_t line = 0;                  // of [LIB]
  std::vector<uint64_t> firstMates;   // q1, f1
  std::vector<uint64_t> secondMates;  // of each of these its q2 or f2 used last; 0 without one
  std::vector<uint64_t> interleaved;  // p
  std::vector<uint64_t> singles;      // f
  std::vector<uint64_t> singlesQ;     // q
  std::vector<uint64_t> inserts;      // avg_ins
  uint64_t reverse = 0;               // reverse_seq used last; 0 without one

  bool hasPairs() const { return !firstMates.empty() || !interleaved.empty(); }
  bool hasFiles() const { return hasPairs() || !singles.empty() || !singlesQ.empty(); }
};

/// Reads the lines of the library file and reports those that velk ignores or that do not mean what
/// they seem to. Returns the sections in order.
std::vector<Section> checkLibraryLines(Survey& survey);

}  // namespace velk::check
