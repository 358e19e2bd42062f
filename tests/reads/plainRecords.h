// A plain reading of FASTQ and FASTA: the lines of the whole text one by one. Shares no code with
// velk.
#pragma once

#include <string>
#include <vector>

#include "tests/reads/readsTest.h"

namespace velk::test {

/// How a text is written out of records.
struct Writing {
  bool isFastq = true;
  std::size_t width = 0;  // characters of a line of bases; 0: all on one
  std::string lineEnd = "\n";
  bool repeatsHeader = false;  // behind '+'
  bool endsWithLine = true;    // the last line has an end
  std::size_t blankLines = 0;  // at the end
  std::string comment = "";    // behind the names, with its blank
};

/// The records as a file has them.
std::string written(const std::vector<Read>& reads, const Writing& writing);

/// What a file that is nowhere damaged has for records. Ends the test otherwise.
std::vector<Read> plainRecords(const std::string& text);

}  // namespace velk::test
