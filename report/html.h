// Text for HTML and SVG: what comes from outside is escaped, and numbers are short. And style and
// script of the page, as they stand in report/*.css and report/page.js.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace velk::report {

/// `text` as HTML text, also within quotes, of at most `most` characters, with "..." for those left
/// out. Control characters, those that turn the direction of writing, and bytes that are no UTF-8
/// become U+FFFD.
std::string escaped(std::string_view text, std::size_t most = 120);

/// The same in an element that keeps its direction of writing to itself.
std::string named(std::string_view text, std::size_t most = 120);

/// The same characters, cut in the same way, for text that is no HTML.
std::string cleaned(std::string_view text, std::size_t most = 120);

/// A number with at most one digit behind the point, as SVG coordinates need it: "12", "12.5".
std::string brief(double number);

/// "12 %", "0.3 %", "0 %".
std::string percentText(double share);

/// "950", "1.5k", "20k", "3M": for axes.
std::string shortNumber(double number);

/// The style of a drawing, in the page and alone.
std::string_view drawingStyle();

/// The style of all else in the page.
std::string_view pageStyle();

/// What sorts and filters its tables.
std::string_view pageScript();

}  // namespace velk::report
