#include "placement/countEqual.h"

namespace velk {

std::size_t countEqual(const char* one, const char* other, std::size_t length) {
  std::size_t equal = 0;
  for (std::size_t i = 0; i < length; ++i) equal += one[i] == other[i] ? 1 : 0;
  return equal;
}

}  // namespace velk
