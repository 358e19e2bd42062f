#include "run/closingLines.h"

#include <cmath>

#include "run/resultNames.h"
#include "run/terminal.h"

namespace velk::run {
namespace {

// What the files needed before they could be used, each kind with its number.
std::string fixedText(const Summary& summary, const AssemblyNotes& notes) {
  reads::Fixes ofReads;
  for (const InputFacts& input : summary.inputs) ofReads += input.fixes;
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

std::string lineOf(const LibraryFacts& facts) {
  std::string line = "  " + facts.library.name + ": found " + countText(facts.found) + " of " +
                     countText(facts.reads);
  if (facts.library.arePairs()) {
    line += ", insert size " + std::to_string(std::lround(facts.library.insert)) + " +- " +
            std::to_string(std::lround(facts.library.spread)) + ", " +
            nameOf(facts.library.orientation);
  }
  return line;
}

}  // namespace

std::vector<std::string> closingLines(const Summary& summary, const Assembly& assembly,
                                      const GapCounts& counts, const std::string& folder,
                                      double seconds) {
  uint64_t reads = 0;
  uint64_t found = 0;
  uint64_t withReads = 0;
  const uint64_t gaps = assembly.gaps().size();
  for (const LibraryFacts& library : summary.libraries) {
    reads += library.reads;
    found += library.found;
  }
  for (uint64_t gap = 0; gap < gaps; ++gap) {
    if (counts.belonging(gap) > 0) ++withReads;
  }
  std::vector<std::string> lines;
  lines.push_back("Found " + countText(found) + " of " + countText(reads) + " reads; " +
                  countText(withReads) + " of " + countText(gaps) + " gaps have reads.");
  for (const LibraryFacts& library : summary.libraries) lines.push_back(lineOf(library));
  if (const std::string fixed = fixedText(summary, assembly.notes()); !fixed.empty()) {
    lines.push_back("Fixed:" + fixed);
  }
  std::string names;
  for (const ResultFile& file : summary.files) names += " " + file.name;
  lines.push_back("Files in " + folder + ":" + names + " " + kSummaryName);
  lines.push_back("Time " + durationText(seconds) + ", peak memory " +
                  countText(summary.peakMemory >> 20) + " MiB");
  return lines;
}

}  // namespace velk::run
