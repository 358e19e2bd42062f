#include "run/wholeFile.h"

#include <cstdio>
#include <filesystem>

#include "run/diskFile.h"
#include "run/signalCleanup.h"

namespace velk::run {

void writeWhole(const std::string& file, std::string_view text) {
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  const bool isThere = std::filesystem::exists(status);
  if (isThere && !std::filesystem::is_regular_file(status)) {
    writeFile(file, text);
    return;
  }
  // Of a link the file that it leads to is replaced.
  const std::string target = isThere ? std::filesystem::canonical(file).string() : file;
  const std::string partial = target + ".partial";
  const SignalCleanup cleanup({partial}, {});
  try {
    writeFile(partial, text);
    syncFile(partial);
    if (std::rename(partial.c_str(), target.c_str()) != 0) failFile(file, "made");
  } catch (...) {
    std::remove(partial.c_str());
    throw;
  }
}

}  // namespace velk::run
