#include "report/html.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace velk::report {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

// A character at the start of a text: its bytes, and its code point; none: not UTF-8.
struct Character {
  std::size_t bytes;
  uint32_t code;
  bool isGood;
};

Character firstOf(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const uint32_t lead = byte(0);
  if (lead < 0x80) return {1, lead, true};
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {1, 0, false};
  constexpr std::array<uint32_t, 5> kLeast{0, 0, 0x80, 0x800, 0x10000};
  uint32_t code = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80) return {1, 0, false};
    code = code << 6 | (byte(i) & 0x3FU);
  }
  const bool isSurrogate = code >= 0xD800 && code <= 0xDFFF;
  if (code < kLeast[length] || code > 0x10FFFF || isSurrogate) return {1, 0, false};
  return {length, code, true};
}

bool isShown(uint32_t code) {
  if (code < 0x20 || (code >= 0x7F && code < 0xA0)) return false;
  const bool turnsDirection = (code >= 0x200B && code <= 0x200F) ||
                              (code >= 0x2028 && code <= 0x202E) ||
                              (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
  return !turnsDirection && (code & 0xFFFEU) != 0xFFFE;
}

template <class Put>
void forEachCharacter(std::string_view text, std::size_t most, Put put) {
  for (std::size_t n = 0; !text.empty(); ++n) {
    if (n == most) {
      put(kEllipsis);
      return;
    }
    const Character character = firstOf(text);
    const bool isKept = character.isGood && isShown(character.code);
    put(isKept ? text.substr(0, character.bytes) : kReplacement);
    text.remove_prefix(character.bytes);
  }
}

}  // namespace

std::string escaped(std::string_view text, std::size_t most) {
  std::string html;
  forEachCharacter(text, most, [&](std::string_view character) {
    switch (character[0]) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      case '\'':
        html += "&#39;";
        break;
      default:
        html += character;
    }
  });
  return html;
}

std::string named(std::string_view text, std::size_t most) {
  return "<bdi>" + escaped(text, most) + "</bdi>";
}

std::string cleaned(std::string_view text, std::size_t most) {
  std::string clean;
  forEachCharacter(text, most, [&](std::string_view character) { clean += character; });
  return clean;
}

std::string brief(double number) {
  const auto tenths = std::llround(number * 10);
  const auto size = std::llabs(tenths);
  std::string text = (tenths < 0 ? "-" : "") + std::to_string(size / 10);
  if (size % 10 != 0) text += "." + std::to_string(size % 10);
  return text;
}

std::string percentText(double share) {
  const double percent = 100 * share;
  const bool isWhole = percent >= 10 || percent < 0.05;
  return (isWhole ? std::to_string(std::llround(percent)) : brief(percent)) + " %";
}

std::string shortNumber(double number) {
  constexpr std::array kUnits{"", "k", "M", "G", "T"};
  std::size_t unit = 0;
  while (std::abs(number) >= 1000 && unit + 1 < kUnits.size()) {
    number /= 1000;
    ++unit;
  }
  return brief(number) + kUnits[unit];
}

}  // namespace velk::report
