// Checks of the files that velk would write. Nothing is opened for writing.
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "check/readFile.h"
#include "check/survey.h"
#include "driver/velk.h"

namespace velk::check {
namespace {

namespace fs = std::filesystem;

struct Named {
  std::string file;
  std::string role;
};

// Both names lead to one file, be it there or not.
bool meetsSameFile(const std::string& one, const std::string& other) {
  if (isSameFile(one, other)) return true;
  std::error_code error;
  const fs::path a = fs::weakly_canonical(fs::absolute(one, error), error);
  const fs::path b = fs::weakly_canonical(fs::absolute(other, error), error);
  return !error && a == b;
}

std::vector<Named> outputsOfRun() {
  std::vector<Named> outputs;
  if (!out_file.empty()) outputs.push_back({out_file, "the file of reads found"});
  if (!scaffold_file.empty()) {
    outputs.push_back({scaffold_file + ".contigPos", "the contig positions"});
    outputs.push_back({scaffold_file + ".contig", "the contigs"});
  }
  if (!scaffold_file.empty() || !contig_file.empty()) {
    outputs.push_back({scaffold_file + ".gapsinfo", "the gap report"});
  }
  return outputs;
}

std::vector<Named> inputsOf(const Survey& survey) {
  std::vector<Named> inputs;
  if (!lib_file.empty()) inputs.push_back({lib_file, "the library file"});
  if (!scaffold_file.empty()) inputs.push_back({scaffold_file, "the scaffold file"});
  if (!contig_file.empty()) inputs.push_back({contig_file, "the contig file"});
  for (const ReadInput& input : survey.inputs) {
    inputs.push_back({input.fileA, "a read file"});
    if (!input.fileB.empty()) inputs.push_back({input.fileB, "a read file"});
  }
  return inputs;
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
bool meetsAnother(Survey& survey, const Named& output, const std::vector<Named>& others) {
  for (const Named& other : others) {
    const bool isUnread = other.file == contig_file && !scaffold_file.empty() &&
                          other.file != scaffold_file && output.file != out_file;
    if (isUnread || !meetsSameFile(output.file, other.file)) continue;
    survey.findings.add("output-is-input", {output.file}, output.role + " is also " + other.role);
    return true;
  }
  return false;
}

}  // namespace

void checkOutputs(Survey& survey) {
  std::vector<Named> others = inputsOf(survey);
  for (const Named& output : outputsOfRun()) {
    if (meetsAnother(survey, output, others)) continue;
    others.push_back(output);
    const std::string reason = reasonAgainst(output.file);
    struct stat status {};
    if (!reason.empty()) {
      survey.findings.add("output-unwritable", {output.file}, output.role + ": " + reason);
    } else if (stat(output.file.c_str(), &status) == 0 && S_ISREG(status.st_mode)) {
      survey.findings.add("output-exists", {output.file}, output.role);
    }
  }
}

}  // namespace velk::check
