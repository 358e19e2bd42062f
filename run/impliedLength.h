// How long a gap is by the pairs that span it.
//
// Of the fragments that reach over a gap with both reads on contigs the longer ones have more
// places, and those that are too short have none. So the pairs seen are longer than the library's
// fragments are, and the length is the one for which they are likeliest, not the mean of what the
// insert size leaves.
#pragma once

#include <vector>

namespace velk::run {

/// The pairs of a library that span a gap.
struct SpanningPairs {
  double number;
  double left;    // mean of the insert size less what lies on the contigs, bases
  double bases;   // mean of both reads' bases
  double insert;  // of the library
  double spread;  // of the library, standard deviation
};

/// The likeliest length in bases, of fragments whose lengths are distributed normally; at least
/// three deviations below 0. REQUIRES: there are pairs.
double likeliestLength(const std::vector<SpanningPairs>& pairs);

}  // namespace velk::run
