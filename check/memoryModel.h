// The peak memory of a velk run, from what it will hold at once.
#pragma once

#include <cstdint>

#include "check/survey.h"

namespace velk::check {

struct MemoryEstimate {
  uint64_t index = 0;     // of the contigs' k-mers, bytes
  uint64_t assembly = 0;  // contigs, gaps and names
  uint64_t batch = 0;     // a batch of reads, and what is found in it
  uint64_t peak = 0;      // all of it at its highest
};

/// The bases of all contigs of the assembly.
uint64_t contigBases();

/// The bytes that the index takes for so many k-mers, counted as often as they occur, of contigs of
/// so many bases in all: the packed text, and the places of the seeds. Two windows in w + 1 begin
/// with a new seed, where a seed has w places in a window. Repeats and letters that are no bases
/// take more.
uint64_t indexBytes(uint64_t kmers, uint64_t bases);

/// The estimate for the run of `survey`.
/// REQUIRES: the assembly is loaded and its k-mers are counted.
MemoryEstimate estimateMemory(const Survey& survey);

}  // namespace velk::check
