#include <cstdlib>
#include <limits>

#include "driver/velk.h"

namespace velk {
namespace {

// `value` as a float; what a float cannot hold becomes an infinity of the same sign.
float narrowed(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (value > kLargest) return std::numeric_limits<float>::infinity();
  if (value < -kLargest) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

// Stores `value` in the run parameter of option `letter`; returns false for an unknown letter.
bool setParameter(char letter, const char* value) {
  switch (letter) {
    case 'l':
      lib_file = value;
      return true;
    case 'c':
      contig_file = value;
      return true;
    case 's':
      scaffold_file = value;
      return true;
    case 'o':
      out_file = value;
      return true;
    case 'O':
      OverRatio = std::atof(value);
      return true;
    case 'M':
      mapCut = std::atof(value);
      return true;
    case 'C':
      CuttEdge = lenientInt(value);
      return true;
    case 'k':
      Kmer = lenientInt(value);
      return true;
    case 't':
      thread_num = lenientInt(value);
      return true;
    case 'r':
      readLen = lenientInt(value);
      return true;
    case 'm':
      initSize = static_cast<uint64_t>(std::strtol(value, nullptr, 10));
      return true;
    case 'L':
      CONTIGLEN = lenientInt(value);
      return true;
    case 'f':
      LoadFactor = narrowed(std::atof(value));
      return true;
    default:
      return false;
  }
}

}  // namespace

int mGetOptions(int rgc, char** rgv) {
  int index = 1;
  while (index < rgc) {
    const char* argument = rgv[index];
    if (argument[0] != '-') return index;
    if (index + 1 == rgc) usage();  // -h, unknown, or a value is missing
    // KEPT: only the second character counts, so -lib is -l (Options.OnlySecondCharacterCounts)
    if (!setParameter(argument[1], rgv[index + 1])) usage();
    index += 2;
  }
  return index;
}

}  // namespace velk
