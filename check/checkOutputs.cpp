// Checks of the files that velk would write. Nothing is opened for writing.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "check/readFile.h"
#include "check/survey.h"
#include "driver/runFiles.h"
#include "driver/velk.h"

namespace velk::check {
namespace {

namespace fs = std::filesystem;

// Both names lead to one file, be it there or not.
bool meetsSameFile(const std::string& one, const std::string& other) {
  if (isSameFile(one, other)) return true;
  std::error_code error;
  const fs::path a = fs::weakly_canonical(fs::absolute(one, error), error);
  const fs::path b = fs::weakly_canonical(fs::absolute(other, error), error);
  return !error && a == b;
}

// Why `file` cannot be written; empty when it can.
std::string reasonAgainst(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) == 0) {
    if (S_ISDIR(status.st_mode)) return std::strerror(EISDIR);
    return access(file.c_str(), W_OK) == 0 ? "" : std::strerror(errno);
  }
  const fs::path folder = fs::path(file).parent_path();
  const std::string name = folder.empty() ? "." : folder.string();
  return access(name.c_str(), W_OK | X_OK) == 0 ? "" : std::strerror(errno);
}

// Reports the first input, or earlier output, that `output` would overwrite. -c is not read beside
// -s, so a side file may replace it.
bool meetsAnother(Survey& survey, const RunFile& output, const std::vector<RunFile>& others) {
  for (const RunFile& other : others) {
    const bool isUnread = other.name == contig_file && !scaffold_file.empty() &&
                          other.name != scaffold_file && output.name != out_file;
    if (isUnread || !meetsSameFile(output.name, other.name)) continue;
    survey.findings.add("output-is-input", {output.name}, output.role + " is also " + other.role);
    return true;
  }
  return false;
}

}  // namespace

void checkOutputs(Survey& survey) {
  std::vector<RunFile> others = inputsOfRun(survey.libs, survey.libSum);
  for (const RunFile& output : outputsOfRun()) {
    if (meetsAnother(survey, output, others)) continue;
    others.push_back(output);
    const std::string reason = reasonAgainst(output.name);
    struct stat status {};
    if (!reason.empty()) {
      survey.findings.add("output-unwritable", {output.name}, output.role + ": " + reason);
    } else if (stat(output.name.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      survey.findings.add("output-exists", {output.name}, output.role);
    }
  }
}

}  // namespace velk::check
