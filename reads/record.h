// A read as its file has it, and what was fixed on the way to it.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace velk::reads {

/// A record. The texts belong to the one that handed it out, who says how long they stay.
struct RecordView {
  std::string_view name;     // up to the first blank; of pairs, without "/1", "/2", ".1" or ".2"
  std::string_view bases;    // in upper case, without line ends
  std::string_view quality;  // as many characters as bases, Phred+33; empty where there is none
};

/// What the records of one file needed before they could be used: numbers of records.
struct Fixes {
  uint64_t carriageReturns = 0;
  uint64_t lowerCase = 0;
  uint64_t wrapped = 0;  // sequence on several lines

  Fixes& operator+=(const Fixes& other) {
    carriageReturns += other.carriageReturns;
    lowerCase += other.lowerCase;
    wrapped += other.wrapped;
    return *this;
  }
};

/// An input that cannot be read on, or is not what it should be. what() is the whole message,
/// without "[ERROR]: ", and names the file and, where it has one, the record.
struct InputError : std::runtime_error {
  using std::runtime_error::runtime_error;
  InputError(const std::string& file, uint64_t record, const std::string& text)
      : std::runtime_error(file + (record == 0 ? "" : ", record " + std::to_string(record)) + ": " +
                           text) {}
};

}  // namespace velk::reads
