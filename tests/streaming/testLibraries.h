// Library records for tests, without a library file.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "libinfo/libinfo.h"

namespace velk::test {

/// The files of one library.
struct TestLibrary {
  int averageInsert = 0;  // bases
  std::vector<std::pair<std::string, std::string>> pairs;
  std::vector<std::string> single2;
  std::vector<std::string> single;
  std::vector<std::string> singlequal;
};

/// The records of `libraries`, released at the end of its life.
class TestLibraries {
 public:
  explicit TestLibraries(const std::vector<TestLibrary>& libraries);
  ~TestLibraries() { delete[] libs_; }
  TestLibraries(const TestLibraries&) = delete;
  TestLibraries& operator=(const TestLibraries&) = delete;

  /// Runs libread2gap over all libraries. Returns the messages, the elapsed seconds replaced by
  /// "N".
  std::string stream();

  /// Runs libread2gap, the messages going where they belong.
  void streamAloud();

 private:
  Lib* libs_;
  int count_;
  std::vector<std::unique_ptr<SingleQual[]>> singlequal_;  // no record releases these
};

}  // namespace velk::test
