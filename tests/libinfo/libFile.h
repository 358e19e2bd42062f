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
  ~Loadlib() override { Libsclear(libs, libsNum); }

  /// Loads a library file of this text; what was loaded before is released. Returns what Loadlib
  /// wrote to standard error.
  std::string load(const std::string& text) {
    Libsclear(libs, libsNum);
    libs = nullptr;
    file = folder.write("a.lib", text);
    ::testing::internal::CaptureStderr();
    velk::Loadlib(file, libs, libsNum);
    return ::testing::internal::GetCapturedStderr();
  }

  TemporaryFolder folder;
  std::string file;     // the library file loaded last
  Lib* libs = nullptr;  // its records
  int libsNum = -1;
};

}  // namespace velk::test
