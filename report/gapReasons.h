// How many reads a gap should have, by the depth and reach of the libraries, and why it has few or
// none. Pure functions of what the run has kept.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "report/runData.h"

namespace velk::report {

/// Why a gap has few reads or none: the first of these that holds.
enum class Reason : uint8_t {
  kEnough,          // it has as many as can be expected
  kInsertTooLarge,  // every library's insert is too large for its length, and was refused so
  kRepeats,         // the flanks are repeats
  kShortContig,     // a contig beside it is below -L, or shorter than a k-mer
  kNothingNear,     // no read of any library within reach
  kUnlike,          // reads are there, with too many differences
  kShortOverlap,    // reads are there, with too little overlap
  kPlaceholder,     // its length is not known
  kContained,       // a contig beside it has all of the reads
  kFewNear,         // its flanks have few reads, too
  kUnknown          // none of these
};
constexpr std::size_t kReasons = 11;

/// The share of the reads that can be expected, below which a gap has few.
constexpr double kFewShare = 0.25;

/// A word or two for tables, and a sentence.
const char* nameOf(Reason reason);
const char* explain(Reason reason);

/// What is said of a gap.
struct Judgement {
  double expected;  // reads
  uint64_t belonging;
  Reason reason;
  std::string figure;  // what the reason rests on: "97 % of 494 k-mers"; may be empty

  bool hasReads() const { return belonging > 0; }
  bool isFew() const { return hasReads() && reason != Reason::kEnough; }
};

class Judge {
 public:
  /// `data` outlives it.
  explicit Judge(const RunData& data);

  Judgement judge(std::size_t gap) const;

  /// Reads that a gap of `length` bases between long contigs should have.
  double expectedAt(double length) const;

  /// Whether the depth of the libraries is known, on which such numbers rest.
  bool canPredict() const;

  /// Reads in the flanks of a gap per base, as share of the median of all gaps; below nothing where
  /// that is not known.
  double flankDepth(std::size_t gap) const;

 private:
  struct Depth {
    double perBase;  // fragments, or single reads, per base of the contigs
    double read;     // bases
    double insert;   // 0: single reads
    bool needsBigGap;
  };

  static double ofSide(const Depth& depth, double length, double contig);
  double expectedAt(double length, double before, double behind) const;
  Reason reasonOf(std::size_t gap, double expected, uint64_t belonging) const;
  bool areInsertsTooLarge(std::size_t gap) const;
  uint64_t refused(std::size_t gap, Refusal why) const;
  double shareRepeated(std::size_t gap) const;
  double readsPerFlankBase(std::size_t gap) const;
  double flankShare(std::size_t gap) const;  // of what contigs have on average
  std::string figureOf(std::size_t gap, Reason reason) const;

  const RunData& data_;
  std::vector<Depth> depths_;
  double medianFlank_ = 0;  // reads per base
};

/// All gaps of a run.
std::vector<Judgement> judgeAll(const RunData& data, const Judge& judge);

}  // namespace velk::report
