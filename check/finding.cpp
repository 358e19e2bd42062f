#include "check/finding.h"

#include <algorithm>

namespace velk::check {

bool Findings::has(Id id) const {
  return std::any_of(all_.begin(), all_.end(),
                     [&](const Finding& finding) { return finding.kind == &id.kind(); });
}

Level Findings::highest() const {
  Level highest = Level::kNote;
  for (const Finding& finding : all_) highest = std::max(highest, finding.kind->level);
  return highest;
}

}  // namespace velk::check
