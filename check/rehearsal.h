// A small run of velk's own stages on the sample: index, places of the reads, timed search.
#pragma once

#include "check/survey.h"

namespace velk::check {

/// Counts the k-mers that velk would index into survey.kmers. Returns false when there are none.
bool countKmers(Survey& survey);

/// The k-mers that are indexed here at most; their index takes about 0.14 GB for
/// k-mers of 31 bases.
inline constexpr uint64_t kMostIndexed = 100000000;

/// Builds an index of the first contigs that hold `mostKmers` k-mers or, if the free memory is
/// small, less, and fills in index, distinctKmers, isExact and secondsPerKmer. distinctKmers counts
/// the whole assembly; where it is an estimate it is too large rather than too small. Returns the
/// share of the k-mers that is indexed. REQUIRES: countKmers has answered true.
double buildIndex(Survey& survey, uint64_t mostKmers = kMostIndexed);

/// Fills survey.measures from the samples of all pairs. REQUIRES: the index is built.
void measurePairs(Survey& survey);

/// Searches the samples as velk would and fills in secondsPerRead and foundPerRead. Returns the
/// number of reads searched. The samples are used up. REQUIRES: the index is built.
uint64_t searchSample(Survey& survey);

}  // namespace velk::check
