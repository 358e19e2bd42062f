// The lines of the assembly file, apart from what velk makes of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check/survey.h"

namespace velk::check {

struct Header {
  std::string line;
  uint64_t number;  // of the line, from 1
};

/// Something that may stand in many places: how often, and where first.
struct Seen {
  uint64_t count = 0;
  uint64_t first = 0;  // line

  void note(uint64_t line) {
    if (count++ == 0) first = line;
  }
};

struct AssemblyLines {
  std::vector<Header> headers;  // those that velk takes as headers
  Seen swallowed;               // headers that follow a header (scaffold files)
  Seen returns;                 // sequence lines with a carriage return
  Seen lowerCase;               // lower-case bases
  Seen otherLetters;            // letters that are no base and no N
  uint64_t bases = 0;           // A, C, G and T in either case
};

/// Reads `file` line by line. In a scaffold file a header that follows a header is sequence.
/// Ends like velk's own loaders when it cannot be read.
AssemblyLines readAssemblyLines(const std::string& file, bool isScaffolds);

/// Reports headers whose ids are not what they seem; `ids` are velk's, header by header.
void checkIds(Survey& survey, const std::string& file, const std::vector<Header>& headers,
              const std::vector<std::string>& ids);

}  // namespace velk::check
