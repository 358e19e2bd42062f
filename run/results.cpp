#include "run/results.h"

#include <sys/stat.h>

#include <algorithm>

#include "run/summary.h"

namespace velk::run {
namespace {

// The read length is that of the samples; longer reads later on are placed by the rules for it.
std::vector<std::string> warningsOf(const std::vector<ReadCounts>& counts, int readLength,
                                    uint64_t foundReads) {
  std::vector<std::string> lines;
  uint64_t longer = 0;
  for (const ReadCounts& ofLibrary : counts) longer += ofLibrary.longer;
  if (longer != 0) {
    lines.push_back(countText(longer) + " reads of pairs are longer than the read length of " +
                    std::to_string(readLength) + " bases (-r)");
  }
  if (foundReads == 0) lines.emplace_back("no reads were found for any gap");
  return lines;
}

// The reads of a library that were searched.
uint64_t searchedOf(const std::string& library, const std::vector<InputFacts>& inputs) {
  uint64_t sum = 0;
  for (const InputFacts& input : inputs) {
    if (input.library == library) sum += input.records * (input.arePairs ? 2 : 1);
  }
  return sum;
}

}  // namespace

std::vector<std::string> filesOf(const Arguments& arguments) {
  std::vector<std::string> files{arguments.assembly};
  files.insert(files.end(), arguments.lists.begin(), arguments.lists.end());
  if (!arguments.agp.empty()) files.push_back(arguments.agp);
  if (!arguments.index.empty()) files.push_back(arguments.index);
  for (const Library& library : arguments.libraries) {
    for (const reads::InputFiles& input : library.inputs) {
      files.push_back(input.first);
      if (!input.second.empty()) files.push_back(input.second);
    }
  }
  return files;
}

InputFile factsOf(const std::string& file) {
  struct stat status {};
  if (stat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return {file, std::nullopt};
  return {file, static_cast<uint64_t>(status.st_size)};
}

std::vector<InputFacts> inputFactsOf(const std::vector<Library>& libraries) {
  std::vector<InputFacts> facts;
  for (const Library& library : libraries) {
    for (const reads::InputFiles& files : library.inputs) {
      InputFacts ofInput{library.name, {factsOf(files.first)}, files.arePairs(), 0, {}};
      if (!files.second.empty()) ofInput.files.push_back(factsOf(files.second));
      facts.push_back(ofInput);
    }
  }
  return facts;
}

void setCounts(InputFacts& facts, const reads::ReadInput& input) {
  facts.records = input.records();
  facts.fixes = input.fixes();
}

OutputOptions outputOptionsOf(const Arguments& arguments, int threads) {
  return {{arguments.sample, VELK_VERSION}, arguments.mapCut, !arguments.noAnchors, threads};
}

Results::Results(const Arguments& arguments, const std::vector<std::string>& inputs)
    : arguments_(arguments), folder_(arguments.folder, inputs) {
  folder_.begin();
}

void Results::finish(const Assembly& assembly, const FixedValues& fixed, const Searched& searched,
                     FoundStore& found, Session& session, const ReportMaker& makeReport) {
  std::vector<std::string> warnings = searched.warnings;
  for (const std::string& line :
       warningsOf(searched.counts, fixed.readLength, found.foundReads())) {
    session.terminal().warn(line);
    warnings.push_back(line);
  }
  found.writeResults();
  if (makeReport) {
    Summary summary = summaryOf(fixed, searched, found, session);
    summary.warnings = warnings;
    report_ = makeReport(folder_.partial("."), summaryText(summary, assembly, found.counts()));
  }
  files_ = folder_.seal(session.threads());
  session.end();
  Summary summary = summaryOf(fixed, searched, found, session);
  summary.warnings = warnings;
  folder_.publish(summaryText(summary, assembly, found.counts()));
  for (const std::string& line :
       closingLines(summary, assembly, found.counts(), folder_.path(), session.seconds())) {
    session.say(line);
  }
}

Summary Results::summaryOf(const FixedValues& fixed, const Searched& searched,
                           const FoundStore& found, const Session& session) const {
  Summary summary;
  summary.version = VELK_VERSION;
  summary.sample = arguments_.sample;
  summary.options = {{"kmer", int64_t{arguments_.kmer}},
                     {"read_length", int64_t{fixed.readLength}},
                     {"big_gap_length", int64_t{fixed.bigGapLength}},
                     {"min_identity", arguments_.mapCut},
                     {"min_overlap", arguments_.overRatio},
                     {"min_contig", int64_t{arguments_.shortestContig}},
                     {"cut", int64_t{arguments_.cut}},
                     {"placeholder_length", static_cast<int64_t>(fixed.placeholderLength)},
                     {"anchors", !arguments_.noAnchors}};
  summary.assemblyFile = searched.assemblyFile;
  summary.inputs = searched.inputs;
  for (std::size_t n = 0; n < fixed.libraries.size(); ++n) {
    const Library& library = fixed.libraries[n];
    summary.libraries.push_back({library, searchedOf(library.name, searched.inputs),
                                 found.foundReads(n), searched.counts[n]});
  }
  summary.alignmentRecords = found.records();
  summary.nameClashes = found.nameClashes();
  summary.spilledBytes = found.spilledBytes() + searched.spilledBytes;
  summary.times = searched.times;
  summary.times.insert(summary.times.end(), session.times().begin(), session.times().end());
  std::set<std::string> machines = searched.machines;
  machines.insert(machineName());
  summary.machines = machines.size();
  summary.peakMemory = std::max(peakMemory(), searched.peakMemory);
  summary.files = files_;
  summary.report = report_;
  return summary;
}

}  // namespace velk::run
