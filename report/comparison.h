// Two runs side by side: gaps matched by scaffold and position, and what the second one gained and
// lost.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
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

/// A library of either run, or of both: by its name.
struct SharedLibrary {
  std::string name;
  std::optional<std::size_t> one;    // number in the first run
  std::optional<std::size_t> other;  // and in the second one
};

/// Reads that are more or fewer at gaps of both runs, and at how many gaps they are.
struct Change {
  uint64_t reads = 0;
  uint64_t gaps = 0;
};

/// What a library found of a kind, in either run, and how that changed gap by gap.
struct KindCounts {
  std::size_t library;  // in Comparison::libraries
  ReadKind kind;
  uint64_t one = 0;
  uint64_t other = 0;
  Change gained{};
  Change lost{};
};

/// What a gap has more, or fewer, of a library and kind.
struct KindChange {
  std::size_t library;  // in Comparison::libraries
  ReadKind kind;
  int64_t reads;  // not 0
};

struct Comparison {
  std::vector<SharedGap> gaps;  // the largest gain first
  uint64_t onlyOne = 0;         // gaps of the first run alone
  uint64_t onlyOther = 0;
  uint64_t gained = 0;  // shared gaps with more reads
  uint64_t lost = 0;
  uint64_t filled = 0;                   // that have reads, and had none
  uint64_t emptied = 0;                  // that have none, and had some
  std::vector<SharedLibrary> libraries;  // those of the first run in front
  std::vector<KindCounts> kinds;         // by library and kind
};

Comparison compare(const Findings& one, const Findings& other);

/// What changed at a gap, in the order of libraries and kinds.
std::vector<KindChange> changesAt(const Comparison& comparison, const SharedGap& gap,
                                  const Findings& one, const Findings& other);

/// The same in words, by library: "lib1: -2 exact, +1 anchor; lib2: +3 estimate". `minus` stands
/// before what a gap has fewer; `nameOf` makes text of a library's name.
std::string changesText(const Comparison& comparison, const std::vector<KindChange>& changes,
                        const std::string& minus, std::string (*nameOf)(const std::string&));

/// "+5", "0", or 5 behind `minus`.
std::string signedText(int64_t number, const std::string& minus);

/// What the two runs are called on the page.
using RunNames = std::array<std::string, 2>;

/// The comparison as a page that fetches nothing, and as text of at most `width` characters a line.
std::string comparisonPage(const Findings& one, const Findings& other, const RunNames& names);
std::string comparisonText(const Findings& one, const Findings& other, std::size_t width);

}  // namespace velk::report
