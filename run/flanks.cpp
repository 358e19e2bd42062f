#include "run/flanks.h"

#include <algorithm>

namespace velk::run {

std::string flanksOf(const Assembly& assembly, uint64_t gap) {
  const Gap& place = assembly.gaps()[gap];
  std::string_view front = assembly.basesOf(place.scaffold, place.contigBehind - 1UL);
  std::string_view behind = assembly.basesOf(place.scaffold, place.contigBehind);
  front.remove_prefix(front.size() - std::min<std::size_t>(front.size(), kLongestFlank));
  behind = behind.substr(0, kLongestFlank);
  const std::string name = "gap" + std::to_string(gap);
  const std::string comment = "\tzg:i:" + std::to_string(gap) + "\n";
  std::string text = ">" + name + ":front" + comment;
  text.append(front).append("\n>" + name + ":behind" + comment).append(behind).append("\n");
  return text;
}

}  // namespace velk::run
