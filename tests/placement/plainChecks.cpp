// The checks of the plain model: a read against a contig, without gaps.
#include <cmath>

#include "tests/placement/plainPlacement.h"

namespace velk::test {
namespace {

int64_t lengthOf(const std::string& bases) {
  return static_cast<int64_t>(bases.size());
}

char baseAt(const std::string& bases, int64_t i) {
  return bases.at(static_cast<std::size_t>(i));
}

int64_t cutOff(double value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483647.0) return 2147483647;
  if (value <= -2147483648.0) return -2147483648LL;
  return static_cast<int64_t>(value);
}

double share(int64_t same, int64_t of) {
  return static_cast<double>(same) / static_cast<double>(of);
}

}  // namespace

std::string PlainPlacement::overRightEnd(const std::string& contig, const std::string& read,
                                         int64_t offset) {
  if (lengthOf(contig) > lengthOf(read) + offset) return "inside the contig";
  const int64_t overlap = lengthOf(contig) - offset;
  if (overlap < cutOff(static_cast<double>(read.size()) * settings_.overRatio)) {
    meet("right end: short overlap");
    return "short overlap";
  }
  int64_t same = 0;
  for (int64_t j = 0; j < overlap; ++j) {
    if (baseAt(contig, offset + j) == baseAt(read, j)) ++same;
  }
  return share(same, overlap) >= settings_.mapCut ? "" : "unlike";
}

std::string PlainPlacement::overLeftEnd(const std::string& contig, const std::string& read,
                                        int64_t offset) {
  const int64_t reach = lengthOf(read) + offset;
  std::string reason = "unlike";
  int64_t same = 0;
  if (lengthOf(contig) < reach) {
    meet("left end: over a short contig");
    for (int64_t j = 0; j < lengthOf(contig); ++j) {
      if (baseAt(read, j - offset) == baseAt(contig, j)) ++same;
    }
    const double least = static_cast<double>(read.size()) * settings_.overRatio;
    if (least > static_cast<double>(contig.size())) {
      meet("left end: contig too short");
      same = 0;
      reason = "short overlap";
    }
  } else {
    for (int64_t j = 0; j < reach; ++j) {
      if (baseAt(read, j - offset) == baseAt(contig, j)) ++same;
    }
  }
  return share(same, reach) >= settings_.mapCut ? "" : reason;
}

std::string PlainPlacement::onContig(const std::string& contig, const std::string& read,
                                     int64_t offset) const {
  const int64_t contigLength = lengthOf(contig);
  const int64_t readLength = lengthOf(read);
  const double least = static_cast<double>(readLength) * settings_.overRatio;
  if (offset > 0 && least > static_cast<double>(contigLength - offset)) return "short overlap";
  if (offset < 0 && least > static_cast<double>(offset + readLength)) return "short overlap";
  int64_t compared = 0;
  int64_t contigStart = 0;
  int64_t readStart = 0;
  if (offset >= 0) {
    contigStart = offset;
    compared = contigLength - offset;
    if (compared > readLength) compared = readLength;
  } else {
    readStart = -offset;
    compared = contigLength - offset >= readLength ? offset + readLength : contigLength;
  }
  int64_t same = 0;
  for (int64_t j = 0; j < compared; ++j) {
    if (baseAt(contig, contigStart + j) == baseAt(read, readStart + j)) ++same;
  }
  return share(same, compared) >= settings_.mapCut ? "" : "unlike";
}

}  // namespace velk::test
