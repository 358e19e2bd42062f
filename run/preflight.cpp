#include "run/preflight.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <map>
#include <utility>

#include "reads/readInput.h"
#include "run/estimate.h"
#include "run/failure.h"
#include "run/terminal.h"
#include "survey/assembly.h"
#include "survey/costModel.h"
#include "survey/machine.h"

namespace velk::run {
namespace {

constexpr std::size_t kLongRead = 1000;  // bases, from which on reads are of another kind
constexpr double kUnlike = 0.05;  // share by which a given insert may differ from the measured

// One finding for all places of a kind.
class Kind {
 public:
  Kind(bool isError, std::string text) : finding_{isError, std::move(text), 0, ""} {}

  void add(const std::string& place) {
    if (finding_.places++ == 0) finding_.first = place;
  }

  void addTo(std::vector<Finding>& findings) const {
    if (finding_.places != 0) findings.push_back(finding_);
  }

 private:
  Finding finding_;
};

std::vector<std::string> filesOf(const std::vector<Library>& libraries) {
  std::vector<std::string> files;
  for (const Library& library : libraries) {
    for (const reads::InputFiles& input : library.inputs) {
      files.push_back(input.first);
      if (!input.second.empty()) files.push_back(input.second);
    }
  }
  return files;
}

std::size_t medianLength(const std::vector<reads::KeptRead>& reads) {
  std::vector<std::size_t> lengths;
  lengths.reserve(reads.size());
  for (const reads::KeptRead& read : reads) lengths.push_back(read.bases.size());
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  return *middle;
}

}  // namespace

std::string Finding::line() const {
  std::string line = text + (first.empty() ? "" : ": " + first);
  if (places == 2) line += " and one more";
  if (places > 2) line += " and " + countText(places - 1) + " more";
  return line;
}

std::vector<Finding> checkFiles(const std::string& assembly,
                                const std::vector<Library>& libraries) {
  std::vector<Finding> findings;
  Kind twice(true, "a file is given twice");
  std::map<std::pair<uint64_t, uint64_t>, std::string> seen;
  std::vector<std::string> files = filesOf(libraries);
  files.push_back(assembly);
  for (const std::string& file : files) {
    struct stat status {};
    if (access(file.c_str(), R_OK) != 0 || stat(file.c_str(), &status) != 0) {
      throw Failure(Status::kFailed, file + ": " + std::strerror(errno));
    }
    if (!S_ISREG(status.st_mode)) continue;
    if (&file == &files.back()) requireNoReads(file);
    const auto [other, isNew] = seen.emplace(std::pair(status.st_dev, status.st_ino), file);
    if (!isNew) twice.add(file == other->second ? file : file + " (" + other->second + ")");
  }
  twice.addTo(findings);
  const uint64_t handles = kOtherFiles + files.size();
  if (const uint64_t allowed = survey::fileHandles(); handles > allowed) {
    findings.push_back(
        {true, "too many files for one process (ulimit -n)", 1,
         "the run opens " + countText(handles) + ", and " + countText(allowed) + " are allowed"});
  }
  return findings;
}

std::vector<Finding> checkSamples(const Inputs& inputs) {
  std::vector<Finding> findings;
  Kind empty(false, "no reads in it");
  Kind isLong(true,
              "long reads (median over 1,000 bases): places are found without gaps in the "
              "alignment, which nearly all long reads have");
  Kind from64(true, "qualities are counted from 64, not from 33");
  for (const OpenInput& input : inputs.all()) {
    const std::string& file = input.reads->files().first;
    if (!input.failure.empty()) {
      findings.push_back({true, input.failure, 1, ""});
      continue;
    }
    if (input.sample().first.empty()) {
      empty.add(file);
      continue;
    }
    if (medianLength(input.sample().first) > kLongRead) isLong.add(file);
    if (reads::looksLikePhred64(input.sample())) from64.add(file);
  }
  for (const Kind& kind : {empty, isLong, from64}) kind.addTo(findings);
  return findings;
}

namespace {

// Lengths that programs write for gaps of unknown length.
constexpr std::array<uint64_t, 3> kMadeUpLengths{100, 200, 500};
constexpr std::size_t kManyGaps = 10;
constexpr double kManyShare = 0.2;  // of all gaps

// Gaps of a length that looks made up, where there are many of them.
void addMadeUpGaps(const Assembly& assembly, std::vector<Finding>& findings) {
  for (const uint64_t length : kMadeUpLengths) {
    const auto count = static_cast<std::size_t>(
        std::count_if(assembly.gaps().begin(), assembly.gaps().end(),
                      [&](const Gap& gap) { return gap.unknown == length; }));
    const auto many = kManyShare * static_cast<double>(assembly.gaps().size());
    if (count < kManyGaps || static_cast<double>(count) < many) continue;
    const std::string number = std::to_string(length);
    findings.push_back({false,
                        countText(count) + " gaps have exactly " + number +
                            " N, as programs write for gaps of unknown length; if these are "
                            "such, --placeholder " +
                            number + " finds more of their reads",
                        1, assembly.file()});
  }
}

}  // namespace

std::vector<Finding> checkAssembly(const Assembly& assembly, bool hasPlaceholders) {
  std::vector<Finding> findings;
  if (assembly.gaps().empty()) {
    findings.push_back({true, "no gap (a run of N between two contigs)", 1, assembly.file()});
  }
  if (survey::indexedKmers({assembly.model(), assembly.scaffolds().size()}) == 0) {
    findings.push_back({true, "no contig is as long as a k-mer (-k) and the shortest contig (-L)",
                        1, assembly.file()});
  }
  if (!hasPlaceholders) addMadeUpGaps(assembly, findings);
  const auto isPlaceholder = [](const Gap& gap) { return gap.isPlaceholder; };
  if (hasPlaceholders &&
      std::none_of(assembly.gaps().begin(), assembly.gaps().end(), isPlaceholder)) {
    findings.push_back(
        {false, "no gap is one of unknown length (--placeholder, --agp)", 1, assembly.file()});
  }
  return findings;
}

std::vector<Finding> checkMemory(const Assembly& assembly, int kmer) {
  std::vector<Finding> findings;
  const survey::Scaffolds scaffolds(assembly.model(), assembly.scaffolds().size());
  // The assembly is in memory by now.
  uint64_t wanted = kWorkingMemory;
  if (assembly.saved() == nullptr) {
    wanted +=
        survey::indexBytes(kmer, survey::indexedKmers(scaffolds), survey::contigBases(scaffolds));
  }
  const auto inMegabytes = [](uint64_t bytes) { return countText(bytes >> 20) + " MiB"; };
  if (const uint64_t free = survey::freeMemory(); wanted > free) {
    findings.push_back(
        {true, "too little memory", 1,
         "the run takes " + inMegabytes(wanted) + " more, and " + inMegabytes(free) + " are free"});
  }
  return findings;
}

std::vector<Finding> checkLibraries(const std::vector<Library>& given,
                                    const std::vector<Library>& measured) {
  std::vector<Finding> findings;
  Kind unmeasured(true,
                  "fewer than 100 pairs lie on one contig, so the insert size can't be measured; "
                  "give it, and the orientation, in a sample sheet (--samplesheet)");
  Kind unlike(false, "a given insert size differs from the measured one");
  Kind opposite(false, "a given orientation differs from the measured one");
  for (std::size_t n = 0; n < given.size(); ++n) {
    const Library& before = given[n];
    const Library& after = measured[n];
    if (!after.arePairs()) continue;
    if (after.insert == 0) {
      throw Failure(Status::kPreflight, "no pair of library " + after.name +
                                            " lies on one contig; give its insert size, and the "
                                            "orientation, in a sample sheet (--samplesheet)");
    }
    if (!after.isMeasured) {
      if (before.insert == 0) unmeasured.add("library " + after.name);
      continue;
    }
    if (before.insert != 0 &&
        std::abs(before.insert - after.measuredInsert) > kUnlike * after.measuredInsert) {
      unlike.add("library " + after.name + ", " + std::to_string(std::lround(before.insert)) +
                 " bases given and used, " + std::to_string(std::lround(after.measuredInsert)) +
                 " measured");
    }
    if (before.givenOrientation && *before.givenOrientation != after.measuredOrientation) {
      opposite.add("library " + after.name + ", " + nameOf(*before.givenOrientation) +
                   " given and used, " + nameOf(after.measuredOrientation) + " measured");
    }
  }
  for (const Kind& kind : {unmeasured, unlike, opposite}) kind.addTo(findings);
  return findings;
}

}  // namespace velk::run
