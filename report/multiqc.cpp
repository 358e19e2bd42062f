#include "report/multiqc.h"

#include <array>
#include <nlohmann/json.hpp>

#include "report/html.h"
#include "report/tally.h"

namespace velk::report {
namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t kLongestName = 200;

Json column(const char* title, const char* description, const char* format) {
  return {{"title", title}, {"description", description}, {"format", format}};
}

Json percentColumn(const char* title, const char* description) {
  Json json = column(title, description, "{:,.1f}");
  json["min"] = 0;
  json["max"] = 100;
  json["suffix"] = "%";
  return json;
}

double percentOf(uint64_t part, uint64_t whole) {
  return whole == 0 ? 0 : 100 * static_cast<double>(part) / static_cast<double>(whole);
}

std::string textOf(const Json& json) {
  return json.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace

std::string multiqcTable(const Findings& findings) {
  const RunData& data = findings.data;
  const Tally tally = tallyOf(findings);
  const Json row{{"gaps", data.gaps.size()},
                 {"gaps_with_reads", tally.withReads},
                 {"gaps_with_reads_percent", percentOf(tally.withReads, data.gaps.size())},
                 {"gaps_covered", tally.covered},
                 {"reads_searched", data.readsSearched},
                 {"reads_found", data.readsFound},
                 {"reads_found_percent", percentOf(data.readsFound, data.readsSearched)},
                 {"exact_percent", percentOf(tally.exact, tally.exact + tally.estimates)},
                 {"median_reads", tally.medianReads}};
  constexpr const char* kWhole = "{:,.0f}";
  const Json headers{
      {"gaps", column("Gaps", "Gaps of the assembly", kWhole)},
      {"gaps_with_reads", column("With reads", "Gaps in which reads belong", kWhole)},
      {"gaps_with_reads_percent", percentColumn("With reads, %", "Share of the gaps")},
      {"gaps_covered", column("Covered", "Gaps covered whole by exact reads", kWhole)},
      {"reads_searched", column("Reads", "Reads searched", kWhole)},
      {"reads_found", column("Found", "Reads found at gaps", kWhole)},
      {"reads_found_percent", percentColumn("Found, %", "Share of the reads searched")},
      {"exact_percent", percentColumn("Exact, %", "Share of exact places in gaps")},
      {"median_reads", column("Reads a gap", "The median", kWhole)}};
  return textOf({{"id", "velk"},
                 {"section_name", "velk"},
                 {"description", "finds the reads that belong in the gaps of an assembly."},
                 {"plot_type", "table"},
                 {"pconfig", {{"id", "velk_table"}, {"title", "velk: gaps and their reads"}}},
                 {"headers", headers},
                 {"data", {{cleaned(data.sample, kLongestName), row}}}});
}

std::string multiqcGaps(const Findings& findings) {
  const Tally tally = tallyOf(findings);
  Json row{{nameOf(Reason::kEnough), tally.reasons[0].none + tally.reasons[0].few}};
  for (std::size_t reason = 1; reason < kReasons; ++reason) {
    row[nameOf(static_cast<Reason>(reason))] =
        tally.reasons[reason].none + tally.reasons[reason].few;
  }
  return textOf(
      {{"id", "velk_gaps"},
       {"section_name", "velk: why gaps have few reads"},
       {"description",
        "gaps with the reads that depth and reach predict, and all others by the reason "
        "why they have few or none."},
       {"plot_type", "bargraph"},
       {"pconfig", {{"id", "velk_gaps_plot"}, {"title", "velk: gaps by reason"}, {"ylab", "gaps"}}},
       {"data", {{cleaned(findings.data.sample, kLongestName), row}}}});
}

}  // namespace velk::report
