// The plain engine of placement. It looks up every window of a read, and prepares nothing. Tests
// compare the fast engine with it. Its interface: placement/engine.h.
#pragma once

#include <span>
#include <string>

#include "kmer/plainIndex.h"
#include "placement/kmerWalk.h"

namespace velk {

class PlainEngine {
 public:
  struct Prepared {
    const std::string* bases = nullptr;
  };

  PlainEngine(const PlainIndex& index, int kmer) : index_(index), kmer_(kmer) {}

  static std::size_t group() { return 1; }
  static void prepare(std::span<Prepared>, std::span<Prepared>, bool) {}

  template <class Strand, class Visit>
  int64_t visitHits(Strand& strand, Visit visit) const {
    AllWindows windows(index_, strand.bases(), kmer_);
    return visitUniqueHits(windows, visit);
  }

 private:
  PlainIndex index_;
  int kmer_;
};

}  // namespace velk
