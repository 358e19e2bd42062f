// Fixture of the placement tests: an assembly, small result rows and one call per routine.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "kmer/hashSet.h"
#include "tests/placement/plainPlacement.h"
#include "tests/support/assembly.h"

namespace velk::test {

/// The plain engine's table of the assembly, whichever engine the run's functions take; null
/// without an assembly. Written by PlacementTest.
extern HashSet* plainHash;

/// What a placement routine did with a read.
struct Outcome {
  int64_t stop;                     // i: where the walk over the k-mers stopped
  std::vector<TestRecord> records;  // what it wrote, in order
};

/// For messages of failed tests.
void PrintTo(const TestRecord& record, std::ostream* out);

/// `bases` with another base than before at each of the positions `at`.
std::string withMismatches(std::string bases, const std::vector<std::size_t>& at);

/// A read of `length` bases whose first base lies at `offset` of `contig`: the contig's bases, and
/// others, unlike any contig's, where the read hangs over.
std::string readAt(const std::string& contig, int64_t offset, int64_t length);

class PlacementTest : public AssemblyTest {
 protected:
  PlacementTest();
  ~PlacementTest() override;

  /// Makes `scaffolds` the assembly, in place of an earlier one, indexed for both engines with the
  /// current Kmer and CONTIGLEN.
  void assemble(const std::vector<TestScaffold>& scaffolds);

  /// Makes these the run's parameters.
  static void makeParameters(const PlainSettings& settings);

  /// Gives the test rows for `workers` workers in place of the earlier ones (it starts with one).
  void setWorkers(int workers);

  // Each calls the routine on row 0 from slot 0 on, with i set to a value that it must replace.
  static Outcome single(const std::string& read);
  static Outcome forward(const std::string& anchor, const std::string& mate);
  static Outcome reverse(const std::string& anchor, const std::string& mate);

  /// Makes `reads` a single-end batch.
  void setBatch(std::vector<std::string> reads);

  /// Makes `first` and `second` a batch of pairs.
  void setBatch(std::vector<std::string> first, std::vector<std::string> second);

  /// Lets worker t scan the batch. Returns the records that it says it wrote.
  static std::vector<TestRecord> scan(int t);

  /// The reads of the batch as they stand now.
  const std::vector<std::string>& firstReads() const { return first_; }
  const std::vector<std::string>& secondReads() const { return second_; }

 private:
  void unload();

  int workers_ = 0;
  std::vector<std::string> first_;
  std::vector<std::string> second_;
};

}  // namespace velk::test
