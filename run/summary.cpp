#include "run/summary.h"

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>

#include "run/library.h"
#include "run/resultNames.h"
#include "run/terminal.h"

namespace velk::run {
namespace {

using Json = nlohmann::ordered_json;

Json jsonOf(const InputFile& file) {
  Json json{{"name", file.name}};
  if (file.bytes) json["bytes"] = *file.bytes;
  return json;
}

Json jsonOf(const InputFacts& input) {
  Json files = Json::array();
  for (const InputFile& file : input.files) files.push_back(jsonOf(file));
  return {{"library", input.library},
          {"files", files},
          {input.arePairs ? "pairs" : "reads", input.records},
          {"fixed",
           {{"carriage_returns", input.fixes.carriageReturns},
            {"lower_case", input.fixes.lowerCase},
            {"wrapped", input.fixes.wrapped}}}};
}

// The reads of a kind at all gaps.
uint64_t sumOf(uint64_t library, ReadKind kind, const Assembly& assembly, const GapCounts& counts) {
  uint64_t total = 0;
  for (uint64_t gap = 0; gap < assembly.gaps().size(); ++gap) {
    total += counts.count(gap, library, kind);
  }
  return total;
}

Json countsOf(uint64_t library, const Assembly& assembly, const GapCounts& counts) {
  const auto sum = [&](ReadKind kind) { return sumOf(library, kind, assembly, counts); };
  return {{"exact", sum(ReadKind::kExact)},
          {"estimate", sum(ReadKind::kEstimate)},
          {"contained", sum(ReadKind::kContained)},
          {"anchor", sum(ReadKind::kAnchor)}};
}

Json jsonOf(const LibraryFacts& facts) {
  const Library& library = facts.library;
  Json json = jsonOf(library);
  json["reads_searched"] = facts.reads;
  json["reads_found"] = facts.found;
  json["bases_searched"] = facts.counts.bases;
  json[library.arePairs() ? "pairs_on_contigs" : "reads_on_contigs"] = facts.counts.placed;
  json["not_searched"] = {{"with_n", facts.counts.withN}, {"too_short", facts.counts.tooShort}};
  if (library.arePairs()) json["reads_longer_than_read_length"] = facts.counts.longer;
  return json;
}

Json jsonOf(const Assembly& assembly, const InputFile& file) {
  uint64_t bases = 0;
  uint64_t contigs = 0;
  for (const Scaffold& scaffold : assembly.scaffolds()) {
    bases += scaffold.length;
    contigs += scaffold.contigs.size();
  }
  const auto& gaps = assembly.gaps();
  const AssemblyNotes& notes = assembly.notes();
  Json json = jsonOf(file);
  json["scaffolds"] = assembly.scaffolds().size();
  json["bases"] = bases;
  json["contigs"] = contigs;
  json["gaps"] = gaps.size();
  json["placeholder_gaps"] =
      std::count_if(gaps.begin(), gaps.end(), [](const Gap& gap) { return gap.isPlaceholder; });
  json["fixed"] = {{"carriage_returns", notes.carriageReturns},
                   {"lower_case", notes.lowerCase},
                   {"other_letters", notes.otherLetters},
                   {"empty_scaffolds", notes.empty}};
  return json;
}

Json resultsOf(const Summary& summary, const Assembly& assembly, const GapCounts& counts) {
  uint64_t searched = 0;
  uint64_t found = 0;
  for (const LibraryFacts& library : summary.libraries) {
    searched += library.reads;
    found += library.found;
  }
  uint64_t withReads = 0;
  for (uint64_t gap = 0; gap < assembly.gaps().size(); ++gap) {
    withReads += counts.belonging(gap) > 0 ? 1U : 0U;
  }
  return {{"reads_searched", searched},
          {"reads_found", found},
          {"gaps_with_reads", withReads},
          {"gaps_without_reads", assembly.gaps().size() - withReads},
          {"alignment_records", summary.alignmentRecords},
          {"names_in_several_libraries", summary.nameClashes}};
}

}  // namespace

std::string summaryText(const Summary& summary, const Assembly& assembly, const GapCounts& counts) {
  Json json{{"schema", kSummarySchema},
            {"program", {{"name", "velk-run"}, {"version", summary.version}}},
            {"sample", summary.sample}};
  json["options"] = Json::object();
  for (const auto& [name, value] : summary.options) {
    std::visit([&, &key = name](const auto& held) { json["options"][key] = held; }, value);
  }
  json["assembly"] = jsonOf(assembly, summary.assemblyFile);
  json["inputs"] = Json::array();
  for (const InputFacts& input : summary.inputs) json["inputs"].push_back(jsonOf(input));
  json["libraries"] = Json::array();
  for (std::size_t n = 0; n < summary.libraries.size(); ++n) {
    Json library = jsonOf(summary.libraries[n]);
    library["reads_at_gaps"] = countsOf(n, assembly, counts);
    json["libraries"].push_back(library);
  }
  json["results"] = resultsOf(summary, assembly, counts);
  json["warnings"] = summary.warnings;
  json["seconds"] = Json::object();
  for (const PhaseTime& time : summary.times) json["seconds"][time.name] = time.seconds;
  json["machines"] = summary.machines;
  json["peak_memory_bytes"] = summary.peakMemory;
  json["spilled_bytes"] = summary.spilledBytes;
  if (!summary.report.empty()) json["report"] = Json::parse(summary.report);
  json["files"] = Json::array();
  for (const ResultFile& file : summary.files) {
    json["files"].push_back({{"name", file.name}, {"bytes", file.bytes}, {"md5", file.md5}});
  }
  // A file name need not be UTF-8; what is not is replaced.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

namespace {

// What the files needed before they could be used, each kind with its number.
std::string fixedText(const Summary& summary, const AssemblyNotes& notes) {
  reads::Fixes ofReads;
  for (const InputFacts& input : summary.inputs) ofReads += input.fixes;
  std::string text;
  const auto add = [&](uint64_t count, const char* what) {
    if (count != 0) text += (text.empty() ? " " : ", ") + countText(count) + " " + what;
  };
  add(notes.lowerCase, "bases of the assembly in lower case");
  add(notes.carriageReturns, "of its lines with a carriage return");
  add(notes.empty, "of its scaffolds without a base");
  add(ofReads.lowerCase, "reads in lower case");
  add(ofReads.carriageReturns, "reads with carriage returns");
  add(ofReads.wrapped, "reads on several lines");
  add(notes.otherLetters, "bases of the assembly that are none of A, C, G, T and N (kept)");
  return text;
}

// How sure the places at the gaps are, of all libraries.
std::string placesText(const Assembly& assembly, const GapCounts& counts, std::size_t libraries) {
  const auto sum = [&](ReadKind kind) {
    uint64_t total = 0;
    for (std::size_t n = 0; n < libraries; ++n) total += sumOf(n, kind, assembly, counts);
    return countText(total);
  };
  return "  at gaps: " + sum(ReadKind::kExact) + " exact, " + sum(ReadKind::kEstimate) +
         " estimate, " + sum(ReadKind::kContained) + " contained (belong in a contig near by)";
}

std::string lineOf(const LibraryFacts& facts) {
  std::string line = "  " + facts.library.name + ": found " + countText(facts.found) + " of " +
                     countText(facts.reads);
  if (facts.library.arePairs()) {
    line += ", insert size " + std::to_string(std::lround(facts.library.insert)) + " +- " +
            std::to_string(std::lround(facts.library.spread)) + ", " +
            nameOf(facts.library.orientation);
  }
  return line;
}

}  // namespace

std::vector<std::string> closingLines(const Summary& summary, const Assembly& assembly,
                                      const GapCounts& counts, const std::string& folder,
                                      double seconds) {
  uint64_t reads = 0;
  uint64_t found = 0;
  uint64_t withReads = 0;
  const uint64_t gaps = assembly.gaps().size();
  for (const LibraryFacts& library : summary.libraries) {
    reads += library.reads;
    found += library.found;
  }
  for (uint64_t gap = 0; gap < gaps; ++gap) {
    if (counts.belonging(gap) > 0) ++withReads;
  }
  std::vector<std::string> lines;
  lines.push_back("Found " + countText(found) + " of " + countText(reads) + " reads; " +
                  countText(withReads) + " of " + countText(gaps) + " gaps have reads.");
  lines.push_back(placesText(assembly, counts, summary.libraries.size()));
  for (const LibraryFacts& library : summary.libraries) lines.push_back(lineOf(library));
  if (const std::string fixed = fixedText(summary, assembly.notes()); !fixed.empty()) {
    lines.push_back("Fixed:" + fixed);
  }
  std::string names;
  for (const ResultFile& file : summary.files) names += " " + file.name;
  lines.push_back("Files in " + folder + ":" + names + " " + kSummaryName);
  lines.push_back("Time " + durationText(seconds) + ", peak memory " +
                  countText(summary.peakMemory >> 20) + " MiB");
  return lines;
}

}  // namespace velk::run
