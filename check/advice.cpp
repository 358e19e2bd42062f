#include "check/advice.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string_view>

#include "check/rehearsal.h"
#include "driver/velk.h"
#include "kmer/hashSet.h"
#include "survey/costModel.h"
#include "survey/machine.h"

namespace velk::check {
namespace {

constexpr double kTight = 0.8;          // of the free memory
constexpr uint64_t kHeaderLength = 40;  // bytes of the header of a found read, about

std::string quoted(const std::string& word) {
  const bool isPlain = !word.empty() && std::all_of(word.begin(), word.end(), [](unsigned char c) {
    return std::isalnum(c) != 0 ||
           std::string_view("_-./+,:=@%").find(static_cast<char>(c)) != std::string_view::npos;
  });
  if (isPlain) return word;
  std::string text = "'";
  for (const char c : word) text += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return text + "'";
}

// The given command line with another value of -r.
std::string commandOf(const Survey& survey, int longestRead) {
  std::string command = "velk";
  const std::vector<std::string>& words = survey.arguments.velk;
  for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
    if (!words[i].starts_with('-')) break;
    if (words[i][1] == 'r') continue;
    command += " " + words[i] + " " + quoted(words[i + 1]);
  }
  return longestRead > 0 ? command + " -r " + std::to_string(longestRead) : command;
}

// The longest read of the pairs; -r as given when there are none.
int longestPairedRead(const Survey& survey) {
  uint64_t longest = 0;
  for (const ReadInput& input : survey.inputs) {
    if (input.isPaired && input.isReadable) longest = std::max(longest, input.stats.longest);
  }
  return longest == 0 ? readLen : static_cast<int>(std::min<uint64_t>(longest, 1000000000));
}

void estimateTime(const Survey& survey, Advice& advice) {
  advice.indexSeconds = survey.secondsPerKmer * static_cast<double>(survey.kmers);
  for (const ReadInput& input : survey.inputs) {
    if (!input.isReadable) continue;
    advice.readSeconds +=
        survey::inputSeconds({input.records, input.isPaired, secondsToReadRecord(input)},
                             survey.secondsPerRead, thread_num);
  }
}

// The bytes of the largest batch.
uint64_t batchBytes(const Survey& survey) {
  uint64_t most = 0;
  for (const ReadInput& input : survey.inputs) {
    if (!input.isReadable) continue;
    survey::BatchShape shape;
    shape.arePairs = input.isPaired;
    shape.entries = input.records;
    shape.readLength = static_cast<uint64_t>(input.stats.meanLength());
    shape.foundPerRead = survey.foundPerRead;
    shape.threads = thread_num;
    most = std::max(most, survey::batchBytes(shape));
  }
  return most;
}

survey::MemoryEstimate estimateMemory(const Survey& survey) {
  const survey::Scaffolds assembly = assemblyOfRun();
  return survey::peakMemory(survey::indexBytes(Kmer, survey.kmers, survey::contigBases(assembly)),
                            survey::assemblyBytes(assembly), batchBytes(survey), thread_num);
}

uint64_t foundBytes(const Survey& survey) {
  double bytes = 0;
  for (const ReadInput& input : survey.inputs) {
    if (!input.isReadable) continue;
    const double reads = static_cast<double>(input.records) * (input.isPaired ? 2 : 1);
    const double length = input.stats.meanLength();
    bytes += reads * survey.foundPerRead * (length + kHeaderLength);
  }
  return static_cast<uint64_t>(bytes);
}

// Of a table that is made, checkArguments has looked at the size.
void checkTable(Survey& survey) {
  HashSet table = numbersOfNew(initSize, LoadFactor);
  for (uint64_t size = table.size; size <= kMaxSlots && table.max < survey.distinctKmers;
       size = table.size) {
    if (growNumbers(table, table.max + 1)) continue;
    survey.findings.add("table-refused", {},
                        "with this -f it grows beyond " + std::to_string(size) + " slots for " +
                            std::to_string(survey.distinctKmers) + " k-mers");
    return;
  }
}

void checkMemory(Survey& survey, const Advice& advice) {
  const uint64_t needed = advice.memory.peak;
  const uint64_t free = survey::freeMemory();
  const std::string text = std::to_string(needed / 1000000) + " MB needed, " +
                           std::to_string(free / 1000000) + " MB free";
  if (needed > free) {
    survey.findings.add("memory-short", {}, text);
  } else if (static_cast<double>(needed) > kTight * static_cast<double>(free)) {
    survey.findings.add("memory-tight", {}, text);
  }
}

}  // namespace

void checkDiskSpace(Findings& findings, const std::vector<DiskNeed>& needs) {
  std::map<uint64_t, uint64_t> needed;  // by device
  std::map<uint64_t, uint64_t> free;
  for (const DiskNeed& need : needs) {
    const survey::Disk disk = survey::diskOf(need.file);
    needed[disk.device] += need.bytes;
    free[disk.device] = disk.free;
  }
  for (const auto& [device, bytes] : needed) {
    if (bytes <= free[device]) continue;
    findings.add("disk-short", {},
                 std::to_string(bytes / 1000000) + " MB needed, " +
                     std::to_string(free[device] / 1000000) + " MB free");
  }
}

Advice advise(Survey& survey) {
  Advice advice;
  if (survey.distinctKmers == 0) return advice;
  advice.isKnown = true;
  advice.longestRead = longestPairedRead(survey);
  advice.memory = estimateMemory(survey);
  estimateTime(survey, advice);
  checkTable(survey);
  checkMemory(survey, advice);
  std::vector<DiskNeed> needs = {{out_file, foundBytes(survey)}};
  if (!scaffold_file.empty()) needs.push_back({scaffold_file, advice.memory.assembly});
  checkDiskSpace(survey.findings, needs);
  for (const DiskNeed& need : needs) advice.diskBytes += need.bytes;
  if (survey.findings.highest() != Level::kError) {
    advice.command = commandOf(survey, advice.longestRead);
  }
  return advice;
}

}  // namespace velk::check
