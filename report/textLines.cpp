#include "report/textLines.h"

#include <algorithm>

namespace velk::report {
namespace {

// Characters, not bytes.
std::size_t lengthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0U) != 0x80;
  }));
}

}  // namespace

std::string wrapped(const std::string& text, std::size_t width, std::size_t indent) {
  std::string lines;
  std::string line;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find(' ', at), text.size());
    const std::string word = text.substr(at, end - at);
    if (!line.empty() && lengthOf(line) + 1 + lengthOf(word) > width) {
      lines += line + "\n";
      line = std::string(indent, ' ') + word;
    } else {
      line += (line.empty() ? "" : " ") + word;
    }
    at = end + 1;
  }
  return lines + line + "\n";
}

std::string padded(const std::string& text, std::size_t width, bool isRight) {
  const std::string room(width - std::min(width, lengthOf(text)), ' ');
  return isRight ? room + text : text + room;
}

}  // namespace velk::report
