#include "report/multiqc.h"

#include <array>
#include <nlohmann/json.hpp>

#include "report/figures.h"
#include "report/html.h"

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

// What a section of the chapter "velk" begins with.
Json sectionOf(const char* id, const char* name, const char* description) {
  return {{"id", id},
          {"parent_id", "velk_report"},
          {"parent_name", "velk"},
          {"parent_description", "finds the reads that belong in the gaps of an assembly."},
          {"section_name", name},
          {"description", description}};
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
      {"median_reads", column("Reads per gap", "The median", kWhole)}};
  Json json = sectionOf("velk", "Gaps and their reads",
                        "Exact places are those that agree with a contig; covered gaps are so by "
                        "exact reads from end to end.");
  json["plot_type"] = "table";
  json["pconfig"] = {{"id", "velk_table"}, {"title", "velk: gaps and their reads"}};
  json["headers"] = headers;
  json["data"] = {{cleaned(data.sample, kLongestName), row}};
  return textOf(json);
}

std::string multiqcGaps(const Findings& findings) {
  const Tally tally = tallyOf(findings);
  Json row{{nameOf(Reason::kEnough), tally.reasons[0].none + tally.reasons[0].few}};
  for (std::size_t reason = 1; reason < kReasons; ++reason) {
    row[nameOf(static_cast<Reason>(reason))] =
        tally.reasons[reason].none + tally.reasons[reason].few;
  }
  Json json = sectionOf("velk_gaps", "Why gaps have few reads",
                        "Gaps with the reads that depth and reach predict, and all others by the "
                        "reason why they have few or none.");
  json["plot_type"] = "bargraph";
  json["pconfig"] = {{"id", "velk_gaps_plot"},
                     {"title", "velk: gaps by reason"},
                     {"ylab", "gaps"},
                     {"cpswitch_c_active", false}};  // shares, as samples differ in their gaps
  json["data"] = {{cleaned(findings.data.sample, kLongestName), row}};
  return textOf(json);
}

}  // namespace velk::report
