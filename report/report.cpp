#include "report/report.h"

#include <array>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "report/comparison.h"
#include "report/drawing.h"
#include "report/multiqc.h"
#include "report/page.h"
#include "report/summaryText.h"
#include "report/tally.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/resultNames.h"

namespace velk::report {
namespace {

using Json = nlohmann::ordered_json;
using run::Failure;
using run::Status;

constexpr std::array kNames{"report.html", "velk_mqc.json", "velk_gaps_mqc.json"};
constexpr const char* kPartial = ".velk-report";  // the folder in which files are made

std::string tallyText(const Findings& findings) {
  const Tally tally = tallyOf(findings);
  Json reasons = Json::object();
  for (std::size_t n = 1; n < kReasons; ++n) {
    const ReasonCount& count = tally.reasons[n];
    if (count.none + count.few == 0) continue;
    reasons[nameOf(static_cast<Reason>(n))] = {{"without_reads", count.none},
                                               {"few_reads", count.few}};
  }
  return Json{{"gaps_with_few_reads", tally.few},
              {"gaps_covered_by_exact_reads", tally.covered},
              {"median_reads_of_gaps", tally.medianReads},
              {"reasons", reasons}}
      .dump();
}

std::string wholeSummary(const std::string& folder) {
  const std::string file = folder + "/" + run::kSummaryName;
  if (!run::isSummary(file)) {
    throw Failure(Status::kFailed, folder + " holds no whole result of velk-run");
  }
  return textOfFile(file);
}

// A folder for unfinished files, which goes with all that is in it.
class PartialFolder {
 public:
  explicit PartialFolder(const std::string& folder) : path_(folder + "/" + kPartial) {
    remove();
    std::error_code error;
    if (!std::filesystem::create_directory(path_, error)) {
      errno = error.value();
      run::failFile(path_, "made");
    }
  }
  ~PartialFolder() { remove(); }
  PartialFolder(const PartialFolder&) = delete;
  PartialFolder& operator=(const PartialFolder&) = delete;

  const std::string& path() const { return path_; }

 private:
  void remove() const {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  std::string path_;
};

void move(const std::string& from, const std::string& to) {
  if (std::rename(from.c_str(), to.c_str()) != 0) run::failFile(to, "made");
}

// The summary with what is said of the report, and with its files among the others.
std::string summaryWith(const std::string& summary, const std::string& said,
                        const std::string& made) {
  Json json = Json::parse(summary);
  Json listed = Json::object();
  for (const Json& file : json.at("files")) listed[file.at("name").get<std::string>()] = file;
  for (const char* name : kNames) {
    uint64_t bytes = 0;
    const std::string md5 = run::md5OfFile(made + "/" + name, bytes);
    listed[name] = {{"name", name}, {"bytes", bytes}, {"md5", md5}};
  }
  json.erase("files");
  json["report"] = Json::parse(said);
  json["files"] = Json::array();
  for (const char* name : run::resultForm().names) {
    if (listed.contains(name)) json["files"].push_back(listed[name]);
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// A run with what is said of its gaps.
class Judged {
 public:
  explicit Judged(const std::string& folder)
      : data_(readRun(folder, wholeSummary(folder))),
        judge_(data_),
        gaps_(judgeAll(data_, judge_)) {}
  Judged(const Judged&) = delete;
  Judged& operator=(const Judged&) = delete;

  Findings findings() const { return {data_, judge_, gaps_}; }

 private:
  RunData data_;
  Judge judge_;
  std::vector<Judgement> gaps_;
};

}  // namespace

std::string writeReport(const std::string& folder, const std::string& summary,
                        const std::string& target) {
  const RunData data = readRun(folder, summary);
  const Judge judge(data);
  const std::vector<Judgement> gaps = judgeAll(data, judge);
  const Findings findings{data, judge, gaps};
  GapReadSource reads(folder, data);
  run::writeFile(target + "/" + kNames[0], makePage(findings, &reads));
  run::writeFile(target + "/" + kNames[1], multiqcTable(findings));
  run::writeFile(target + "/" + kNames[2], multiqcGaps(findings));
  return tallyText(findings);
}

void reportOn(const std::string& folder) {
  const std::string summary = wholeSummary(folder);
  const std::string summaryFile = folder + "/" + run::kSummaryName;
  const std::set<std::string> own = run::namesOfSummary(summaryFile, run::resultForm().names);
  for (const char* name : kNames) {
    const std::string file = folder + "/" + name;
    if (own.contains(name) || !run::exists(file)) continue;
    throw Failure(Status::kFailed,
                  file + " is there, and no result of velk-run lists it; remove it");
  }
  const PartialFolder partial(folder);
  const std::string said = writeReport(folder, summary, partial.path());
  const std::string newSummary = partial.path() + "/" + run::kSummaryName;
  run::writeFile(newSummary, summaryWith(summary, said, partial.path()));
  for (const char* name : kNames) run::syncFile(partial.path() + "/" + name);
  run::syncFile(newSummary);
  for (const char* name : kNames) move(partial.path() + "/" + name, folder + "/" + name);
  move(newSummary, summaryFile);
  run::syncFile(folder);
}

std::string drawingOf(const std::string& folder, uint64_t gap) {
  const RunData data = readRun(folder, wholeSummary(folder));
  if (gap >= data.gaps.size()) {
    throw Failure(Status::kUsage, "there is no gap " + std::to_string(gap) + "; " + folder +
                                      " has " + std::to_string(data.gaps.size()) +
                                      ", numbered from 0");
  }
  GapReadSource reads(folder, data);
  return drawGap(data, gap, reads.readsOf(gap), Setting::kAlone) + "\n";
}

std::string textOf(const std::string& folder, std::size_t width) {
  const Judged run(folder);
  return summaryText(run.findings(), width);
}

std::string comparisonOf(const std::string& folder, const std::string& other) {
  const Judged one(folder);
  const Judged two(other);
  RunNames names{one.findings().data.sample, two.findings().data.sample};
  if (names[0] == names[1]) {  // as of runs without --sample
    names[0] += " (" + folder + ")";
    names[1] += " (" + other + ")";
  }
  return comparisonPage(one.findings(), two.findings(), names);
}

std::string comparisonTextOf(const std::string& folder, const std::string& other,
                             std::size_t width) {
  const Judged one(folder);
  const Judged two(other);
  return comparisonText(one.findings(), two.findings(), width);
}

}  // namespace velk::report
