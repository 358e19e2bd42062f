// Checks of what the search would make of the reads: pairs on contigs, big gaps, a rehearsal.
#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "check/rehearsal.h"
#include "check/survey.h"
#include "contig/contig.h"
#include "driver/options.h"
#include "driver/velk.h"
#include "kmer/hashSet.h"
#include "placement/Read2Scaf.h"

namespace velk::check {
namespace {

constexpr uint64_t kFewPairs = 50;     // fewer measure nothing
constexpr double kMixed = 0.2;         // share of the other orientation that deserves a word
constexpr double kFarOff = 0.1;        // of the insert size
constexpr double kExpectedFinds = 30;  // from which on it is no chance that nothing is found

std::string libraryText(std::size_t library) {
  return "library " + std::to_string(library + 1);
}

bool hasPairs(const Survey& survey, std::size_t library) {
  return std::any_of(survey.inputs.begin(), survey.inputs.end(), [&](const ReadInput& input) {
    return input.isPaired && input.isReadable && input.library == static_cast<int>(library);
  });
}

void checkOrientation(Survey& survey, std::size_t library, const Place& place) {
  const PairMeasure& measure = survey.measures[library];
  const int insert = survey.libs[library].avg_ins;
  Findings& findings = survey.findings;
  const std::string counts = libraryText(library) + ": of " + std::to_string(measure.pairs()) +
                             " pairs on one contig " + std::to_string(measure.inward) +
                             " point inwards, " + std::to_string(measure.outward) + " outwards, " +
                             std::to_string(measure.sameStrand) + " in one direction";
  if (measure.orientation == survey::Orientation::kSameStrand) {
    findings.add("orientation-same", place, counts);
    return;
  }
  const bool isOutward = measure.orientation == survey::Orientation::kOutward;
  const std::string sizes = libraryText(library) + ": avg_ins is " + std::to_string(insert) +
                            ", measured " + std::to_string(std::lround(measure.insert));
  const bool isOtherWay = insert > 0 && isOutward != (insert > kLongestShortInsert);
  if (isOtherWay && isOutward == (measure.insert > kLongestShortInsert)) {
    findings.add("insert-turns-pairs", place, sizes);
    return;
  }
  if (isOtherWay) {
    findings.add("orientation-wrong", place,
                 counts + "; with avg_ins " + std::to_string(insert) + " velk expects " +
                     (isOutward ? "inwards" : "outwards"));
  }
  const uint64_t likeMost = isOutward ? measure.outward : measure.inward;
  const auto others = static_cast<double>(measure.pairs() - likeMost);
  if (others > kMixed * static_cast<double>(measure.pairs())) {
    findings.add("orientation-mixed", place, counts);
  }
  if (insert > 0 && std::abs(insert - measure.insert) > kFarOff * measure.insert) {
    findings.add("insert-differs", place, sizes);
  }
}

// The longest mean length of the reads of a library's pairs.
double meanLength(const Survey& survey, std::size_t library) {
  double longest = 0;
  for (const ReadInput& input : survey.inputs) {
    if (input.library != static_cast<int>(library) || !input.isPaired || !input.isReadable)
      continue;
    longest = std::max(longest, input.stats.meanLength());
  }
  return longest;
}

void checkBigGaps(Survey& survey, std::size_t library, const Place& place) {
  const int insert = survey.libs[library].avg_ins;
  if (insert <= BIGGAPLEN) return;
  uint64_t gaps = 0;
  uint64_t bigGaps = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 1; j < scaffoldInfo[i].contigsSum; ++j) {
      ++gaps;
      const auto length = static_cast<int64_t>(scaffoldInfo[i].contigsInfo[j].frontGapSize);
      if (length >= BIGGAPLEN) ++bigGaps;
    }
  }
  if (gaps == 0) return;
  survey.findings.add(bigGaps == 0 ? Id("no-gap-big-enough") : Id("big-gaps-only"), place,
                      libraryText(library) + ": avg_ins " + std::to_string(insert) +
                          ", big-gap length " + std::to_string(BIGGAPLEN) + ", " +
                          shareText(bigGaps, gaps) + " of the gaps are that long");
}

void checkLibraries(Survey& survey) {
  for (std::size_t library = 0; library < survey.measures.size(); ++library) {
    if (!hasPairs(survey, library)) continue;
    const auto first =
        std::find_if(survey.inputs.begin(), survey.inputs.end(), [&](const ReadInput& input) {
          return input.isPaired && input.library == static_cast<int>(library);
        });
    const Place place{lib_file, first->lineA};
    const int insert = survey.libs[library].avg_ins;
    checkBigGaps(survey, library, place);
    if (insert > 0 && insert < meanLength(survey, library)) {
      survey.findings.add("insert-below-reads", place,
                          libraryText(library) + ": avg_ins is " + std::to_string(insert) +
                              ", the reads have " +
                              std::to_string(std::lround(meanLength(survey, library))) + " bases");
    }
    if (survey.measures[library].pairs() < kFewPairs) {
      survey.findings.add("pairs-unmeasured", place,
                          libraryText(library) + ": " +
                              std::to_string(survey.measures[library].pairs()) + " pairs");
    } else {
      checkOrientation(survey, library, place);
    }
  }
}

// How many reads of `searched` ones lie within reach of a gap if they are spread evenly.
double expectedFinds(const Survey& survey, uint64_t searched) {
  double reach = 0;
  for (const ReadInput& input : survey.inputs) {
    if (!input.isReadable) continue;
    const double length = input.stats.meanLength();
    reach =
        std::max({reach, length, input.isPaired ? 1.0 * survey.libs[input.library].avg_ins : 0});
  }
  const double near =
      static_cast<double>(survey.gapSum) * reach / static_cast<double>(survey.kmers);
  return static_cast<double>(searched) * std::min(near, 1.0);
}

bool canIndex() {
  return impossibleValues().empty() && Kmer >= 1 && initSize <= kMaxSlots;
}

}  // namespace

void checkPlacement(Survey& survey) {
  if (!survey.hasAssembly || !canIndex()) return;
  if (!countKmers(survey)) {
    survey.findings.add("nothing-indexed", {scaffold_file.empty() ? contig_file : scaffold_file},
                        "-L is " + std::to_string(CONTIGLEN) + ", -k " + std::to_string(Kmer));
    return;
  }
  const double indexed = buildIndex(survey);
  measurePairs(survey);
  checkLibraries(survey);
  const uint64_t searched = searchSample(survey);
  if (searched > 0 && survey.foundPerRead == 0 && survey.gapSum > 0 &&
      indexed * expectedFinds(survey, searched) >= kExpectedFinds) {
    survey.findings.add("nothing-found", {lib_file},
                        "none of " + std::to_string(searched) + " reads");
  }
}

}  // namespace velk::check
