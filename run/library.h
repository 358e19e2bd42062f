// A library of the run: reads that were made in one way, and what is known of their fragments.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "reads/readInput.h"
#include "run/insertHistogram.h"

namespace velk::run {

/// How many standard deviations a fragment may be off the insert size.
constexpr double kDeviations = 3;

enum class LibraryKind { kPairs, kMatePairs, kSingle };

/// How the mates of a pair lie on the fragment.
enum class Orientation {
  kInward,   // FR: they point at each other
  kOutward,  // RF: they point away from each other
};

struct Library {
  std::string name;  // one word; the read group's id
  LibraryKind kind = LibraryKind::kPairs;
  std::vector<reads::InputFiles> inputs;  // all of pairs, or all of single reads

  std::optional<Orientation> givenOrientation;  // by the user

  // Measured on a sample, if there were enough pairs on one contig.
  bool isMeasured = false;
  double measuredInsert = 0;
  Orientation measuredOrientation = Orientation::kInward;
  std::array<InsertHistogram, 3> inserts;  // of the sample: FR, RF, and on the same strand

  // Given by the user, else as measured; fixed before the first read is searched.
  bool isInsertGiven = false;
  Orientation orientation = Orientation::kInward;
  double insert = 0;  // median of the fragments' lengths, both reads included, bases; 0 for singles
  double spread = 0;  // standard deviation of them, bases

  bool arePairs() const { return kind != LibraryKind::kSingle; }

  /// Where insert size and orientation are from: "given", "measured", or "usual" for the kind.
  const char* insertSource() const { return isInsertGiven ? "given" : "measured"; }
  const char* orientationSource() const {
    return givenOrientation ? "given" : isMeasured ? "measured" : "usual";
  }
};

/// "pairs", "mate-pairs" or "single".
const char* nameOf(LibraryKind kind);

/// "FR" or "RF".
const char* nameOf(Orientation orientation);

}  // namespace velk::run
