// The scaffolds of a run of velk, out of the three files that it leaves beside its scaffold file:
// .gapsinfo, .contigPos and .contig (doc/formats.md).
//
// Contigs and gaps lie here as the search takes them: a gap is as long as it says, and the contig
// behind it begins at its end. Where velk has cut the ends of contigs, the scaffold has more
// bases; `shift` leads there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "run/alignment.h"

namespace velk::report {

struct VelkScaffold {
  std::string id;
  run::Scaffold places;
  std::vector<ContigInfo> contigs;  // their bases

  run::ScaffoldText text() const { return {places, contigs.data()}; }
};

struct VelkGap {
  run::Gap place;
  uint64_t number;  // that velk gives it; some may be left out
  uint64_t reads;   // found for it
  int64_t shift;    // from a position in the gap to that on the scaffold
};

class VelkModel {
 public:
  /// `scaffolds`: the name of the scaffold file, which itself is not read. Throws Failure where a
  /// file is missing or damaged, or one is not of the same run as the others.
  explicit VelkModel(const std::string& scaffolds);

  const std::vector<VelkScaffold>& scaffolds() const { return scaffolds_; }
  const std::vector<VelkGap>& gaps() const { return gaps_; }

 private:
  class Reading;

  std::vector<VelkScaffold> scaffolds_;
  std::vector<VelkGap> gaps_;  // by their numbers
};

}  // namespace velk::report
