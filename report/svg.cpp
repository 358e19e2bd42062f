#include "report/svg.h"

#include <algorithm>
#include <cmath>

namespace velk::report {
namespace {

std::string attribute(const char* name, double number) {
  return std::string(" ") + name + "=\"" + brief(number) + "\"";
}

std::string classOf(std::string_view classes) {
  return classes.empty() ? "" : " class=\"" + std::string(classes) + "\"";
}

}  // namespace

Svg::Svg(double width, double height, std::string_view label)
    : width_(width),
      height_(height),
      text_("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 " + brief(width) + " " +
            brief(height) + "\" role=\"img\" aria-label=\"" + escaped(label, 400) + "\">") {}

void Svg::rect(double x, double y, double width, double height, std::string_view classes) {
  text_ += "<rect" + attribute("x", x) + attribute("y", y) + attribute("width", width) +
           attribute("height", height) + classOf(classes) + "/>";
}

void Svg::line(double x1, double y1, double x2, double y2, std::string_view classes) {
  path("M" + brief(x1) + " " + brief(y1) + "L" + brief(x2) + " " + brief(y2), classes);
}

void Svg::path(const std::string& d, std::string_view classes) {
  if (!d.empty()) text_ += "<path d=\"" + d + "\"" + classOf(classes) + "/>";
}

void Svg::text(double x, double y, std::string_view text, std::string_view anchor,
               std::string_view classes) {
  text_ += "<text" + attribute("x", x) + attribute("y", y);
  if (anchor != "start") text_.append(" text-anchor=\"").append(anchor).append("\"");
  text_.append(classOf(classes)).append(">").append(text).append("</text>");
}

void Svg::upwards(double x, double y, std::string_view text) {
  text_.append("<text class=\"axis-name\" text-anchor=\"middle\" transform=\"translate(")
      .append(brief(x) + " " + brief(y))
      .append(") rotate(-90)\">")
      .append(text)
      .append("</text>");
}

void Svg::style(std::string_view css) {
  text_.append("<style>").append(css).append("</style>");
}

std::string Svg::finish() && {
  return std::move(text_) + "</svg>";
}

Scale Scale::linear(double low, double high, double from, double to) {
  return {false, low, high > low ? high : low + 1, from, to};
}

Scale Scale::logarithmic(double low, double high, double from, double to) {
  return {true, std::log10(low), std::log10(std::max(high, 10 * low)), from, to};
}

double Scale::shapedOf(double value) const {
  return isLog_ ? std::max(std::log10(std::max(value, 1e-9)), low_) : value;
}

double Scale::at(double value) const {
  return from_ + (shapedOf(value) - low_) / (high_ - low_) * (to_ - from_);
}

std::vector<Tick> Scale::ticks(int wanted) const {
  std::vector<Tick> ticks;
  if (isLog_) {
    const bool isShort = high_ - low_ < 2;
    const int every = std::max(1, static_cast<int>(std::ceil((high_ - low_) / wanted)));
    for (int power = 0; power <= static_cast<int>(high_ + 1e-9); power += every) {
      for (const double times : {1.0, 2.0, 5.0}) {
        const double value = times * std::pow(10, power);
        const double shaped = std::log10(value);
        if (times != 1 && !isShort) continue;
        if (shaped >= low_ && shaped <= high_) ticks.push_back({value, shortNumber(value)});
      }
    }
    return ticks;
  }
  const double rough = (high_ - low_) / wanted;
  const double power = std::pow(10, std::floor(std::log10(rough)));
  const double digits = rough / power;
  const double step = power * (digits > 5 ? 10 : digits > 2 ? 5 : digits > 1 ? 2 : 1);
  for (double value = std::ceil(low_ / step) * step; value <= high_ + step * 1e-9; value += step) {
    ticks.push_back({value, shortNumber(value)});
  }
  return ticks;
}

void drawAxes(Svg& svg, const Frame& frame, const Scale& x, const Scale& y, std::string_view xName,
              std::string_view yName) {
  for (const Tick& tick : y.ticks(5)) {
    const double at = y.at(tick.value);
    svg.line(frame.left, at, frame.right, at, "grid");
    svg.text(frame.left - 8, at + 4, tick.label, "end", "tick");
  }
  svg.line(frame.left, frame.bottom, frame.right, frame.bottom, "axis");
  for (const Tick& tick : x.ticks(7)) {
    const double at = x.at(tick.value);
    svg.line(at, frame.bottom, at, frame.bottom + 4, "axis");
    svg.text(at, frame.bottom + 17, tick.label, "middle", "tick");
  }
  svg.text((frame.left + frame.right) / 2, frame.bottom + 36, xName, "middle", "axis-name");
  if (!yName.empty()) svg.upwards(13, (frame.top + frame.bottom) / 2, yName);
}

void Dots::add(double x, double y) {
  points_.emplace_back(static_cast<int>(std::lround(y * 2)), static_cast<int>(std::lround(x * 2)));
}

std::string Dots::path() const {
  constexpr std::size_t kMostDots = 8000;
  std::vector<std::pair<int, int>> points = points_;
  for (int side = 1;; side *= 2) {  // of the square, in half pixels
    for (auto& [y, x] : points) {
      y = y / side * side;
      x = x / side * side;
    }
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (points.size() <= kMostDots) break;
  }
  std::string d;
  for (const auto& [y, x] : points) d += "M" + brief(x / 2.0) + " " + brief(y / 2.0) + "h0";
  return d;
}

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
