// The report as text for a terminal, and the lines of such a text. Characters count, not bytes.
#pragma once

#include <cstddef>
#include <string>

#include "report/figures.h"

namespace velk::report {

/// A line broken between words to at most `width` characters; what follows the first is indented.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent);

/// The text filled up with blanks, in front of it or behind.
std::string padded(const std::string& text, std::size_t width, bool isRight);

/// Summary, reasons, and the gaps to look at first, in lines of at most `width` characters.
std::string summaryText(const Findings& findings, std::size_t width);

}  // namespace velk::report
