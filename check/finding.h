// What velk-check has to say: the kinds of findings and one finding of a run.
//
// Every kind stands once, in one of the four tables of check/kinds.h and check/kindsInputs.h; an Id
// that no table has does not compile.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "check/kindsInputs.h"

namespace velk::check {

inline constexpr std::size_t kKindCount =
    kKindsCommand.size() + kKindsLibrary.size() + kKindsReads.size() + kKindsAssembly.size();

/// Kind i, in the order command line, library file, read files, assembly. REQUIRES: i < kKindCount.
constexpr const Kind& kindAt(std::size_t i) {
  assert(i < kKindCount);
  if (i < kKindsCommand.size()) return kKindsCommand[i];
  i -= kKindsCommand.size();
  if (i < kKindsLibrary.size()) return kKindsLibrary[i];
  i -= kKindsLibrary.size();
  if (i < kKindsReads.size()) return kKindsReads[i];
  return kKindsAssembly[i - kKindsReads.size()];
}

/// Names a kind; made of the id as it stands in the tables.
class Id {
 public:
  // cppcheck-suppress noExplicitConstructor ; a literal is as good as an Id
  consteval Id(const char* id) : kind_(indexOf(id)) {}  // NOLINT: a literal is as good as an Id
  const Kind& kind() const { return kindAt(kind_); }

 private:
  static consteval std::size_t indexOf(std::string_view id) {
    for (std::size_t i = 0; i < kKindCount; ++i) {
      if (kindAt(i).id == id) return i;
    }
    throw "no such kind of finding";
  }

  std::size_t kind_;
};

/// Where a finding is: a file and, where it has one, the number of a line or of a record, from 1.
struct Place {
  std::string file;     // empty: the command line
  uint64_t line = 0;    // 0: none
  uint64_t record = 0;  // 0: none
};

struct Finding {
  const Kind* kind;
  Place place;
  std::string text;  // what was met, one sentence without a full stop
};

/// The findings of a run, in the order in which they were met.
class Findings {
 public:
  void add(Id id, const Place& place, const std::string& text) {
    all_.push_back({&id.kind(), place, text});
  }

  const std::vector<Finding>& all() const { return all_; }

  bool has(Id id) const {
    return std::any_of(all_.begin(), all_.end(),
                       [&](const Finding& finding) { return finding.kind == &id.kind(); });
  }

  /// The highest level met; kNote also when there is no finding.
  Level highest() const {
    Level highest = Level::kNote;
    for (const Finding& finding : all_) highest = std::max(highest, finding.kind->level);
    return highest;
  }

 private:
  std::vector<Finding> all_;
};

}  // namespace velk::check
