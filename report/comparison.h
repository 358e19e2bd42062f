// Two runs side by side: gaps matched by scaffold and position, and what the second one gained and
// lost.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "report/figures.h"

namespace velk::report {

/// A gap of both runs.
struct SharedGap {
  std::size_t one;    // number in the first run
  std::size_t other;  // and in the second one
  int64_t gain;       // reads that belong in it, more in the second run
};

/// What a library found of a kind, in either run.
struct KindCounts {
  std::string library;
  ReadKind kind;
  uint64_t one;
  uint64_t other;
};

struct Comparison {
  std::vector<SharedGap> gaps;  // the largest gain first
  uint64_t onlyOne = 0;         // gaps of the first run alone
  uint64_t onlyOther = 0;
  uint64_t gained = 0;  // shared gaps with more reads
  uint64_t lost = 0;
  uint64_t filled = 0;   // that have reads, and had none
  uint64_t emptied = 0;  // that have none, and had some
  std::vector<KindCounts> kinds;
};

Comparison compare(const Findings& one, const Findings& other);

/// What the two runs are called on the page.
using RunNames = std::array<std::string, 2>;

/// The comparison as a page that fetches nothing, and as text of at most `width` characters a line.
std::string comparisonPage(const Findings& one, const Findings& other, const RunNames& names);
std::string comparisonText(const Findings& one, const Findings& other, std::size_t width);

}  // namespace velk::report
