// A fixture that loads library files from text.
#pragma once

#include <string>

#include "libinfo/libinfo.h"
#include "tests/support/files.h"
#include "tests/support/runParameters.h"

namespace velk::test {

/// The fixture of all tests of velk::Loadlib.
class Loadlib : public RunParametersTest {
 protected:
  ~Loadlib() override { Libsclear(libs_, libsNum_); }

  /// Loads a library file of this text; what was loaded before is released. Returns what Loadlib
  /// wrote to standard error.
  std::string load(const std::string& text) {
    Libsclear(libs_, libsNum_);
    libs_ = nullptr;
    file_ = folder_.write("a.lib", text);
    ::testing::internal::CaptureStderr();
    velk::Loadlib(file_, libs_, libsNum_);
    return ::testing::internal::GetCapturedStderr();
  }

  TemporaryFolder folder_;
  std::string file_;     // the library file loaded last
  Lib* libs_ = nullptr;  // its records
  int libsNum_ = -1;
};

}  // namespace velk::test
