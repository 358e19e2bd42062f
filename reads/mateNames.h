// The names of mates: which two reads count as one pair.
//
// There are two rules. velk-run writes one name for both mates, so it takes only what haveOneName()
// makes one name of, and ends at all else. velk compares no names; velk-check, which looks at its
// inputs, reports only what no custom of naming explains: mayBeMates(). Each pair of names that the
// first takes the second takes, too.
#pragma once

#include <string_view>

namespace velk::reads {

/// `name` without "/1" or ".1" at its end, or another number of a mate; all of it where that is not
/// there, or nothing would be left.
inline std::string_view withoutMateNumber(std::string_view name, char number) {
  if (name.size() < 3 || name.back() != number) return name;
  const char mark = name[name.size() - 2];
  return mark == '/' || mark == '.' ? name.substr(0, name.size() - 2) : name;
}

/// Whether two reads have names of mates: the same, or the same but for "/1" or ".1" at the end of
/// the first and "/2" or ".2" at the end of the second, which are then cut off (inout).
inline bool haveOneName(std::string_view& first, std::string_view& second) {
  if (first == second) return true;
  const std::string_view firstName = withoutMateNumber(first, '1');
  const std::string_view secondName = withoutMateNumber(second, '2');
  if (firstName != secondName) return false;
  first = firstName;
  second = secondName;
  return true;
}

/// Whether two reads may be mates by their names: these are one, or differ in one last character
/// that distinguishes first from second mates, as in "r_F" and "r_R".
inline bool mayBeMates(std::string_view first, std::string_view second) {
  if (haveOneName(first, second)) return true;
  if (first.size() != second.size() || first.empty()) return false;
  if (first.substr(0, first.size() - 1) != second.substr(0, second.size() - 1)) return false;
  const char one = first.back();
  const char other = second.back();
  return (one == '1' && other == '2') || (one == 'F' && other == 'R') ||
         (one == 'f' && other == 'r') || (one == 'a' && other == 'b');
}

}  // namespace velk::reads
