#include "reads/mateNames.h"

namespace velk::reads {
namespace {

std::string_view withoutSuffix(std::string_view name, char mate) {
  if (name.size() < 3 || name.back() != mate) return name;
  const char mark = name[name.size() - 2];
  return mark == '/' || mark == '.' ? name.substr(0, name.size() - 2) : name;
}

}  // namespace

bool haveOneName(std::string_view& first, std::string_view& second) {
  if (first == second) return true;
  const std::string_view firstName = withoutSuffix(first, '1');
  const std::string_view secondName = withoutSuffix(second, '2');
  if (firstName != secondName) return false;
  first = firstName;
  second = secondName;
  return true;
}

}  // namespace velk::reads
