// Runs ahead of the scan of a batch and has the memory fetched that placing a read will ask for.
//
// A worker has one, and takes every read of its share through four steps, some entries apart, so
// that what a step asks for has come when the next one needs it. It changes no answer: all that it
// finds is a hint where a read seems to run along a contig, which the k-mer walk takes or leaves.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "kmer/hashSet.h"
#include "placement/kmerWalk.h"

namespace velk {

/// What the steps know of one read.
struct Scouted {
  bool hasBasesAlone;               // and a k-mer of them; false without a side index, too
  PackedBases packed;               // the read, if it has bases alone
  std::array<SlotProbe, 2> probes;  // of one of its k-mers, on both strands
  RunHint run;                      // length 0: none
};

class Scout {
 public:
  Scout(const HashSet& index, int kmer) : index_(index), kmer_(kmer) {}

  /// 1. Has the read's bases fetched.
  static void approach(std::string_view read);

  /// 2. Has the slots fetched of the read's first k-mer.
  void look(Scouted& scouted, std::string_view read) const;

  /// 3. Finds where the read, or its reverse complement, runs, and has that part of the contig
  /// fetched; or the slots of the read's last k-mer, when the first is not in the index.
  void find(Scouted& scouted, std::string_view read) const;

  /// 4. Compares it there, and has fetched what the gram filter says of the bases that differ.
  void compare(Scouted& scouted, std::string_view read);

 private:
  static constexpr int kMostDifferences = 8;  // with more, the read is none of this contig

  std::size_t lastWindow(std::string_view read) const;
  void begin(Scouted& scouted, std::size_t window) const;
  void finish(Scouted& scouted, std::string_view read, std::size_t window) const;
  void fetchGram(const PackedBases& packed, std::size_t gram) const;

  const HashSet& index_;
  int kmer_;
  std::string reversed_;  // the reverse complement of the read in hand
};

}  // namespace velk
