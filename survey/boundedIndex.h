// An index of the first contigs of an assembly, as large as one likes: enough to place a sample of
// reads, and soon made. It is one of its own beside the run's (kmer/fetchKmers.h).
//
// FirstContigs chooses the contigs, BoundedIndex is made of them. It is read-only afterwards; each
// thread takes an engine of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "placement/engine.h"
#include "survey/assembly.h"

namespace velk::survey {

/// The first contigs of some scaffolds that hold at most so many k-mers, but one with k-mers at
/// least: whole scaffolds and some contigs of one more.
class FirstContigs {
 public:
  FirstContigs(Scaffolds scaffolds, uint64_t mostKmers);

  /// The chosen contigs, which bear the numbers that they have among all.
  Scaffolds chosen() const { return chosen_; }

  uint64_t kmers() const { return kmers_; }  // of them, counted as often as they occur
  bool areAll() const { return areAll_; }    // whether no contig is left out

 private:
  std::vector<ScaffoldInfo> chosen_;  // views of the model's contigs, without names
  uint64_t kmers_ = 0;
  bool areAll_ = true;
};

class BoundedIndex {
 public:
  /// Indexes `contigs` with `threads` threads. Throws std::bad_alloc when memory runs out.
  /// REQUIRES: `kmer` is the run's Kmer, and at least 1; `contigs` holds k-mers.
  BoundedIndex(FirstContigs contigs, int kmer, int threads);
  ~BoundedIndex();
  BoundedIndex(const BoundedIndex&) = delete;
  BoundedIndex& operator=(const BoundedIndex&) = delete;

  /// An engine over the index, which must outlive it.
  Engine engine() const;

  const FirstContigs& contigs() const { return contigs_; }
  uint64_t distinctKmers() const;
  double secondsPerKmer() const { return secondsPerKmer_; }  // that it took to index one

 private:
  struct Built;  // the index of this build's engine

  FirstContigs contigs_;
  int kmer_;
  std::unique_ptr<Built> built_;
  double secondsPerKmer_;
};

}  // namespace velk::survey
