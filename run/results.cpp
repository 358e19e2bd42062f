#include "run/results.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>

#include "run/diskFile.h"
#include "run/native.h"
#include "run/resultNames.h"
#include "run/terminal.h"

namespace velk::run {
namespace {

constexpr uint64_t kNativeMemory = uint64_t{64} << 20;  // bytes

std::vector<std::string> inputsOf(const Arguments& arguments) {
  std::vector<std::string> files{arguments.assembly};
  if (!arguments.agp.empty()) files.push_back(arguments.agp);
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

uint64_t peakMemory() {
  struct rusage used {};
  getrusage(RUSAGE_SELF, &used);
  return static_cast<uint64_t>(used.ru_maxrss) * 1024;
}

}  // namespace

Results::Results(const Arguments& arguments)
    : arguments_(arguments), folder_(arguments.folder, inputsOf(arguments)) {
  folder_.begin();
}

void Results::beginPhase(const std::string& name) {
  endPhase();
  times_.push_back({name, 0});
}

void Results::endPhase() {
  const Clock::time_point now = Clock::now();
  if (!times_.empty()) {
    times_.back().seconds = std::chrono::duration<double>(now - phaseStart_).count();
  }
  phaseStart_ = now;
}

void Results::begin(const Fixed& fixed) {
  fixed_ = &fixed;
  outputs_ = std::make_unique<Outputs>(folder_, fixed.assembly, fixed.libraries,
                                       OutputOptions{{arguments_.sample, VELK_VERSION},
                                                     fixed.values.mapCut,
                                                     !arguments_.noAnchors,
                                                     fixed.values.threads});
  foundReads_ = std::make_unique<std::atomic<uint64_t>[]>(fixed.libraries.size());
  if (!arguments_.native) return;
  std::filesystem::create_directories(folder_.partial(kNativeName));
  native_ = std::make_unique<SpillSorter>(folder_.partial("native.spill"), kNativeMemory);
  nativeCounts_ = std::make_unique<std::atomic<uint64_t>[]>(fixed.assembly.gaps().size());
}

void Results::take(int, const FoundEntry& entry) {
  outputs_->take(entry);
  std::array<bool, 2> isFound{};
  for (const FoundPlace& place : entry.places) isFound[static_cast<std::size_t>(place.mate)] = true;
  foundReads_[entry.library] +=
      static_cast<uint64_t>(isFound[0]) + static_cast<uint64_t>(isFound[1]);
  if (native_ == nullptr) return;
  const Assembly& assembly = fixed_->assembly;
  native_->add({entry.input, entry.record, 0},
               nativeRecords(entry, fixed_->libraries[entry.library], assembly));
  for (const FoundPlace& place : entry.places) {
    ++nativeCounts_[assembly.gapInFront(place.scaffold, place.contigBehind)];
  }
}

void Results::takeSpan(const Span& span) {
  outputs_->takeSpan(span.gap, span.length);
}

void Results::writeNative() {
  const std::string file = folder_.partial("native/found.fa");
  std::ofstream stream(file);
  native_->forEach([&](const SortKey&, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  });
  stream.close();
  if (!stream) failFile(file, "written");
  std::vector<uint64_t> counts;
  for (std::size_t gap = 0; gap < fixed_->assembly.gaps().size(); ++gap) {
    counts.push_back(nativeCounts_[gap]);
  }
  writeNativeTables(folder_.partial(kNativeName), fixed_->assembly, counts);
}

void Results::finish(const std::vector<std::string>& warnings,
                     const std::vector<ReadCounts>& counts, const ReportMaker& makeReport) {
  warnings_ = warnings;
  counts_ = counts;
  outputs_->write();
  if (native_ != nullptr) writeNative();
  if (makeReport) {
    const std::string text = summaryText(summary(), fixed_->assembly, outputs_->counts());
    report_ = makeReport(folder_.partial("."), text);
  }
  files_ = folder_.seal();
  endPhase();
  folder_.publish(summaryText(summary(), fixed_->assembly, outputs_->counts()));
}

// The reads of a library that were searched.
uint64_t Results::searched(std::size_t library) const {
  uint64_t sum = 0;
  for (const OpenInput& input : fixed_->inputs.all()) {
    if (input.library != library) continue;
    sum += input.reads->records() * (input.reads->files().arePairs() ? 2 : 1);
  }
  return sum;
}

Summary Results::summary() const {
  Summary summary;
  summary.version = VELK_VERSION;
  summary.sample = arguments_.sample;
  const SearchValues& values = fixed_->values;
  summary.options = {{"kmer", int64_t{values.kmer}},
                     {"read_length", int64_t{values.readLength}},
                     {"big_gap_length", int64_t{values.bigGapLength}},
                     {"min_identity", values.mapCut},
                     {"min_overlap", values.overRatio},
                     {"min_contig", int64_t{arguments_.shortestContig}},
                     {"cut", int64_t{arguments_.cut}},
                     {"placeholder_length", static_cast<int64_t>(fixed_->placeholderLength)},
                     {"anchors", !arguments_.noAnchors}};
  summary.assemblyFile = factsOf(arguments_.assembly);
  for (const OpenInput& input : fixed_->inputs.all()) {
    const reads::InputFiles& files = input.reads->files();
    InputFacts facts{fixed_->libraries[input.library].name,
                     {factsOf(files.first)},
                     files.arePairs(),
                     input.reads->records(),
                     input.reads->fixes()};
    if (!files.second.empty()) facts.files.push_back(factsOf(files.second));
    summary.inputs.push_back(facts);
  }
  for (std::size_t n = 0; n < fixed_->libraries.size(); ++n) {
    const Library& library = fixed_->libraries[n];
    const Library& given = arguments_.libraries[n];
    LibraryFacts facts{library, "", "", searched(n), foundReads_[n], counts_[n]};
    if (library.arePairs()) {
      facts.insertSource = given.insert != 0 ? "given" : "measured";
      facts.orientationSource = given.givenOrientation ? "given"
                                : library.isMeasured   ? "measured"
                                                       : "usual";
    }
    summary.libraries.push_back(facts);
  }
  summary.warnings = warnings_;
  summary.alignmentRecords = outputs_->records();
  summary.nameClashes = outputs_->nameClashes();
  summary.spilledBytes = outputs_->spilledBytes();
  summary.times = times_;
  summary.peakMemory = peakMemory();
  summary.files = files_;
  summary.report = report_;
  return summary;
}

// What the files needed before they could be used, each kind with its number.
std::string Results::fixedText() const {
  reads::Fixes ofReads;
  for (const OpenInput& input : fixed_->inputs.all()) ofReads += input.reads->fixes();
  const AssemblyNotes& notes = fixed_->assembly.notes();
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

std::vector<std::string> Results::closingLines() const {
  const Summary facts = summary();
  uint64_t reads = 0;
  uint64_t withReads = 0;
  const uint64_t gaps = fixed_->assembly.gaps().size();
  for (const LibraryFacts& library : facts.libraries) reads += library.reads;
  for (uint64_t gap = 0; gap < gaps; ++gap) {
    if (outputs_->counts().belonging(gap) > 0) ++withReads;
  }
  std::vector<std::string> lines;
  lines.push_back("Found " + countText(outputs_->reads()) + " of " + countText(reads) + " reads; " +
                  countText(withReads) + " of " + countText(gaps) + " gaps have reads.");
  for (const LibraryFacts& library : facts.libraries) {
    std::string line = "  " + library.library.name + ": found " + countText(library.found) +
                       " of " + countText(library.reads);
    if (library.library.arePairs()) {
      line += ", insert size " + std::to_string(std::lround(library.library.insert)) + " +- " +
              std::to_string(std::lround(library.library.spread)) +
              (library.library.orientation == Orientation::kInward ? ", FR" : ", RF");
    }
    lines.push_back(line);
  }
  if (const std::string fixed = fixedText(); !fixed.empty()) lines.push_back("Fixed:" + fixed);
  std::string names;
  for (const ResultFile& file : files_) names += " " + file.name;
  lines.push_back("Files in " + folder_.path() + ":" + names + " " + kSummaryName);
  const double seconds = std::chrono::duration<double>(Clock::now() - start_).count();
  lines.push_back("Time " + durationText(seconds) + ", peak memory " +
                  countText(facts.peakMemory >> 20) + " MiB");
  return lines;
}

}  // namespace velk::run
