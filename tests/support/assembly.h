// Builds the run's globals (scaffold model, index, result rows) for placement and streaming tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/runParameters.h"

namespace velk::test {

/// One contig of a scaffold and the length of the gap in front of it (ignored for a first contig).
struct TestContig {
  std::string bases;
  int64_t gapBefore = 0;
};

using TestScaffold = std::vector<TestContig>;

/// One found-read record, with the read.
struct TestRecord {
  std::string read;
  uint64_t scaffold;
  uint64_t frontContig;
  int64_t positionInGap;
  uint64_t gapNum;
  uint64_t gapsSize;

  bool operator==(const TestRecord&) const = default;
};

/// `length` random bases out of ACGT, the same for the same seed.
std::string randomBases(std::size_t length, unsigned seed);

/// The reverse complement of `bases`, written anew for tests.
std::string reverseComplement(const std::string& bases);

/// Fixture whose tests load an assembly; everything is released at the end of the test.
class AssemblyTest : public RunParametersTest {
 protected:
  ~AssemblyTest() override;

  /// Makes `scaffolds` the scaffold model (ids "s0", "s1", ..., gaps numbered from 0 over all
  /// scaffolds), indexes it with the current Kmer and CONTIGLEN and allocates the gap counters.
  void load(const std::vector<TestScaffold>& scaffolds);

  /// Releases what load() made, so that it can be called again.
  static void releaseAssembly();

  /// Allocates empty result rows for `workers` workers (without threads) and sets thread_num and
  /// threadNum.
  void allocateRows(int workers);

  /// The first `n` records of row `t`.
  static std::vector<TestRecord> recordsOf(int t, uint64_t n);

 private:
  int rows_ = 0;
};

}  // namespace velk::test
