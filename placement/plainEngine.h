// The plain engine of placement: every window of a read is looked up, and nothing is known of a
// read before. It is what other engines are compared with.
//
// An engine is a class with these members, one object for each thread; a template argument:
//   struct Prepared { std::string* bases; ... };   a read, and what the engine knows of it
//   using Windows = ...;                           for the walk (placement/kmerWalk.h)
//   static constexpr std::size_t kGroup;           entries that are best prepared together
//   void prepare(std::span<Prepared*> leads, std::span<Prepared*> others, bool isReversedFirst);
//                                        takes up the reads to which `bases` points, in place of
//                                        those before; leads are walked over first, their reverse
//                                        complements first where isReversedFirst
//   bool hasBasesAlone(const Prepared&) const;     true is certain: A, C, G and T, a, c, g and t
//   const std::string& reverseComplement(Prepared&);     of *bases, made at most once
//   Windows windows(Prepared&, const std::string& bases, bool isReversed);
//                                        of a strand of the prepared read: `bases` is what is
//                                        tried; isReversed, if it is the reverse complement. The
//                                        string in the buffer may have been rewritten since it was
//                                        prepared. Of a Prepared{} nothing is known.
#pragma once

#include <span>
#include <string>

#include "placement/allWindows.h"
#include "placement/reverseComplement.h"

namespace velk {

class PlainEngine {
 public:
  struct Prepared {
    std::string* bases = nullptr;
    std::string reversed{};
    bool hasReversed = false;
  };

  using Windows = AllWindows;
  static constexpr std::size_t kGroup = 1;

  PlainEngine(const PlainIndex& index, int kmer) : index_(index), kmer_(kmer) {}

  static void prepare(std::span<Prepared*> leads, std::span<Prepared*> others, bool) {
    for (Prepared* read : leads) read->hasReversed = false;
    for (Prepared* read : others) read->hasReversed = false;
  }

  static bool hasBasesAlone(const Prepared&) { return false; }

  static const std::string& reverseComplement(Prepared& read) {
    if (!read.hasReversed) read.reversed = reverseComplementOf(*read.bases);
    read.hasReversed = true;
    return read.reversed;
  }

  Windows windows(const Prepared&, const std::string& bases, bool /*isReversed*/) const {
    return {index_, bases, kmer_};
  }

 private:
  PlainIndex index_;
  int kmer_;
};

}  // namespace velk
