#include "reads/quality.h"

#include <algorithm>
#include <limits>

namespace velk::reads {
namespace {

// Phred+64 begins at ';' (-5, on its oldest form) and goes up to 'i' or so (41); of real reads the
// best lie beyond 'Z' (26), which Phred+33 has for 57.
constexpr char kLowest = ';';
constexpr char kLeastBest = 'Z';
constexpr char kMostBest = 'j';

}  // namespace

bool looksLikePhred64(const Sample& sample) {
  char lowest = std::numeric_limits<char>::max();
  char best = 0;
  for (const std::vector<KeptRead>* reads : {&sample.first, &sample.second}) {
    for (const KeptRead& read : *reads) {
      for (const char quality : read.quality) {
        lowest = std::min(lowest, quality);
        best = std::max(best, quality);
      }
    }
  }
  return lowest >= kLowest && best >= kLeastBest && best <= kMostBest;
}

}  // namespace velk::reads
