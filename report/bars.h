// Bars of a plot.
#pragma once

#include <string>
#include <vector>

#include "report/svg.h"

namespace velk::report {

/// A bar between two bounds.
struct Bar {
  double from;
  double to;
  double height;
};

/// Draws them as one path, those of height 0 left out, and what lies outside the frame cut off.
void drawBars(Svg& svg, const Frame& frame, const Scale& x, const Scale& y,
              const std::vector<Bar>& bars, const std::string& classes);

double highest(const std::vector<Bar>& bars);

}  // namespace velk::report
