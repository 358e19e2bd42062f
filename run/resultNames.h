// The names of all files that a run may write to its folder, and what an earlier run has written
// there.
#pragma once

#include <map>
#include <set>
#include <span>
#include <string>

namespace velk::run {

constexpr const char* kSummaryName = "summary.json";
constexpr const char* kShareSummaryName = "share.json";

// The files of a share (doc/run.md).
constexpr const char* kShareRecordsName = "records.bin";
constexpr const char* kShareReadsName = "reads.bin";
constexpr const char* kShareNamesName = "names.bin";
constexpr const char* kShareNativeName = "native.bin";
constexpr const char* kShareCountsName = "counts.bin";
constexpr const char* kShareEvidenceName = "evidence.tsv";

constexpr const char* kPartialName = ".partial";
constexpr const char* kNativeName = "native";

/// The files of a kind of folder.
struct FolderForm {
  std::span<const char* const> names;  // but that of the summary, in the order of its list
  const char* summary;                 // the file that is there in whole folders only
};

/// The folder of a run's results, and that of a task's share.
const FolderForm& resultForm();
const FolderForm& shareForm();

/// The names that a summary lists as its run's files, as far as they are some of `names`. None when
/// there is no such file, or when it is not velk-run's.
std::set<std::string> namesOfSummary(const std::string& file, std::span<const char* const> names);

/// The MD5 sum of each of these files, as the summary has it.
std::map<std::string, std::string> sumsOfSummary(const std::string& file,
                                                 std::span<const char* const> names);

/// Whether velk-run has written this file as a summary.
bool isSummary(const std::string& file);

}  // namespace velk::run
