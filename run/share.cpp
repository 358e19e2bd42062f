#include "run/share.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "run/checksum.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/resultNames.h"

namespace velk::run {
namespace {

using Json = nlohmann::ordered_json;

constexpr int kShareSchema = 1;
constexpr const char* kChecksum = "checksum";

[[noreturn]] void fail(const std::string& folder, const std::string& what) {
  throw Failure(Status::kFailed, folder + " " + what);
}

// The text of the file, with the checksum of the text without one.
std::string textOf(Json json) {
  json.erase(kChecksum);
  json[kChecksum] = md5OfText(json.dump());
  return json.dump(2) + "\n";
}

Json countsOf(const Share& share) {
  return {{"records", share.records},
          {"carriage_returns", share.fixes.carriageReturns},
          {"lower_case", share.fixes.lowerCase},
          {"wrapped", share.fixes.wrapped},
          {"bases", share.counts.bases},
          {"placed", share.counts.placed},
          {"with_n", share.counts.withN},
          {"too_short", share.counts.tooShort},
          {"longer", share.counts.longer},
          {"reads_found", share.found},
          {"alignment_records", share.items.records},
          {"entries_at_gaps", share.items.gapReads},
          {"names", share.items.names}};
}

void setCounts(const Json& json, Share& share) {
  const auto set = [&](const char* name, uint64_t& count) { count = json.at(name); };
  set("records", share.records);
  set("carriage_returns", share.fixes.carriageReturns);
  set("lower_case", share.fixes.lowerCase);
  set("wrapped", share.fixes.wrapped);
  set("bases", share.counts.bases);
  set("placed", share.counts.placed);
  set("with_n", share.counts.withN);
  set("too_short", share.counts.tooShort);
  set("longer", share.counts.longer);
  set("reads_found", share.found);
  set("alignment_records", share.items.records);
  set("entries_at_gaps", share.items.gapReads);
  set("names", share.items.names);
}

Share shareOf(const Json& json) {
  Share share;
  share.program = json.at("program").at("md5");
  share.plan = json.at("plan");
  share.task = json.at("task");
  for (const Json& input : json.at("inputs")) {
    share.inputs.push_back({input.at("bytes"), input.at("md5")});
  }
  setCounts(json.at("counts"), share);
  for (const auto& [name, seconds] : json.at("seconds").items()) {
    share.times.push_back({name, seconds});
  }
  share.machine = json.at("machine");
  share.peakMemory = json.at("peak_memory_bytes");
  share.spilledBytes = json.at("spilled_bytes");
  for (const Json& file : json.at("files")) {
    share.files.push_back({file.at("name"), file.at("bytes"), file.at("md5")});
  }
  return share;
}

// Whether the files are those of a share, each as it was written.
void checkFiles(const std::string& folder, const std::vector<ResultFile>& files) {
  const auto known = shareForm().names;
  for (const ResultFile& file : files) {
    const bool isName = std::any_of(known.begin(), known.end(),
                                    [&](const char* name) { return file.name == name; });
    if (!isName || !exists(folder + "/" + file.name)) {
      fail(folder, "is no whole share: " + file.name + " is missing");
    }
    uint64_t bytes = 0;
    const std::string md5 = md5OfFile(folder + "/" + file.name, bytes);
    if (bytes != file.bytes || md5 != file.md5) {
      fail(folder, "is no whole share: " + file.name + " is not as its task has written it");
    }
  }
}

std::string summaryOf(const std::string& folder) {
  return folder + "/" + kShareSummaryName;
}

// What share.json says; null unless it is as it was written.
Json wholeJson(const std::string& folder) {
  const std::string text = readFile(summaryOf(folder));
  const Json json = Json::parse(text, nullptr, false);
  return json.is_object() && textOf(json) == text ? json : Json();
}

}  // namespace

std::string shareText(const Share& share) {
  Json json{{"schema", kShareSchema},
            {"program", {{"name", "velk-run"}, {"version", VELK_VERSION}, {"md5", share.program}}},
            {"plan", share.plan},
            {"task", share.task}};
  json["inputs"] = Json::array();
  for (const FileIdentity& input : share.inputs) {
    json["inputs"].push_back({{"bytes", input.bytes}, {"md5", input.md5}});
  }
  json["counts"] = countsOf(share);
  json["seconds"] = Json::object();
  for (const PhaseTime& time : share.times) json["seconds"][time.name] = time.seconds;
  json["machine"] = share.machine;
  json["peak_memory_bytes"] = share.peakMemory;
  json["spilled_bytes"] = share.spilledBytes;
  json["files"] = Json::array();
  for (const ResultFile& file : share.files) {
    json["files"].push_back({{"name", file.name}, {"bytes", file.bytes}, {"md5", file.md5}});
  }
  return textOf(json);
}

Share readShare(const std::string& folder) {
  if (!exists(summaryOf(folder))) fail(folder, "is no whole share: share.json is missing");
  const Json json = wholeJson(folder);
  if (!json.is_object()) {
    fail(folder, "is no whole share: share.json is not as its task has written it");
  }
  try {
    Share share = shareOf(json);
    checkFiles(folder, share.files);
    return share;
  } catch (const Json::exception&) {
    fail(folder, "is a share of another version of velk-run");
  }
}

void requireNoOther(const std::string& folder, const std::string& plan) {
  if (!exists(summaryOf(folder))) return;
  const Json json = wholeJson(folder);
  if (json.is_object() && json.value("plan", plan) != plan) {
    fail(folder, "is a share of another plan; remove it, or choose another folder");
  }
}

std::string ownChecksum() {
  uint64_t bytes = 0;
  return md5OfFile("/proc/self/exe", bytes);
}

}  // namespace velk::run
