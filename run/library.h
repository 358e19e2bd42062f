// A library of the run: reads that were made in one way, and what is known of their fragments; how
// JSON has it; and the values that are fixed for all libraries before the first read is searched.
//
// Pairs are counted by the length of their fragment in bins whose bounds never change, so that
// counts of several samples can be added up.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <vector>

#include "reads/readInput.h"

namespace velk::run {

/// Pairs by the length of their fragment. A bin is one base wide up to 127 bases, and beyond that
/// less than a sixty-fourth of its lengths.
class InsertHistogram {
 public:
  /// The bin of a length, and the first length of a bin.
  static std::size_t binOf(uint64_t insert);
  static uint64_t startOf(std::size_t bin);

  void add(uint64_t insert, uint64_t pairs = 1);
  InsertHistogram& operator+=(const InsertHistogram& other);

  /// Pairs of each bin, up to the last that has any.
  const std::vector<uint64_t>& bins() const { return bins_; }

 private:
  std::vector<uint64_t> bins_;
};

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

/// Its name, its kind and, of pairs, orientation and insert size with where they come from.
nlohmann::ordered_json jsonOf(const Library& library);

/// Values that depend on all libraries together.
struct FixedValues {
  std::vector<Library> libraries;  // with insert sizes, orientations and spreads
  int readLength = 100;            // bases that a paired read is expected to have
  int bigGapLength = 0;            // bases; longer inserts are used at gaps of at least so many
  uint64_t placeholderLength = 0;  // bases that a gap of unknown length is taken for at least
};

}  // namespace velk::run
