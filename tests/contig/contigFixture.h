// What the tests of the scaffold model share: a fixture, the model as plain values, messages, and
// large array allocations that fail on demand.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

#include "contig/contig.h"
#include "tests/support/files.h"
#include "tests/support/runParameters.h"

namespace velk::test {

inline constexpr uint64_t kNoGap = ~uint64_t{0};  // frontGapNum of a first contig in contig input

/// A contig as a value that can be compared and shown.
struct PlainContig {
  std::string bases;
  uint64_t gapNum = 0;
  uint64_t gapSize = 0;

  bool operator==(const PlainContig&) const = default;
};

void PrintTo(const PlainContig& contig, std::ostream* output);

using PlainContigs = std::vector<PlainContig>;

/// `length` bases that differ from place to place.
std::string bases(std::size_t length);

/// `count` times `letter`.
std::string letters(std::size_t count, char letter);

/// What `action` writes to std::cerr.
std::string messagesOf(const std::function<void()>& action);

/// Fixture whose tests build the scaffold model; it is released at the end of the test.
class ContigTest : public RunParametersTest {
 protected:
  ~ContigTest() override;

  /// Splits `sequence` as scaffold "7" alone. Returns its contigs; `positions_` then holds the
  /// .contigPos lines and `gaps_` the number of the next gap.
  PlainContigs split(const std::string& sequence);

  /// Runs both steps of scaffold input on a new file of this text. Returns the file's name.
  std::string loadScaffoldFile(const std::string& text);

  /// Runs the three steps of contig input on a new file of this text, and sets scaffoldSum.
  void loadContigFile(const std::string& text);

  /// The contigs of scaffold `i`.
  static PlainContigs contigsOf(uint32_t i);

  /// The ids of all scaffolds.
  static std::vector<std::string> ids();

  TemporaryFolder folder_;
  std::string positions_;
  uint64_t gaps_ = 0;
};

class SplitScaffold : public ContigTest {};

/// From now on `new T[n]` fails when it asks for more than `bytes`. For use in a statement that is
/// expected to exit, whose process ends before anything else could miss the memory.
void failArraysAbove(std::size_t bytes);

}  // namespace velk::test
