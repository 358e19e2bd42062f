// The names of all files that a run may write to its folder, and what an earlier run has written
// there.
#pragma once

#include <set>
#include <span>
#include <string>

namespace velk::run {

constexpr const char* kSummaryName = "summary.json";
constexpr const char* kPartialName = ".partial";
constexpr const char* kNativeName = "native";

/// All names but that of the summary, in the order in which results are listed.
std::span<const char* const> resultNames();

/// The names that a summary lists as its run's files, as far as they are such names. None when
/// there is no such file, or when it is not velk-run's.
std::set<std::string> namesOfSummary(const std::string& file);

/// Whether velk-run has written this file as a summary.
bool isSummary(const std::string& file);

}  // namespace velk::run
