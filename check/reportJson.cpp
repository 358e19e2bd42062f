#include <nlohmann/json.hpp>

#include "check/report.h"

namespace velk::check {
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
