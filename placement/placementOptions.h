// What placement needs to know of the run and of the library.
#pragma once

namespace velk {

struct PlacementOptions {
  int kmer;                 // bases in a k-mer
  int insert;               // bases of a fragment, both reads included; 0 for single reads
  int bigGapLength;         // longer inserts are used at gaps of at least so many bases only
  int readLength;           // bases that a read is expected to have
  double mapCut;            // least share of equal bases in an overlap
  double overRatio;         // least share of a read that overlaps a contig
  bool areOutward = false;  // pairs point outwards: their reverse complements are tried
};

}  // namespace velk
