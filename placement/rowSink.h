// velk's own sink: writes records to a worker's row and drops the rest.
#pragma once

#include <cstdint>
#include <string>

#include "contig/contig.h"
#include "placement/sink.h"
#include "streaming/readBuffer.h"

namespace velk {

class RowSink {
 public:
  static constexpr bool kTakesRefusals = false;

  /// Writes to row t from slot n on; n (inout) counts the row's records.
  RowSink(int t, uint32_t& n, const ScaffoldInfo* scaffolds)
      : t_(t), n_(n), scaffolds_(scaffolds) {}

  void found(const Found& found, const std::string& bases) {
    const auto& [kind, gap, position, unmoved] = found.place;
    const ContigInfo& behind = scaffolds_[found.hit.scaffold].contigsInfo[gap];
    recordFound(t_, n_, bases,
                {found.hit.scaffold, gap - 1, position, behind.frontGapNum, behind.frontGapSize});
  }

  static void anchored(const Anchored&) {}

 private:
  int t_;
  uint32_t& n_;
  const ScaffoldInfo* scaffolds_;
};

}  // namespace velk
