// Pictures as inline SVG: a canvas, the scales and axes of plots, and bars in them. Colours are
// classes, which page.css gives for light, dark and paper.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "report/html.h"

namespace velk::report {

class Svg {
 public:
  /// `label`: what the picture shows, for those who do not see it; plain text.
  Svg(double width, double height, std::string_view label);

  void rect(double x, double y, double width, double height, std::string_view classes);
  void line(double x1, double y1, double x2, double y2, std::string_view classes);
  void path(const std::string& d, std::string_view classes);

  /// `anchor`: "start", "middle" or "end". `text` is HTML.
  void text(double x, double y, std::string_view text, std::string_view anchor,
            std::string_view classes);

  /// A style that the picture brings along; `css` has no "</".
  void style(std::string_view css);

  /// Text that runs upwards along a vertical axis.
  void upwards(double x, double y, std::string_view text);

  std::string finish() &&;

  double width() const { return width_; }
  double height() const { return height_; }

 private:
  double width_;
  double height_;
  std::string text_;
};

/// A mark of an axis.
struct Tick {
  double value;
  std::string label;
};

/// Maps values to a stretch of the picture.
class Scale {
 public:
  static Scale linear(double low, double high, double from, double to);
  /// REQUIRES: low > 0. What is smaller counts as `low`.
  static Scale logarithmic(double low, double high, double from, double to);

  double at(double value) const;

  /// About `wanted` round values.
  std::vector<Tick> ticks(int wanted) const;

 private:
  Scale(bool isLog, double low, double high, double from, double to)
      : isLog_(isLog), low_(low), high_(high), from_(from), to_(to) {}

  double shapedOf(double value) const;

  bool isLog_;
  double low_;  // shaped, like the next
  double high_;
  double from_;
  double to_;
};

/// The frame of a plot: where its axes lie.
struct Frame {
  double left;
  double top;
  double right;
  double bottom;
};

/// Draws the axes with their marks and names.
void drawAxes(Svg& svg, const Frame& frame, const Scale& x, const Scale& y, std::string_view xName,
              std::string_view yName);

/// Many dots as one path: those at the same half of a pixel count once. Of more than some thousands
/// those within a wider square count once, so that a path has some 100 kB at most.
class Dots {
 public:
  void add(double x, double y);
  std::string path() const;

 private:
  std::vector<std::pair<int, int>> points_;  // (y, x) in half pixels
};

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
