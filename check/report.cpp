#include "check/report.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <vector>

namespace velk::check {
namespace {

constexpr std::size_t kMostPlaces = 10;  // of a kind that are shown
constexpr std::array<Level, 3> kLevels = {Level::kError, Level::kWarning, Level::kNote};

const char* colourOf(Level level) {
  switch (level) {
    case Level::kError:
      return "\033[1;31m";
    case Level::kWarning:
      return "\033[1;33m";
    default:
      return "\033[1;36m";
  }
}

std::string placeText(const Place& place) {
  std::string text = place.file.empty() ? "command line" : place.file;
  if (place.line != 0) text += ", line " + std::to_string(place.line);
  if (place.record != 0) text += ", record " + std::to_string(place.record);
  return text;
}

// The findings of one kind, in the order in which they were met.
using OfKind = std::vector<const Finding*>;

// The kinds of a level that were met, in that order, too.
std::vector<OfKind> kindsMet(const Findings& findings, Level level) {
  std::vector<OfKind> met;
  for (const Finding& finding : findings.all()) {
    if (finding.kind->level != level) continue;
    const auto known = std::find_if(met.begin(), met.end(), [&](const OfKind& ofKind) {
      return ofKind.front()->kind == finding.kind;
    });
    if (known == met.end()) {
      met.push_back({&finding});
    } else {
      known->push_back(&finding);
    }
  }
  return met;
}

void printKind(std::ostream& output, const OfKind& findings, bool inColour) {
  const Kind& kind = *findings.front()->kind;
  output << (inColour ? colourOf(kind.level) : "") << nameOf(kind.level)
         << (inColour ? "\033[0m" : "") << " [" << kind.id << "] " << kind.meaning << "\n";
  const std::size_t shown = std::min(findings.size(), kMostPlaces);
  for (std::size_t n = 0; n < shown; ++n) {
    output << "    " << placeText(findings[n]->place) << ": " << findings[n]->text << "\n";
  }
  if (findings.size() > shown) {
    output << "    and " << findings.size() - shown << " more (--json lists all)\n";
  }
  output << "    velk: " << kind.effect << "\n    fix: " << kind.fix << "\n";
  if (!kind.run.empty()) output << "    velk-run: " << kind.run << "\n";
}

std::string megabytes(uint64_t bytes) {
  const double millions = static_cast<double>(bytes) / 1e6;
  std::array<char, 32> text{};
  if (millions >= 10000) {
    std::snprintf(text.data(), text.size(), "%.1f GB", millions / 1000);
  } else {
    std::snprintf(text.data(), text.size(), "%.0f MB", millions);
  }
  return text.data();
}

std::string duration(double seconds) {
  std::array<char, 32> text{};
  if (seconds < 100) {
    std::snprintf(text.data(), text.size(), "%.1f s", seconds);
  } else if (seconds < 6000) {
    std::snprintf(text.data(), text.size(), "%.0f min", seconds / 60);
  } else {
    std::snprintf(text.data(), text.size(), "%.1f h", seconds / 3600);
  }
  return text.data();
}

void printLibraries(std::ostream& output, const Survey& survey) {
  bool hasTitle = false;
  for (std::size_t i = 0; i < survey.measures.size(); ++i) {
    const PairMeasure& measure = survey.measures[i];
    if (measure.pairs() == 0) continue;
    if (!hasTitle) output << "Measured from pairs on one contig\n";
    hasTitle = true;
    const auto percent = [&](uint64_t count) {
      return std::to_string(std::lround(100.0 * static_cast<double>(count) /
                                        static_cast<double>(measure.pairs()))) +
             " %";
    };
    output << "    library " << i + 1 << ": insert size " << std::lround(measure.insert) << " +- "
           << std::lround(measure.spread) << " (avg_ins " << survey.libs[i].avg_ins << "), "
           << measure.pairs() << " pairs: " << percent(measure.inward) << " inwards, "
           << percent(measure.outward) << " outwards, " << percent(measure.sameStrand)
           << " in one direction\n";
  }
  if (hasTitle) output << "\n";
}

void printAdvice(std::ostream& output, const Survey& survey, const Advice& advice) {
  if (!advice.isKnown) return;
  const survey::MemoryEstimate& memory = advice.memory;
  if (advice.command.empty()) {
    output << "What a run takes, the errors fixed\n";
  } else {
    output << "Command line to run\n    " << advice.command << "\n\n";
  }
  output << "    k-mers: " << survey.distinctKmers << " different ones"
         << (survey.isExact ? "" : " (estimated, rounded up)") << "\n"
         << "    memory: " << megabytes(memory.peak) << " at the peak (index "
         << megabytes(memory.index) << ", assembly " << megabytes(memory.assembly) << ", reads "
         << megabytes(memory.batch) << ")\n";
  output << "    time, by a short sample: " << duration(advice.indexSeconds) << " for the index, "
         << duration(advice.readSeconds) << " for the reads\n    disk: about "
         << megabytes(advice.diskBytes) << "\n\n";
}

std::string plural(uint64_t count, std::string_view word) {
  return std::to_string(count) + " " + std::string(word) + (count == 1 ? "" : "s");
}

}  // namespace

std::string_view nameOf(Level level) {
  switch (level) {
    case Level::kError:
      return "error";
    case Level::kWarning:
      return "warning";
    default:
      return "note";
  }
}

int statusOf(const Findings& findings) {
  switch (findings.highest()) {
    case Level::kError:
      return 2;
    case Level::kWarning:
      return 1;
    default:
      return 0;
  }
}

void printText(std::ostream& output, const Survey& survey, const Advice& advice, bool inColour) {
  std::vector<std::string> counts;
  for (const Level level : kLevels) {
    const std::vector<OfKind> met = kindsMet(survey.findings, level);
    for (const OfKind& findings : met) printKind(output, findings, inColour);
    counts.push_back(plural(met.size(), nameOf(level)));
  }
  if (!survey.findings.all().empty()) output << "\n";
  printLibraries(output, survey);
  printAdvice(output, survey, advice);
  output << counts[0] << ", " << counts[1] << ", " << counts[2] << "\n";
}

void printKinds(std::ostream& output) {
  constexpr std::array<const char*, 4> kTitles = {"Command line, outputs and machine",
                                                  "Library file", "Read files", "Assembly"};
  constexpr std::array<std::size_t, 4> kSizes = {kKindsCommand.size(), kKindsLibrary.size(),
                                                 kKindsReads.size(), kKindsAssembly.size()};
  std::size_t next = 0;
  for (std::size_t table = 0; table < kTitles.size(); ++table) {
    output << (table == 0 ? "" : "\n") << "## " << kTitles[table] << "\n\n"
           << "| Finding | Level | Meaning | What velk does | What to do | velk-run |\n"
           << "|---|---|---|---|---|---|\n";
    for (std::size_t i = 0; i < kSizes[table]; ++i, ++next) {
      const Kind& kind = kindAt(next);
      output << "| `" << kind.id << "` | " << nameOf(kind.level) << " | " << kind.meaning << " | "
             << kind.effect << " | " << kind.fix << " | " << kind.run << " |\n";
    }
  }
}

namespace {

using Json = nlohmann::ordered_json;

Json findingJson(const Finding& finding) {
  const Kind& kind = *finding.kind;
  Json json = {{"id", kind.id}, {"level", nameOf(kind.level)}};
  if (!finding.place.file.empty()) json["file"] = finding.place.file;
  if (finding.place.line != 0) json["line"] = finding.place.line;
  if (finding.place.record != 0) json["record"] = finding.place.record;
  json["meaning"] = kind.meaning;
  json["text"] = finding.text;
  json["velk"] = kind.effect;
  json["fix"] = kind.fix;
  if (!kind.run.empty()) json["velk_run"] = kind.run;
  return json;
}

Json libraryJson(const Survey& survey, std::size_t i) {
  const PairMeasure& measure = survey.measures[i];
  Json json = {{"library", i + 1}, {"avg_ins", survey.libs[i].avg_ins}};
  if (measure.pairs() > 0) {
    json["measured"] = {{"insert", measure.insert},    {"spread", measure.spread},
                        {"pairs", measure.pairs()},    {"inwards", measure.inward},
                        {"outwards", measure.outward}, {"same_strand", measure.sameStrand}};
  }
  return json;
}

Json memoryJson(const survey::MemoryEstimate& memory) {
  return {{"peak", memory.peak},
          {"index", memory.index},
          {"assembly", memory.assembly},
          {"reads", memory.batch}};
}

Json adviceJson(const Survey& survey, const Advice& advice) {
  Json json = {{"r", advice.longestRead},
               {"kmers", survey.kmers},
               {"distinct_kmers", survey.distinctKmers},
               {"is_exact", survey.isExact},
               {"memory_bytes", memoryJson(advice.memory)},
               {"seconds", {{"index", advice.indexSeconds}, {"reads", advice.readSeconds}}},
               {"disk_bytes", advice.diskBytes}};
  if (!advice.command.empty()) json["command"] = advice.command;
  return json;
}

}  // namespace

void printJson(std::ostream& output, const Survey& survey, const Advice& advice) {
  Json json = {{"program", "velk-check"},
               {"arguments", survey.arguments.velk},
               {"status", statusOf(survey.findings)}};
  json["findings"] = Json::array();
  for (const Finding& finding : survey.findings.all()) {
    json["findings"].push_back(findingJson(finding));
  }
  json["libraries"] = Json::array();
  for (std::size_t i = 0; i < survey.measures.size(); ++i) {
    json["libraries"].push_back(libraryJson(survey, i));
  }
  if (advice.isKnown) json["advice"] = adviceJson(survey, advice);
  output << json.dump(2, ' ', false, Json::error_handler_t::replace) << "\n";
}

}  // namespace velk::check
