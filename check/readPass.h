// One pass over a read file or a pair of mate files: statistics, names, and a sample of the reads.
#pragma once

#include <cstdint>
#include <string>

#include "check/recordReader.h"
#include "check/survey.h"

namespace velk::check {

/// Which of two mate files has more records; kFirst also of a file of pairs that ends in midst of
/// one.
enum class Surplus { kNone, kFirst, kSecond };

struct PassResult {
  uint64_t pairs = 0;       // records of each file seen in step
  uint64_t nameRecord = 0;  // first record whose mates' names differ, 0 without one
  std::string nameA;
  std::string nameB;
  Surplus surplus = Surplus::kNone;
};

/// Reads records of `first` and, with two mate files, `second`, and fills the statistics, the
/// sample and the estimates of `input` (inout). How far it reads: all with --deep; else the records
/// asked for and some later ones, of plain files at places spread over the file, of gzip files
/// those that follow within a bound.
PassResult passRecords(Survey& survey, ReadInput& input, RecordReader& first, RecordReader* second);

/// Whether the names in two headers, up to the first blank, may be those of mates
/// (reads/mateNames.h).
bool areMates(const std::string& one, const std::string& other);

}  // namespace velk::check
