#include "run/plan.h"

#include <cmath>
#include <filesystem>
#include <initializer_list>
#include <nlohmann/json.hpp>
#include <stdexcept>

#include "run/checksum.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/library.h"
#include "run/savedIndex.h"

namespace velk::run {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::ordered_json;

constexpr int kPlanSchema = 1;
constexpr int kMostCount = 0x7FFFFFFF;

// What is wrong with a plan.
struct Wrong : std::runtime_error {
  using std::runtime_error::runtime_error;
};

Json jsonOf(const PlannedFile& file) {
  return {{"name", file.name}, {"bytes", file.identity.bytes}, {"md5", file.identity.md5}};
}

// The sample's fragments: for each orientation a list of their shortest lengths and numbers.
Json insertsOf(const Library& library) {
  Json json = Json::array();
  for (const InsertHistogram& inserts : library.inserts) {
    Json pairs = Json::array();
    for (std::size_t bin = 0; bin < inserts.bins().size(); ++bin) {
      if (inserts.bins()[bin] == 0) continue;
      pairs.push_back({InsertHistogram::startOf(bin), inserts.bins()[bin]});
    }
    json.push_back(pairs);
  }
  return json;
}

Json plannedOf(const Library& library) {
  Json json = jsonOf(library);
  if (library.arePairs()) json["inserts"] = insertsOf(library);
  return json;
}

Json optionsOf(const Plan& plan) {
  const Arguments& arguments = plan.arguments;
  return {{"kmer", arguments.kmer},
          {"read_length", plan.fixed.readLength},
          {"big_gap_length", plan.fixed.bigGapLength},
          {"min_identity", arguments.mapCut},
          {"min_overlap", arguments.overRatio},
          {"min_contig", arguments.shortestContig},
          {"cut", arguments.cut},
          {"placeholders", arguments.placeholders},
          {"placeholder_length", plan.fixed.placeholderLength},
          {"anchors", !arguments.noAnchors},
          {"native", arguments.native},
          {"report", !arguments.noReport}};
}

// Throws Json::exception, or Wrong where a number is out of its range.
template <class Number>
Number numberOf(const Json& json, const char* name, double least, double most) {
  const Json& value = json.at(name);
  if (!value.is_number() || !(value.get<double>() >= least && value.get<double>() <= most)) {
    throw Wrong(std::string(name) + " is out of its range");
  }
  return value.get<Number>();
}

// One of the names that nameOf() gives these values.
template <class Value>
Value namedIn(const Json& json, const char* key, std::initializer_list<Value> values) {
  const std::string name = json.at(key);
  for (const Value value : values) {
    if (name == nameOf(value)) return value;
  }
  throw Wrong(std::string(key) + " is \"" + name + "\"");
}

PlannedFile fileOf(const Json& json) {
  return {json.at("name"), {json.at("bytes"), json.at("md5")}};
}

Library libraryOf(const Json& json) {
  Library library;
  library.name = json.at("name");
  library.kind =
      namedIn(json, "kind", {LibraryKind::kPairs, LibraryKind::kMatePairs, LibraryKind::kSingle});
  if (!library.arePairs()) return library;
  library.orientation = namedIn(json, "orientation", {Orientation::kInward, Orientation::kOutward});
  if (json.at("orientation_source") == "given") library.givenOrientation = library.orientation;
  library.isMeasured = json.at("orientation_source") == "measured";
  library.insert = numberOf<double>(json, "insert", 0, kMostCount);
  library.isInsertGiven = json.at("insert_source") == "given";
  library.spread = numberOf<double>(json, "spread", 0, kMostCount);
  for (std::size_t n = 0; n < library.inserts.size(); ++n) {
    for (const Json& pairs : json.at("inserts").at(n)) {
      const auto length = pairs.at(0).get<uint64_t>();
      if (length > kMostCount) throw Wrong("inserts is out of its range");
      library.inserts[n].add(length, pairs.at(1));
    }
  }
  return library;
}

void readOptions(const Json& json, Plan& plan) {
  Arguments& arguments = plan.arguments;
  arguments.kmer = numberOf<int>(json, "kmer", 1, kMostCount);
  plan.fixed.readLength = numberOf<int>(json, "read_length", 0, kMostCount);
  plan.fixed.bigGapLength = numberOf<int>(json, "big_gap_length", 0, kMostCount);
  arguments.mapCut = numberOf<double>(json, "min_identity", 0, 1);
  arguments.overRatio = numberOf<double>(json, "min_overlap", 0, 1);
  arguments.shortestContig = numberOf<int>(json, "min_contig", 0, kMostCount);
  arguments.cut = numberOf<int>(json, "cut", 0, kMostCount);
  arguments.placeholders = json.at("placeholders").get<std::vector<uint64_t>>();
  plan.fixed.placeholderLength = numberOf<uint64_t>(json, "placeholder_length", 0, 1e15);
  arguments.noAnchors = !json.at("anchors").get<bool>();
  arguments.native = json.at("native");
  arguments.noReport = !json.at("report").get<bool>();
}

// Adds a task and its input.
void readTask(const Json& json, Plan& plan) {
  if (json.at("task") != plan.inputs.size()) {
    throw Wrong("tasks are not numbered in their order");
  }
  const std::string name = json.at("library");
  uint32_t number = plan.inputs.empty() ? 0 : plan.inputs.back().library;
  while (number < plan.fixed.libraries.size() && plan.fixed.libraries[number].name != name) {
    ++number;
  }
  if (number == plan.fixed.libraries.size()) {
    throw Wrong("tasks are not in the order of the libraries: " + name);
  }
  PlannedInput input{number, {}, json.at("interleaved"), {}};
  for (const Json& file : json.at("files")) input.files.push_back(fileOf(file));
  Library& library = plan.fixed.libraries[number];
  const bool arePairs = input.areInterleaved || input.files.size() == 2;
  if (input.files.empty() || input.files.size() > (input.areInterleaved ? 1 : 2) ||
      arePairs != library.arePairs()) {
    throw Wrong("files do not fit their library: " + name);
  }
  library.inputs.push_back({input.files.front().name,
                            input.files.size() == 2 ? input.files.back().name : "",
                            input.areInterleaved});
  plan.inputs.push_back(input);
}

Plan planOf(const Json& json) {
  Plan plan;
  plan.arguments.sample = json.at("sample");
  readOptions(json.at("options"), plan);
  plan.common.push_back(fileOf(json.at("assembly")));
  plan.arguments.assembly = plan.common.front().name;
  if (json.contains("agp")) {
    plan.common.push_back(fileOf(json.at("agp")));
    plan.arguments.agp = plan.common.back().name;
  }
  if (json.contains("index")) plan.index = json.at("index").at("md5");
  for (const Json& library : json.at("libraries")) {
    plan.fixed.libraries.push_back(libraryOf(library));
  }
  for (const Json& task : json.at("tasks")) readTask(task, plan);
  plan.warnings = json.at("warnings").get<std::vector<std::string>>();
  return plan;
}

Json jsonOf(const Plan& plan, uint32_t task) {
  const PlannedInput& input = plan.inputs[task];
  Json json{{"task", task},
            {"library", plan.fixed.libraries[input.library].name},
            {"interleaved", input.areInterleaved},
            {"files", Json::array()}};
  for (const PlannedFile& file : input.files) json["files"].push_back(jsonOf(file));
  const double seconds =
      plan.estimate.loadSeconds + plan.estimate.indexSeconds + input.estimate.searchSeconds;
  json["minutes"] = std::ceil(seconds / 0.6) / 100;
  json["memory_mb"] = input.estimate.memory / 1000000 + 1;
  return json;
}

}  // namespace

void requireSources(const SavedIndex& index, const Plan& plan) {
  index.requireAssembly(plan.common.front().name, plan.common.front().identity);
  index.requireAgp(plan.common.size() > 1 ? std::optional(plan.common.back().identity)
                                          : std::nullopt);
}

std::string textOfPlan(const Plan& plan) {
  Json json{{"schema", kPlanSchema},
            {"program", {{"name", "velk-run"}, {"version", VELK_VERSION}}},
            {"sample", plan.arguments.sample},
            {"options", optionsOf(plan)},
            {"assembly", jsonOf(plan.common.front())}};
  if (plan.common.size() > 1) json["agp"] = jsonOf(plan.common.back());
  if (!plan.index.empty()) json["index"] = {{"md5", plan.index}};
  json["libraries"] = Json::array();
  for (const Library& library : plan.fixed.libraries)
    json["libraries"].push_back(plannedOf(library));
  json["threads"] = plan.threads;
  json["tasks"] = Json::array();
  for (uint32_t n = 0; n < plan.inputs.size(); ++n) json["tasks"].push_back(jsonOf(plan, n));
  json["warnings"] = plan.warnings;
  try {
    return json.dump(2) + "\n";
  } catch (const Json::exception&) {
    throw Failure(Status::kUsage, "a file has a name that is not UTF-8, which a plan can't hold");
  }
}

Plan readPlan(const std::string& file) {
  const std::string text = readFile(file);
  const auto fail = [&](const std::string& why) -> Plan {
    throw Failure(Status::kUsage, file + " is no plan of velk-run " VELK_VERSION ": " + why);
  };
  try {
    const Json json = Json::parse(text, nullptr, false);
    if (json.is_discarded()) throw Wrong("it is no JSON, or a part of it only");
    const Json& program = json.at("program");
    if (program.at("name") != "velk-run" || program.at("version") != VELK_VERSION ||
        json.at("schema") != kPlanSchema) {
      throw Wrong("it was made by another version");
    }
    Plan plan = planOf(json);
    plan.checksum = md5OfText(text);
    return plan;
  } catch (const Json::exception&) {
    return fail("it lacks a key, or a value is of another kind");
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}

std::string nameFromRoot(const std::string& file, const std::string& root) {
  const fs::path from = fs::absolute(root).lexically_normal();
  const fs::path name = fs::absolute(file).lexically_normal().lexically_relative(from);
  if (name.empty() || *name.begin() == "..") {
    throw Failure(Status::kUsage, file + " does not lie below the root of the inputs, " +
                                      from.string() + " (--inputs-root)");
  }
  return name.string();
}

std::string fileAtRoot(const std::string& name, const std::string& root) {
  return (fs::path(root) / name).lexically_normal().string();
}

}  // namespace velk::run
