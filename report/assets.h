// Style and script of the page, as they stand in report/*.css and report/page.js.
#pragma once

#include <string_view>

namespace velk::report {

/// The style of a drawing, in the page and alone.
std::string_view drawingStyle();

/// The style of all else in the page.
std::string_view pageStyle();

/// What sorts and filters its tables.
std::string_view pageScript();

}  // namespace velk::report
