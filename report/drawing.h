// The drawing of a gap: the ends of its contigs, every read at its place by library and kind, mates
// joined, and above them how deep they lie.
#pragma once

#include <string>

#include "report/gapReads.h"
#include "report/runData.h"

namespace velk::report {

/// Reads that a drawing shows at most; of more, whole fragments are picked by chance.
constexpr std::size_t kDrawnReads = 300;

/// Where a drawing stands decides who gives its colours.
enum class Setting : uint8_t {
  kInPage,  // the page's style
  kAlone    // a style of its own, in a file of its own
};

/// The drawing as SVG.
std::string drawGap(const RunData& data, std::size_t gap, const GapReads& reads, Setting setting);

}  // namespace velk::report
