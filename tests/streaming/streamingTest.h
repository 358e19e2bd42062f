// The ground of the streaming tests: a folder to work in, captured messages, the run's globals; a
// small assembly with two gaps, and reads that are found in them.
#pragma once

#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/assembly.h"
#include "tests/support/files.h"

namespace velk::test {

/// Collects what is written to std::cerr during its life.
class CapturedErrors {
 public:
  CapturedErrors() : saved_(std::cerr.rdbuf(text_.rdbuf())) {}
  ~CapturedErrors() { std::cerr.rdbuf(saved_); }
  CapturedErrors(const CapturedErrors&) = delete;
  CapturedErrors& operator=(const CapturedErrors&) = delete;

  std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* saved_;
};

/// Fixture whose tests work in an empty folder, so that file names in messages are short and fixed.
/// The process of an EXPECT_EXIT statement works in the folder of its parent.
class StreamingTest : public AssemblyTest {
 protected:
  StreamingTest();
  ~StreamingTest() override;

  /// Writes `text` to `name` in the working folder, as it stands or as one gzip member.
  static void write(const std::string& name, const std::string& text);
  static void writeGzip(const std::string& name, const std::string& text);

 private:
  std::unique_ptr<TemporaryFolder> folder_;  // null in the process of an EXPECT_EXIT statement
  std::filesystem::path cameFrom_;
};

/// Fixture with two scaffolds "s0" and "s1", each of two contigs of 400 bases with a gap between:
/// gap 0 of 150 bases, gap 1 of 160 bases.
class GapAssemblyTest : public StreamingTest {
 protected:
  static constexpr int kInsert = 500;  // bases, of the pairs below

  GapAssemblyTest();
  ~GapAssemblyTest() override;

  /// A single read found at position -60 of `gap`; reads of different numbers differ.
  std::string singleRead(int gap, unsigned number) const;

  /// The first and second mate of a pair of kInsert; the second one is found at position
  /// `number` (0 to 50) of `gap`, and stored as storedMate().
  std::string firstMate(int gap, unsigned number) const;
  static std::string secondMate(unsigned number) { return reverseComplement(storedMate(number)); }
  static std::string storedMate(unsigned number) { return randomBases(100, 1000 + number); }

  /// The two output lines of a single read, and of a pair's second mate.
  std::string singleRecord(int gap, unsigned number) const;
  static std::string mateRecord(int gap, unsigned number);

  /// Opens fout on "found.fa", and closes it and returns its content.
  static void openOutputFile();
  static std::string writtenOutput();

  /// Starts workers, and stops and releases them.
  void start(int workers);
  void stop();

 private:
  std::string left_[2];  // contigs in front of the gaps
  int workers_ = 0;
};

/// `reads` as FASTA or FASTQ text whose last line ends without newline.
std::string fasta(const std::vector<std::string>& reads);
std::string fastq(const std::vector<std::string>& reads);

}  // namespace velk::test
