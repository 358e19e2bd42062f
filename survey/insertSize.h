// Insert size and orientation of a library, measured from its pairs that lie on one contig.
//
// A PairSurvey places the pairs of one library one after the other and then gives the measure.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "placement/edgeCheck.h"
#include "placement/engine.h"
#include "survey/assembly.h"
#include "survey/boundedIndex.h"

namespace velk::survey {

/// Where a read lies as a whole.
struct ReadPlace {
  uint64_t scaffold;
  uint64_t contig;
  int64_t start;  // contig position of its first base on the contig's strand
  int64_t end;    // behind its last base
  bool isReverse;
};

/// Returns the place of `read` on a contig, on either strand, that placement with these options
/// would accept; none without one. REQUIRES: the engine's index is one of contigs of `scaffolds`.
std::optional<ReadPlace> placeOfRead(Engine& engine, Scaffolds scaffolds,
                                     const PlacementOptions& options, const std::string& read);

/// How the reads of a pair lie to each other.
enum class Orientation : uint8_t {
  kInward,     // they point at each other: FR
  kOutward,    // they point away from each other: RF
  kSameStrand  // they point in one direction
};

/// Pairs on one contig, below which a library counts as not measured.
inline constexpr uint64_t kFewestPairs = 100;

/// The pairs of a library that lie on one contig.
struct PairMeasure {
  uint64_t inward = 0;
  uint64_t outward = 0;
  uint64_t sameStrand = 0;
  Orientation orientation = Orientation::kInward;  // of most fragments of the library
  double insert = 0;  // median of the inward or of the outward ones, bases; 0 without any
  double spread = 0;  // half of the range that holds the middle 68 % of these, bases

  uint64_t pairs() const { return inward + outward + sameStrand; }

  /// Whether there are enough of them to say anything.
  bool isMeasured() const { return pairs() >= kFewestPairs; }
};

/// What is seen of the pairs of a library, one after the other.
class PairGeometry {
 public:
  /// `contigLengths`: bases of every contig that is indexed.
  explicit PairGeometry(std::vector<uint64_t> contigLengths);

  /// Takes in a pair whose reads have these places.
  void add(const ReadPlace& one, const ReadPlace& other);

  /// The measure. Long fragments fit on fewer contigs than short ones, so each is weighted by the
  /// number of places where one of its length fits; and so is each orientation.
  PairMeasure measure() const;

  /// The lengths of the fragments of an orientation, bases.
  const std::vector<uint64_t>& inserts(Orientation orientation) const {
    return inserts_[static_cast<std::size_t>(orientation)];
  }

 private:
  double places(uint64_t insert) const;
  double abundance(Orientation orientation) const;

  std::vector<uint64_t> lengths_;                 // of contigs, sorted
  std::vector<double> sumFrom_;                   // sumFrom_[i]: sum of lengths_[i] and all behind
  std::array<std::vector<uint64_t>, 3> inserts_;  // bases, by orientation
};

class PairSurvey {
 public:
  /// `scaffolds`: those of which the index was made. Both outlive the survey. Of the options, the
  /// k-mer's length and the shares count.
  PairSurvey(const BoundedIndex& index, Scaffolds scaffolds, const PlacementOptions& options);

  /// Takes in a pair as it was sequenced.
  void add(const std::string& one, const std::string& other);

  PairMeasure measure() const { return geometry_.measure(); }
  const std::vector<uint64_t>& inserts(Orientation orientation) const {
    return geometry_.inserts(orientation);
  }

 private:
  Engine engine_;
  Scaffolds scaffolds_;
  PlacementOptions options_;
  PairGeometry geometry_;
};

}  // namespace velk::survey
