// Advice: the command line to run, with the memory and the time that it takes.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "check/survey.h"
#include "survey/costModel.h"

namespace velk::check {

struct Advice {
  bool isKnown = false;  // whether there is anything to base advice on
  std::string command;   // to be pasted into a shell
  int longestRead = 0;   // -r, bases
  survey::MemoryEstimate memory;
  double indexSeconds = 0;
  double readSeconds = 0;  // reading and searching
  uint64_t diskBytes = 0;
};

/// An output and its bytes.
struct DiskNeed {
  std::string file;
  uint64_t bytes;
};

/// Reports file systems on which there is no space for these outputs.
void checkDiskSpace(Findings& findings, const std::vector<DiskNeed>& needs);

/// Works the advice out and reports what the machine lacks for it.
Advice advise(Survey& survey);

}  // namespace velk::check
