// Insert size and orientation of a library, measured from its pairs that lie on one contig.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "check/survey.h"
#include "placement/engine.h"

namespace velk::check {

/// Where a read lies as a whole, found with velk's own index.
struct ReadPlace {
  uint64_t scaffold;
  uint64_t contig;
  int64_t start;  // contig position of its first base on the contig's strand
  int64_t end;    // behind its last base
  bool isReverse;
};

/// Returns the place of `read` on a contig, on either strand, that velk would accept; none without
/// one. `engine`: engineOfRun().
std::optional<ReadPlace> placeOfRead(Engine& engine, const std::string& read);

/// What is seen of the pairs of a library, one after the other.
class PairGeometry {
 public:
  /// `contigLengths`: bases of every contig that is indexed.
  explicit PairGeometry(std::vector<uint64_t> contigLengths);

  /// Takes in a pair whose reads have these places.
  void add(const ReadPlace& one, const ReadPlace& other);

  /// The measure. Long fragments fit on fewer contigs than short ones, so each is weighted by the
  /// number of places where one of its length fits.
  PairMeasure measure() const;

 private:
  double places(uint64_t insert) const;

  std::vector<uint64_t> lengths_;  // of contigs, sorted
  std::vector<double> sumFrom_;    // sumFrom_[i]: sum of lengths_[i] and all behind
  std::vector<uint64_t> inward_;   // inserts, bases
  std::vector<uint64_t> outward_;
  uint64_t sameStrand_ = 0;
};

}  // namespace velk::check
