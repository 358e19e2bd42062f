#include "report/report.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "report/comparison.h"
#include "report/drawing.h"
#include "report/figures.h"
#include "report/multiqc.h"
#include "report/page.h"
#include "report/partialFolder.h"
#include "report/summaryText.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/resultNames.h"

namespace velk::report {
namespace {

using Json = nlohmann::ordered_json;
using run::Failure;
using run::Status;

constexpr std::array kNames{"report.html", "velk_mqc.json", "velk_gaps_mqc.json"};

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
  explicit Judged(RunData data)
      : data_(std::move(data)), judge_(data_), gaps_(judgeAll(data_, judge_)) {}
  explicit Judged(const std::string& folder) : Judged(readRun(folder, wholeSummary(folder))) {}
  Judged(const Judged&) = delete;
  Judged& operator=(const Judged&) = delete;

  Findings findings() const { return {data_, judge_, gaps_}; }

 private:
  RunData data_;
  Judge judge_;
  std::vector<Judgement> gaps_;
};

// `name`: of what has the gaps.
std::string drawn(const RunData& data, GapReadSource& reads, uint64_t number,
                  const std::string& name) {
  const auto gap = std::partition_point(data.gaps.begin(), data.gaps.end(),
                                        [&](const GapData& one) { return one.number < number; });
  if (gap == data.gaps.end() || gap->number != number) {
    throw Failure(Status::kUsage, "there is no gap " + std::to_string(number) + "; " + name +
                                      " has " + std::to_string(data.gaps.size()) +
                                      ", numbered from 0");
  }
  const auto index = static_cast<std::size_t>(gap - data.gaps.begin());
  return drawGap(data, index, reads.readsOf(index), Setting::kAlone) + "\n";
}

}  // namespace

std::string writeReport(const std::string& folder, const std::string& summary,
                        const std::string& target) {
  const RunData data = readRun(folder, summary);
  const Judge judge(data);
  const std::vector<Judgement> gaps = judgeAll(data, judge);
  const Findings findings{data, judge, gaps};
  const std::unique_ptr<GapReadSource> reads = openRecords(folder, data);
  run::writeFile(target + "/" + kNames[0], makePage(findings, reads.get()));
  run::writeFile(target + "/" + kNames[1], multiqcTable(findings));
  run::writeFile(target + "/" + kNames[2], multiqcGaps(findings));
  return tallyText(findings);
}

void reportOn(const std::string& folder) {
  std::vector<std::string> names(kNames.begin(), kNames.end());
  names.emplace_back(run::kSummaryName);
  PartialFolder partial(folder, names);
  const std::string summary = wholeSummary(folder);
  const std::string summaryFile = folder + "/" + run::kSummaryName;
  const std::set<std::string> own = run::namesOfSummary(summaryFile, run::resultForm().names);
  for (const char* name : kNames) {
    const std::string file = folder + "/" + name;
    if (own.contains(name) || partial.isLeft() || !run::exists(file)) continue;
    throw Failure(Status::kFailed,
                  file + " is there, and no result of velk-run lists it; remove it");
  }
  partial.make();
  const std::string said = writeReport(folder, summary, partial.path());
  run::writeFile(partial.path() + "/" + run::kSummaryName,
                 summaryWith(summary, said, partial.path()));
  for (const std::string& name : names) run::syncFile(partial.path() + "/" + name);
  partial.moveAll();
  run::syncFile(folder);
}

std::string drawingOf(const std::string& folder, uint64_t gap) {
  const RunData data = readRun(folder, wholeSummary(folder));
  return drawn(data, *openRecords(folder, data), gap, folder);
}

std::string textOf(const std::string& folder, std::size_t width) {
  const Judged run(folder);
  return summaryText(run.findings(), width);
}

std::string pageOf(const VelkFiles& files) {
  VelkRun run = readVelkRun(files);
  const Judged judged(std::move(run.data));
  return makePage(judged.findings(), run.reads.get());
}

std::string drawingOf(const VelkFiles& files, uint64_t gap) {
  const VelkRun run = readVelkRun(files);
  return drawn(run.data, *run.reads, gap, files.scaffolds + ".gapsinfo");
}

std::string textOf(const VelkFiles& files, std::size_t width) {
  const Judged judged(readVelkRun(files).data);
  return summaryText(judged.findings(), width);
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
