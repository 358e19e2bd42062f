#include "run/run.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "kmer/seedIndex.h"
#include "run/assembly.h"
#include "run/failure.h"
#include "run/gapFlanks.h"
#include "run/inputs.h"
#include "run/measure.h"
#include "run/placeholders.h"
#include "run/preflight.h"
#include "run/results.h"
#include "run/search.h"
#include "run/terminal.h"
#include "survey/boundedIndex.h"
#include "survey/machine.h"

namespace velk::run {
namespace {

// Of the index on which libraries are measured: so many that some thousand pairs of a sample lie on
// it, or as many as take seconds.
constexpr double kMeasuredShare = 0.15;
constexpr uint64_t kLeastMeasured = 2000000;
constexpr uint64_t kMostMeasured = 50000000;
constexpr int kUsualReadLength = 100;  // bases, of a run without pairs
constexpr double kReach = 3;           // deviations of a fragment's length
constexpr double kWritingShare = 0.1;  // of the time of the search, that writing takes

class Run {
 public:
  Run(const Arguments& arguments, const ReportMaker& makeReport)
      : arguments_(arguments),
        makeReport_(makeReport),
        terminal_(arguments.quiet),
        threads_(arguments.threads == 0 ? survey::allowedProcessors() : arguments.threads),
        libraries_(arguments.libraries) {}

  void run() {
    Kmer = arguments_.kmer;  // read by the index
    judge(checkFiles(arguments_.assembly, libraries_));
    Results results(arguments_);
    begin(results, "preparing", std::nullopt);
    const Inputs inputs(libraries_, threads_);
    judge(checkSamples(inputs));
    const int readLength = readLengthOf(inputs);
    Assembly assembly(arguments_.assembly, {arguments_.shortestContig, arguments_.cut, readLength},
                      readPlaceholders(arguments_.placeholders, arguments_.agp));
    judge(checkAssembly(assembly, !arguments_.placeholders.empty() || !arguments_.agp.empty()));
    judge(checkMemory(assembly, arguments_.kmer));
    measure(inputs, assembly, readLength);
    const SearchValues values = fixedValues(readLength);
    const uint64_t reach = longestReach();
    assembly.lengthenPlaceholders(reach);

    begin(results, "indexing", std::nullopt);
    SeedIndex index;
    if (!index.build(assembly.model(), static_cast<uint32_t>(assembly.scaffolds().size()),
                     arguments_.kmer, threads_)) {
      throw std::bad_alloc();
    }
    const Fixed fixed{assembly, libraries_, inputs, values, reach};
    results.begin(fixed);
    const std::vector<ReadCounts> counts = search(fixed, index, results);
    warnOfLongReads(counts, readLength);
    if (results.foundReads() == 0) warn("no reads were found for any gap");
    begin(results, "writing", std::nullopt);
    noteRepeats(index.text(), assembly, flankReach(values), results.evidence());
    results.finish(warnings_, counts, arguments_.noReport ? ReportMaker() : makeReport_);
    for (const std::string& line : results.closingLines()) terminal_.say(line);
  }

 private:
  int readLengthOf(const Inputs& inputs) const {
    if (arguments_.readLength != 0) return arguments_.readLength;
    const std::size_t longest = inputs.longestPairedRead();
    return longest == 0 ? kUsualReadLength : static_cast<int>(longest);
  }

  void begin(Results& results, const std::string& phase, std::optional<double> later) {
    results.beginPhase(phase);
    terminal_.begin(phase, later);
    terminal_.update(0, 0);
  }

  void warn(const std::string& line) {
    terminal_.warn(line);
    warnings_.push_back(line);
  }

  // Says what was found. Throws Failure if it is an error and the run is not forced.
  void judge(const std::vector<Finding>& findings) {
    std::string errors;
    for (const Finding& finding : findings) {
      if (finding.isError && !arguments_.force) {
        errors += (errors.empty() ? "" : "\n[ERROR]: ") + finding.line();
      } else {
        warn(finding.line());
      }
    }
    if (!errors.empty()) throw Failure(Status::kPreflight, errors);
  }

  void measure(const Inputs& inputs, const Assembly& assembly, int readLength) {
    const survey::Scaffolds scaffolds(assembly.model(), assembly.scaffolds().size());
    const uint64_t kmers = survey::indexedKmers(scaffolds);
    if (kmers == 0) return;
    const std::vector<Library> given = libraries_;
    const auto some = static_cast<uint64_t>(kMeasuredShare * static_cast<double>(kmers));
    const survey::BoundedIndex index(
        survey::FirstContigs(scaffolds, std::clamp(some, kLeastMeasured, kMostMeasured)),
        arguments_.kmer, threads_);
    measureLibraries(libraries_, inputs, index, scaffolds,
                     {arguments_.kmer, 0, 0, readLength, arguments_.mapCut, arguments_.overRatio});
    judge(checkLibraries(given, libraries_));
  }

  SearchValues fixedValues(int readLength) const {
    int longest = 0;  // of the short inserts
    for (const Library& library : libraries_) {
      const auto insert = static_cast<int>(std::lround(library.insert));
      if (insert < MINLARGEINSERT) longest = std::max(longest, insert);
    }
    return {arguments_.kmer,   readLength,           readLength + longest,
            arguments_.mapCut, arguments_.overRatio, threads_};
  }

  // How far into the contigs beside a gap its reads may lie: as far as the fragments of the
  // libraries that are used there, or a read.
  FlankReach flankReach(const SearchValues& values) const {
    FlankReach reach{static_cast<uint64_t>(values.bigGapLength),
                     static_cast<uint64_t>(values.readLength),
                     static_cast<uint64_t>(values.readLength)};
    for (const Library& library : libraries_) {
      const auto bases =
          static_cast<uint64_t>(std::llround(library.insert + kReach * library.spread));
      reach.atBigGaps = std::max(reach.atBigGaps, bases);
      const bool isForAll = std::lround(library.insert) <= values.bigGapLength;
      if (isForAll) reach.atOthers = std::max(reach.atOthers, bases);
    }
    return reach;
  }

  // How far the pairs of any library reach, bases.
  uint64_t longestReach() const {
    double reach = 0;
    for (const Library& library : libraries_) {
      reach = std::max(reach, library.insert + kReach * library.spread);
    }
    return static_cast<uint64_t>(std::llround(reach));
  }

  // The read length is that of the samples; longer reads later on are placed by the rules for it.
  void warnOfLongReads(const std::vector<ReadCounts>& counts, int readLength) {
    uint64_t longer = 0;
    for (const ReadCounts& ofLibrary : counts) longer += ofLibrary.longer;
    if (longer == 0) return;
    warn(countText(longer) + " reads of pairs are longer than the read length of " +
         std::to_string(readLength) + " bases (-r)");
  }

  std::vector<ReadCounts> search(const Fixed& fixed, const SeedIndex& index, Results& results) {
    const uint64_t bytes = fixed.inputs.bytes();
    begin(results, "searching", bytes == 0 ? std::nullopt : std::optional(kWritingShare));
    return Search(fixed.assembly, index, libraries_, fixed.values)
        .run(fixed.inputs.toSearch(), results, [&](const Progress& progress) {
          const double done =
              bytes == 0 ? 0 : static_cast<double>(progress.bytes) / static_cast<double>(bytes);
          terminal_.update(done, progress.reads);
        });
  }

  const Arguments& arguments_;
  const ReportMaker& makeReport_;
  Terminal terminal_;
  int threads_;
  std::vector<Library> libraries_;
  std::vector<std::string> warnings_;
};

}  // namespace

void runAll(const Arguments& arguments, const ReportMaker& makeReport) {
  Run(arguments, makeReport).run();
}

}  // namespace velk::run
