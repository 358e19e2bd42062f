// The ground of the streaming tests: a folder to work in, captured messages, the run's globals.
#pragma once

#include <iostream>
#include <memory>
#include <sstream>
#include <string>

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

}  // namespace velk::test
