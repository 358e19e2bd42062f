// Runs ahead of the scan of a batch, has the memory fetched that placing a read will ask for, and
// finds out what the k-mer walk of the read need not.
//
// What it hands on to the walk has been looked up, or compared base by base. What it does not find
// the walk finds out itself. So no answer depends on it.
//
// A worker has one, and takes a read through six steps, one entry apart, so that what a step
// asks for has come when the next one needs it.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "kmer/hashSet.h"
#include "placement/scouted.h"

namespace velk {

/// A read on its way through the steps.
struct Scouting : Scouted {
  std::size_t window = 0;             // the k-mer of it that is looked up
  std::array<SlotProbe, 2> probes{};  // the begun look-ups of that, on either strand
  std::array<bool, 2> isBegun{};
  bool isFound = false;   // whether `run` tells where it seems to run
  bool isUnique = false;  // whether the k-mer that tells it occurs once only

  /// Whether its first k-mer tells that it runs, on its own strand, and nowhere else.
  bool runsByFirstKmer() const { return isFound && isUnique && !run.isReversed && window == 0; }
};

class Scout {
 public:
  Scout(const HashSet& index, int kmer) : index_(index), kmer_(kmer) {}

  /// 1. Has the read's bases fetched.
  static void approach(std::string_view read);

  /// Takes a read that nothing is to be found out of; the other steps pass over it.
  static void skip(Scouting& read);

  /// 2. Has fetched what the gram filter says of the read's first k-mer.
  void look(Scouting& read, std::string_view bases) const;

  /// 3. Has the slots fetched of that k-mer, on the strands of which the filter holds it possible;
  /// or what the filter says of the last k-mer, when it is on neither.
  void ask(Scouting& read, std::string_view bases) const;

  /// 4. Finds where the read, or its reverse complement, runs, and has that part of the contig
  /// fetched; or the slots of the read's last k-mer, when the first is not in the index.
  void find(Scouting& read, std::string_view bases) const;

  /// 5. The same by the last k-mer; or has the slots fetched of the middle one, when the last is
  /// not in the index either.
  void findAgain(Scouting& read, std::string_view bases) const;

  /// 6. The same by the middle k-mer. Compares the read with where it runs, and has fetched what
  /// the walk will ask for: the slot of the first k-mer that runs, and what the filter says of
  /// those that do not.
  void compare(Scouting& read, const std::string& bases) const;

 private:
  std::size_t lastWindow(std::string_view bases) const;
  void fetchGram(const PackedBases& packed, std::size_t gram) const;
  std::size_t middleGram(std::size_t window) const;
  bool begin(Scouting& read, std::size_t window) const;
  void finish(Scouting& read, std::string_view bases) const;
  void fetchForWalk(const Scouting& read, std::string_view bases) const;
  void findDifferences(Scouting& read, const std::string& bases) const;
  void fetchStrides(const PackedBases& packed, std::size_t from, std::size_t to) const;

  const HashSet& index_;
  int kmer_;
};

/// The reverse complement of a read, made once.
const std::string& turnedBases(Scouted& read, const std::string& bases);

}  // namespace velk
