// Gaps whose length the assembly does not know: runs of N of given lengths, and the gaps of type U
// of an AGP file, which is read here.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace velk::run {

/// Which runs of N stand for gaps of unknown length.
struct PlaceholderRule {
  std::vector<uint64_t> lengths;                           // all runs of one of these lengths
  std::map<std::string, std::vector<uint64_t>> positions;  // by scaffold: where such runs begin

  bool holds(const std::string& scaffold, uint64_t start, uint64_t length) const;
};

/// The rule of these lengths and, unless its name is empty, of the gaps of type U of an AGP file.
/// Throws Failure where the file cannot be read or has a line that is none of AGP.
PlaceholderRule readPlaceholders(const std::vector<uint64_t>& lengths, const std::string& agp);

}  // namespace velk::run
