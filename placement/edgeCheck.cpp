#include "placement/edgeCheck.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>
#include <utility>

#include "kmer/machine.h"

namespace velk {
namespace {

// Writes the reverse complement of the `length` characters at `source` to `target`.
VELK_VECTORISED void reverseComplement(char* __restrict target, const char* __restrict source,
                                       std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    const char upper = static_cast<char>(source[length - 1 - i] & 0xDF);
    target[i] = upper == 'A' ? 'T' : upper == 'C' ? 'G' : upper == 'G' ? 'C' : 'A';
  }
}

// `value` rounded towards zero. Outside of 32 bits: the nearest limit; NaN: 0.
int cutToInt(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

// kUnlike if fewer than the share mapCut of the compared bases are equal.
Refusal checkShare(int64_t same, int64_t compared, const PlacementOptions& options) {
  const double share = static_cast<double>(same) / static_cast<double>(compared);
  return share >= options.mapCut ? Refusal::kNone : Refusal::kUnlike;
}

// The bases that a read must have on a contig, not rounded.
double leastOverlap(const std::string& read, const PlacementOptions& options) {
  return static_cast<double>(read.size()) * options.overRatio;
}

// The number of equal bases among `length`, of `contig` from contigStart and `read` from readStart.
int64_t countSame(std::string_view contig, int64_t contigStart, const std::string& read,
                  int64_t readStart, int64_t length) {
  if (length <= 0) return 0;
  return static_cast<int64_t>(countEqual(contig.data() + contigStart, read.data() + readStart,
                                         static_cast<std::size_t>(length)));
}

}  // namespace

void ReverseComplementSeq(std::string& dest, const std::string& src) {
  assert(dest.size() == src.size());
  reverseComplement(dest.data(), src.data(), src.size());
}

void LongReverseComplement(std::string& a, std::string& b) {
  assert(&a != &b);
  std::string ofA(a.size(), 'A');
  ReverseComplementSeq(ofA, a);
  a.resize(b.size());
  ReverseComplementSeq(a, b);
  b = std::move(ofA);
}

Refusal checkOverRightEnd(std::string_view contig, const std::string& read, int64_t offset,
                          const PlacementOptions& options) {
  assert(offset > 0);
  if (lengthOf(contig) > lengthOf(read) + offset) return Refusal::kInsideContig;
  const int64_t overlap = lengthOf(contig) - offset;
  if (overlap < cutToInt(leastOverlap(read, options))) return Refusal::kShortOverlap;
  return checkShare(countSame(contig, offset, read, 0, overlap), overlap, options);
}

Refusal checkOverLeftEnd(std::string_view contig, const std::string& read, int64_t offset,
                         const PlacementOptions& options) {
  assert(offset < 0);
  const int64_t reach = lengthOf(read) + offset;
  const int64_t compared = std::min(lengthOf(contig), reach);
  // KEPT: measured against the reach, also where only the contig's length could be compared
  // (MapRead2Rcontig.ShortContigIsMeasuredAgainstTheReach)
  const bool spansContig = lengthOf(contig) < reach;
  if (spansContig && leastOverlap(read, options) > static_cast<double>(contig.size())) {
    // Treated as zero equal bases: accepted only if mapCut <= 0.
    const bool isEnough = checkShare(0, reach, options) == Refusal::kNone;
    return isEnough ? Refusal::kNone : Refusal::kShortOverlap;
  }
  return checkShare(countSame(contig, 0, read, -offset, compared), reach, options);
}

Refusal checkOnContig(std::string_view contig, const std::string& read, int64_t offset,
                      const PlacementOptions& options) {
  const double least = leastOverlap(read, options);
  const bool isShort = (offset > 0 && least > static_cast<double>(lengthOf(contig) - offset)) ||
                       (offset < 0 && least > static_cast<double>(offset + lengthOf(read)));
  if (isShort) return Refusal::kShortOverlap;
  const int64_t contigStart = std::max<int64_t>(offset, 0);
  const int64_t readStart = std::max<int64_t>(-offset, 0);
  const int64_t compared = std::min(lengthOf(contig) - contigStart, lengthOf(read) - readStart);
  return checkShare(countSame(contig, contigStart, read, readStart, compared), compared, options);
}

}  // namespace velk
