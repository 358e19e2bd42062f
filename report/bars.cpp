#include "report/bars.h"

#include <algorithm>

namespace velk::report {

void drawBars(Svg& svg, const Frame& frame, const Scale& x, const Scale& y,
              const std::vector<Bar>& bars, const std::string& classes) {
  std::string d;
  for (const Bar& bar : bars) {
    if (bar.height <= 0) continue;
    const double from = std::max(x.at(bar.from), frame.left);
    const double to = std::min(x.at(bar.to), frame.right);
    if (to <= from) continue;
    d += "M" + brief(from) + " " + brief(frame.bottom) + "V" + brief(y.at(bar.height)) + "H" +
         brief(to) + "V" + brief(frame.bottom) + "z";
  }
  svg.path(d, classes);
}

double highest(const std::vector<Bar>& bars) {
  double most = 0;
  for (const Bar& bar : bars) most = std::max(most, bar.height);
  return most;
}

}  // namespace velk::report
