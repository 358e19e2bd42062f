// A command line and the files that it works on, made of the bytes of a fuzz input.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace velk::fuzz {

struct RunInput {
  int batch = 1;                             // length of a batch
  std::vector<std::string> arguments;        // without the program's name and -t
  std::map<std::string, std::string> files;  // content by name
};

/// A byte for the length of a batch, then parts between form feeds: the arguments, one a line, and
/// the files, each with its name in the first line. What is in a file whose name ends in ".gz" is
/// made a gzip file, unless it is one or begins with '!', which is left out.
///
/// Nothing outside the working folder can be named: every '/' is made a '_'. Values of -t are left
/// out, large ones of -m cut down.
RunInput runInput(Input input);

}  // namespace velk::fuzz
