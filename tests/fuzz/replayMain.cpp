// Runs a fuzz target over the files that its arguments name, or that lie in the folders that they
// name. Stands in for libFuzzer where the corpus is replayed as a test.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz.h"

namespace {

std::vector<std::string> filesOf(const std::string& path) {
  if (!std::filesystem::is_directory(path)) return {path};
  std::vector<std::string> files;
  for (const auto& entry : std::filesystem::directory_iterator(path)) {
    files.push_back(entry.path().string());
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

int main(int argc, char** argv) {
  int replayed = 0;
  for (int i = 1; i < argc; ++i) {
    for (const std::string& file : filesOf(argv[i])) {
      std::printf("%s\n", file.c_str());
      std::fflush(stdout);  // the last line names the input of a finding
      const std::string content = velk::fuzz::contentOf(file);
      LLVMFuzzerTestOneInput(reinterpret_cast<const uint8_t*>(content.data()), content.size());
      ++replayed;
    }
  }
  std::printf("%d inputs replayed\n", replayed);
  return replayed > 0 ? 0 : 1;
}
