// The hits that a walk has had refused, so that each is told of once. There are few: the first
// ones are looked through as they stand, and only a read with many takes memory of its own.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <set>

#include "placement/kmerWalk.h"

namespace velk {

class RefusedHits {
 public:
  bool contains(const Hit& hit) const {
    const auto end = few_.begin() + static_cast<std::ptrdiff_t>(count_);
    return std::find(few_.begin(), end, hit) != end || (more_ && more_->contains(hit));
  }

  void add(const Hit& hit) {
    if (count_ < few_.size()) {
      few_[count_++] = hit;
    } else {
      if (!more_) more_.emplace();
      more_->insert(hit);
    }
  }

 private:
  std::array<Hit, 4> few_;  // the first `count_` are there
  std::size_t count_ = 0;
  std::optional<std::set<Hit>> more_;  // behind those
};

/// What stands for them where nobody is told.
struct NoRefusedHits {
  static bool contains(const Hit& /*hit*/) { return false; }
};

}  // namespace velk
