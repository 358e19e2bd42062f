#include <algorithm>
#include <cmath>
#include <limits>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/countEqual.h"
#include "placement/gapRecord.h"
#include "placement/reverseComplement.h"

namespace velk {
namespace {

// `value` cut off towards zero; what 32 bits cannot hold becomes the nearest limit, no number 0.
int cutToInt(double value) {
  if (std::isnan(value)) return 0;
  constexpr double kLowest = std::numeric_limits<int>::min();
  constexpr double kHighest = std::numeric_limits<int>::max();
  return static_cast<int>(std::clamp(value, kLowest, kHighest));
}

// Whether `same` equal bases are the share of `compared` that a placement asks for.
bool isEqualEnough(int64_t same, int64_t compared, double least) {
  return static_cast<double>(same) / static_cast<double>(compared) >= least;
}

// The bases that a read must have on a contig; not cut off.
double leastOverlap(const std::string& read) {
  return static_cast<double>(read.size()) * OverRatio;
}

// The number of equal bases among `length`, of `contig` from contigStart and `read` from readStart.
int64_t countSame(const std::string& contig, int64_t contigStart, const std::string& read,
                  int64_t readStart, int64_t length) {
  if (length <= 0) return 0;
  return static_cast<int64_t>(countEqual(contig.data() + contigStart, read.data() + readStart,
                                         static_cast<std::size_t>(length)));
}

}  // namespace

void ReverseComplementSeq(std::string& dest, const std::string& src) {
  reverseComplement(dest.data(), src.data(), src.size());
}

void LongReverseComplement(std::string& a, std::string& b) {
  a.swap(b);
  reverseComplementInPlace(a.data(), a.size());
  reverseComplementInPlace(b.data(), b.size());
}

int MapRead2Lcontig(const std::string& contig, const std::string& read, int64_t offset) {
  if (lengthOf(contig) > lengthOf(read) + offset) return 0;
  const int64_t overlap = lengthOf(contig) - offset;
  if (overlap < cutToInt(leastOverlap(read))) return 0;
  const int64_t same = countSame(contig, offset, read, 0, overlap);
  return isEqualEnough(same, overlap, mapCut) ? 1 : 0;
}

int MapRead2Rcontig(const std::string& contig, const std::string& read, int64_t offset) {
  const int64_t reach = lengthOf(read) + offset;
  int64_t same = countSame(contig, 0, read, -offset, std::min(lengthOf(contig), reach));
  const bool spansContig = lengthOf(contig) < reach;
  if (spansContig && leastOverlap(read) > static_cast<double>(contig.size())) same = 0;
  // KEPT: measured against the reach, also where only the contig's length could be compared
  // (MapRead2Rcontig.ShortContigIsMeasuredAgainstTheReach)
  return isEqualEnough(same, reach, mapCut) ? 1 : 0;
}

int MapRead2Contig(const std::string& contig, const std::string& read, int64_t offset) {
  if (offset > 0 && leastOverlap(read) > static_cast<double>(lengthOf(contig) - offset)) return 0;
  if (offset < 0 && leastOverlap(read) > static_cast<double>(offset + lengthOf(read))) return 0;
  const int64_t contigStart = std::max<int64_t>(offset, 0);
  const int64_t readStart = std::max<int64_t>(-offset, 0);
  const int64_t compared = std::min(lengthOf(contig) - contigStart, lengthOf(read) - readStart);
  const int64_t same = countSame(contig, contigStart, read, readStart, compared);
  return isEqualEnough(same, compared, mapCut) ? 1 : 0;
}

}  // namespace velk
