// Checks of the option values, before any file is looked at, and of the files that velk would
// write. None is opened for writing.
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>

#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <limits>
#include <system_error>

#include "check/readFile.h"
#include "check/survey.h"
#include "driver/options.h"
#include "driver/runFiles.h"
#include "driver/velk.h"
#include "kmer/hashSet.h"

namespace velk::check {
namespace {

constexpr int kShortKmer = 15;  // below it, k-mers of a genome meet by chance

const Place kCommandLine{};

// Whether `text` is a number from its first to its last character.
bool isNumber(const std::string& text, bool mayBeReal) {
  if (text.empty()) return false;
  char* end = nullptr;
  if (mayBeReal) {
    std::strtod(text.c_str(), &end);
  } else {
    std::strtoll(text.c_str(), &end, 10);
  }
  return *end == '\0';
}

void checkNumbers(Survey& survey) {
  const std::vector<std::string>& arguments = survey.arguments.velk;
  for (std::size_t i = 0; i + 1 < arguments.size(); i += 2) {
    if (!arguments[i].starts_with('-')) break;
    const OptionKind kind = kindOfOption(arguments[i][1]);
    const bool mayBeAnything = kind == OptionKind::kText || kind == OptionKind::kNone;
    if (mayBeAnything || isNumber(arguments[i + 1], kind == OptionKind::kReal)) continue;
    survey.findings.add("value-not-number", kCommandLine, arguments[i] + " " + arguments[i + 1]);
  }
}

void checkRange(Survey& survey) {
  Findings& findings = survey.findings;
  for (const std::string& wrong : impossibleValues()) {
    findings.add("value-refused", kCommandLine, wrong);
  }
  if (numbersOfNew(initSize, LoadFactor).size > kMaxSlots) {
    findings.add("table-refused", kCommandLine, "-m " + std::to_string(initSize));
  }
  if (Kmer > DATA_LEN) findings.add("kmer-over-32", kCommandLine, "-k " + std::to_string(Kmer));
  if (Kmer >= 0 && Kmer < kShortKmer) {
    findings.add("kmer-short", kCommandLine, "-k " + std::to_string(Kmer));
  }
  const int processors = get_nprocs();
  if (thread_num > processors) {
    findings.add(
        "threads-many", kCommandLine,
        "-t " + std::to_string(thread_num) + " on a machine with " + std::to_string(processors));
  }
  if (clampedLoadFactor(LoadFactor) != LoadFactor) {
    findings.add("load-factor-replaced", kCommandLine,
                 "velk takes " + std::to_string(clampedLoadFactor(LoadFactor)).substr(0, 4));
  }
  const auto isShare = [](double value) { return value >= 0 && value <= 1; };
  if (!isShare(OverRatio) || !isShare(mapCut)) {
    findings.add("ratio-odd", kCommandLine,
                 std::string(isShare(mapCut) ? "-O " : "-M ") +
                     std::to_string(isShare(mapCut) ? OverRatio : mapCut));
  }
  if (CONTIGLEN < 0) {
    findings.add("cutoff-negative", kCommandLine, "-L " + std::to_string(CONTIGLEN));
  } else if (CONTIGLEN < Kmer) {
    findings.add("cutoff-below-kmer", kCommandLine,
                 "-L " + std::to_string(CONTIGLEN) + ", -k " + std::to_string(Kmer));
  }
  if (CuttEdge > readLen && readLen >= 0) {
    findings.add("edge-cut-large", kCommandLine,
                 "-C " + std::to_string(CuttEdge) + ", -r " + std::to_string(readLen));
  }
}

void checkGiven(Survey& survey) {
  const auto need = [&](bool isGiven, const char* text) {
    if (!isGiven) survey.findings.add("option-missing", kCommandLine, text);
  };
  need(!lib_file.empty(), "-l, the library file, is missing");
  need(!out_file.empty(), "-o, the file for the reads found, is missing");
  need(!scaffold_file.empty() || !contig_file.empty(), "-s or -c, the assembly, is missing");
  if (!scaffold_file.empty() && !contig_file.empty()) {
    survey.findings.add("contigs-ignored", kCommandLine, "-c " + contig_file);
  }
}

}  // namespace

void checkArguments(Survey& survey) {
  std::vector<std::string> words = survey.arguments.velk;
  words.insert(words.begin(), "velk");
  std::vector<char*> pointers;
  pointers.reserve(words.size());
  for (std::string& word : words) pointers.push_back(word.data());
  const int count = static_cast<int>(pointers.size());
  const int stray = mGetOptions(count, pointers.data());
  if (stray != count) {
    survey.findings.add("stray-argument", kCommandLine,
                        "\"" + words[static_cast<std::size_t>(stray)] + "\"");
  }
  checkNumbers(survey);
  checkGiven(survey);
  checkRange(survey);
}

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
