// Lines of text for a terminal. Characters count, not bytes.
#pragma once

#include <cstddef>
#include <string>

namespace velk::report {

/// A line broken between words to at most `width` characters; what follows the first is indented.
std::string wrapped(const std::string& text, std::size_t width, std::size_t indent);

/// The text filled up with blanks, in front of it or behind.
std::string padded(const std::string& text, std::size_t width, bool isRight);

}  // namespace velk::report
