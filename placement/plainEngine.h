// The plain engine of placement: every window of a read is looked up. No read is prepared. It is
// what other engines are compared with.
//
// An engine is a class with these members, one object for each thread; a template argument:
//   struct Prepared { const std::string* bases; ... };   a read, and what the engine knows of it
//   std::size_t group() const;           entries that are best prepared together
//   void prepare(std::span<Prepared> leads, std::span<Prepared> others, bool isReversedFirst);
//                                        takes up the reads to which `bases` points, in place of
//                                        those before; leads are walked over first, their reverse
//                                        complements first where isReversedFirst
//   int64_t visitHits(Strand& strand, Visit visit);      visitUniqueHits (placement/kmerWalk.h) of
//                                        a strand (ReadStrand, placement/place.h), each at most
//                                        once. The string to which `bases` points may have been
//                                        rewritten since. Of a Prepared{} nothing is known.
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
