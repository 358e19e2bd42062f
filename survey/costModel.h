// The memory and the time that a run takes: from what it holds at once, contigs, index, a batch of
// reads; and from a short search of samples.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "placement/edgeCheck.h"
#include "streaming/readBuffer.h"
#include "survey/assembly.h"
#include "survey/boundedIndex.h"

namespace velk::survey {

/// The bytes that the index takes for so many k-mers, counted as often as they occur, of contigs of
/// so many bases in all: the packed text, and the places of the seeds. Two windows in w + 1 begin
/// with a new seed, where a seed has w places in a window. Repeats and letters that are no bases
/// take more.
uint64_t indexBytes(int kmer, uint64_t kmers, uint64_t bases);

/// The bytes that contigs, gaps and names take.
uint64_t assemblyBytes(Scaffolds scaffolds);

/// A batch of reads, and what is found in it.
struct BatchShape {
  bool arePairs = false;
  uint64_t entries = 0;        // reads or pairs that it holds at most
  uint64_t room = bufferSize;  // entries that there is room for
  uint64_t readLength = 0;     // bases of a read, on average
  double foundPerRead = 0;     // records
  int threads = 1;             // workers that share it
};

/// The bytes that a batch takes, with the rows of what is found in it.
uint64_t batchBytes(const BatchShape& shape);

struct MemoryEstimate {
  uint64_t index = 0;     // of the contigs' k-mers, bytes
  uint64_t assembly = 0;  // contigs, gaps and names
  uint64_t batch = 0;     // a batch of reads, and what is found in it
  uint64_t peak = 0;      // all of it at its highest
};

/// The estimate for parts of these bytes and so many threads.
MemoryEstimate peakMemory(uint64_t index, uint64_t assembly, uint64_t batch, int threads);

/// Some reads or pairs of a library, as they were sequenced.
struct Sample {
  int insert = 0;              // bases of a fragment; 0 for single reads
  std::vector<std::string> a;  // reads, or the first reads of pairs
  std::vector<std::string> b;  // the second reads; empty without an insert
};

/// What a search of samples has come to.
struct SearchTrial {
  uint64_t reads = 0;  // that were searched
  uint64_t found = 0;  // records
  double seconds = 0;  // on one thread

  double secondsPerRead() const { return reads == 0 ? 0 : seconds / static_cast<double>(reads); }
  double foundPerRead() const {
    return reads == 0 ? 0 : static_cast<double>(found) / static_cast<double>(reads);
  }
};

/// Searches `samples` as a run does, each with `options` and its own insert. REQUIRES: the index is
/// one of contigs of `scaffolds`; as many second reads as first ones where there is an insert.
SearchTrial trySearch(const BoundedIndex& index, Scaffolds scaffolds,
                      const PlacementOptions& options, std::vector<Sample> samples);

/// The reads, or pairs, of an input.
struct InputCost {
  uint64_t records = 0;
  bool arePairs = false;
  double secondsToRead = 0;  // one of them from its file
};

/// The seconds in which an input is read and searched by so many threads.
double inputSeconds(const InputCost& input, double secondsPerRead, int threads);

}  // namespace velk::survey
