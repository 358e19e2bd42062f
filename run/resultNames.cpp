#include "run/resultNames.h"

#include <algorithm>
#include <array>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>

namespace velk::run {
namespace {

constexpr std::array kResultNames{"reads.bam",
                                  "reads.bam.bai",
                                  "reads.bam.csi",
                                  "pairs.fq.gz",
                                  "pairs.fq.gz.gzi",
                                  "singles.fq.gz",
                                  "singles.fq.gz.gzi",
                                  "flanks.fa.gz",
                                  "flanks.fa.gz.gzi",
                                  "gaps.tsv",
                                  "gaps.bed",
                                  "gaps.idx",
                                  "evidence.tsv",
                                  "inserts.tsv",
                                  "report.html",
                                  "velk_mqc.json",
                                  "velk_gaps_mqc.json",
                                  "native/found.fa",
                                  "native/scaffolds.fa.gapsinfo",
                                  "native/scaffolds.fa.contig",
                                  "native/scaffolds.fa.contigPos"};

constexpr std::array kShareNames{kShareRecordsName, kShareReadsName,  kShareNamesName,
                                 kShareNativeName,  kShareCountsName, kShareEvidenceName};

// The summary, or null.
nlohmann::json summaryIn(const std::string& file) {
  std::ifstream input(file);
  if (!input) return nullptr;
  const nlohmann::json summary = nlohmann::json::parse(input, nullptr, false);
  const bool isOurs = summary.is_object() && summary.contains("program") &&
                      summary["program"].is_object() &&
                      summary["program"].value("name", nlohmann::json()) == "velk-run";
  return isOurs ? summary : nlohmann::json();
}

}  // namespace

const FolderForm& resultForm() {
  static const FolderForm form{kResultNames, kSummaryName};
  return form;
}

const FolderForm& shareForm() {
  static const FolderForm form{kShareNames, kShareSummaryName};
  return form;
}

std::map<std::string, std::string> sumsOfSummary(const std::string& file,
                                                 std::span<const char* const> names) {
  const nlohmann::json summary = summaryIn(file);
  std::map<std::string, std::string> sums;
  if (!summary.contains("files") || !summary["files"].is_array()) return sums;
  for (const nlohmann::json& entry : summary["files"]) {
    if (!entry.is_object() || !entry.contains("name") || !entry["name"].is_string()) continue;
    const auto name = entry["name"].get<std::string>();
    const bool isName =
        std::any_of(names.begin(), names.end(), [&](const char* known) { return name == known; });
    if (!isName) continue;
    const nlohmann::json sum = entry.value("md5", nlohmann::json());
    sums[name] = sum.is_string() ? sum.get<std::string>() : "";
  }
  return sums;
}

std::set<std::string> namesOfSummary(const std::string& file, std::span<const char* const> names) {
  std::set<std::string> listed;
  for (const auto& [name, sum] : sumsOfSummary(file, names)) listed.insert(name);
  return listed;
}

bool isSummary(const std::string& file) {
  return !summaryIn(file).is_null();
}

}  // namespace velk::run
