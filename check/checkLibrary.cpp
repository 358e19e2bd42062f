// Checks of the library file: its lines, its sections, and what velk makes of them.
#include <algorithm>
#include <cstdlib>

#include "check/libraryLines.h"
#include "check/readFile.h"
#include "check/rehearsal.h"
#include "check/survey.h"
#include "driver/velk.h"
#include "placement/Read2Scaf.h"

namespace velk::check {
namespace {

// Makes the inputs of library i in the order in which velk streams them.
void listInputs(Survey& survey, int i, const Section& section) {
  const Lib& lib = survey.libs[i];
  const auto add = [&](const std::string& a, uint64_t lineA, const std::string& b, uint64_t lineB,
                       bool isPaired) {
    ReadInput input;
    input.library = i;
    input.fileA = a;
    input.fileB = b;
    input.lineA = lineA;
    input.lineB = lineB;
    input.isPaired = isPaired;
    survey.inputs.push_back(input);
  };
  for (std::size_t j = 0; j < lib.pfilenum; ++j) {
    const Pair& pair = lib.pairs[j];
    add(pair.read1file, section.firstMates[j], pair.read2file, section.secondMates[j], true);
  }
  for (std::size_t j = 0; j < lib.s2filenum; ++j) {
    add(lib.single2[j].readfile, section.interleaved[j], "", 0, true);
  }
  for (std::size_t j = 0; j < lib.sfilenum; ++j) {
    add(lib.single[j].readfile, section.singles[j], "", 0, false);
  }
  for (std::size_t j = 0; j < lib.qfilenum; ++j) {
    add(lib.singlequal[j].readfile, section.singlesQ[j], "", 0, false);
  }
}

void checkInsert(Survey& survey, const Lib& lib, const Section& section) {
  Findings& findings = survey.findings;
  const std::string text = "avg_ins is " + std::to_string(lib.avg_ins);
  if (section.inserts.size() > 1) {
    findings.add("insert-repeated", {lib_file, section.inserts[1]},
                 "first given in line " + std::to_string(section.inserts[0]));
  }
  if (!section.hasPairs()) return;
  if (section.inserts.empty()) {
    findings.add("insert-missing", {lib_file, section.line}, "the section has no avg_ins");
  } else if (lib.avg_ins == 0) {
    findings.add("insert-zero", {lib_file, section.inserts.back()}, text);
  } else if (lib.avg_ins < 0) {
    findings.add("insert-negative", {lib_file, section.inserts.back()}, text);
  }
  const bool pointsOutwards = lib.avg_ins > kLongestShortInsert;
  if (section.reverse != 0 && lib.avg_ins > 0 && (lib.reverse != 0) != pointsOutwards) {
    findings.add("reverse-ignored", {lib_file, section.reverse},
                 "reverse_seq is " + std::to_string(lib.reverse) + ", but " + text);
  }
}

void checkSection(Survey& survey, int i, const Section& section) {
  const Lib& lib = survey.libs[i];
  if (!section.hasFiles()) {
    survey.findings.add("section-without-files", {lib_file, section.line},
                        "library " + std::to_string(i + 1));
    return;
  }
  for (std::size_t j = 0; j < section.firstMates.size(); ++j) {
    if (section.secondMates[j] != 0) continue;
    survey.findings.add("second-missing", {lib_file, section.firstMates[j]},
                        "no q2 or f2 follows " + lib.pairs[j].read1file);
  }
  checkInsert(survey, lib, section);
}

// Whether avg_ins lines of libraries without pairs raise the big-gap length.
void checkInsertsOfSingles(Survey& survey, const std::vector<Section>& sections) {
  int ofPairs = 0;
  bool largePairs = false;
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const int insert = survey.libs[i].avg_ins;
    if (!sections[i].hasPairs()) continue;
    if (insert < MINLARGEINSERT) ofPairs = std::max(ofPairs, insert);
    largePairs = largePairs || insert > readLen + ofPairs;
  }
  for (std::size_t i = 0; i < sections.size(); ++i) {
    const int insert = survey.libs[i].avg_ins;
    if (sections[i].hasPairs() || insert >= MINLARGEINSERT || insert <= ofPairs || !largePairs) {
      continue;
    }
    survey.findings.add("insert-of-singles", {lib_file, sections[i].inserts.back()},
                        "avg_ins is " + std::to_string(insert) + ", the big-gap length " +
                            std::to_string(BIGGAPLEN));
  }
}

void checkRepeatedFiles(Survey& survey) {
  struct Named {
    const std::string& file;
    uint64_t line;
  };
  std::vector<Named> seen;
  const auto look = [&](const std::string& file, uint64_t line) {
    const auto before = std::find_if(
        seen.begin(), seen.end(), [&](const Named& named) { return isSameFile(named.file, file); });
    if (before != seen.end()) {
      survey.findings.add("file-repeated", {lib_file, line},
                          file + " is named in line " + std::to_string(before->line) + ", too");
    } else {
      seen.push_back({file, line});
    }
  };
  for (const ReadInput& input : survey.inputs) {
    look(input.fileA, input.lineA);
    if (!input.fileB.empty()) look(input.fileB, input.lineB);
  }
}

}  // namespace

void checkLibrary(Survey& survey) {
  if (lib_file.empty()) return;
  const FileFacts facts = factsOf(lib_file);
  if (!facts.canOpen) {
    survey.findings.add("library-unreadable", {lib_file}, facts.reason);
    return;
  }
  if (!facts.isRegular) {
    survey.findings.add("library-unreadable", {lib_file},
                        "velk-check looks at regular files only, velk reads pipes as well");
    return;
  }
  std::vector<Section> sections;
  try {
    sections = checkLibraryLines(survey);
    Loadlib(lib_file, survey.libs, survey.libSum);
  } catch (const Refusal& refusal) {
    survey.findings.add("library-unreadable", {lib_file}, refusal.message);
    return;
  }
  survey.measures.resize(sections.size());
  for (std::size_t i = 0; i < sections.size(); ++i) {
    checkSection(survey, static_cast<int>(i), sections[i]);
    listInputs(survey, static_cast<int>(i), sections[i]);
  }
  if (survey.inputs.empty()) {
    survey.findings.add("library-empty", {lib_file},
                        std::to_string(sections.size()) + " [LIB] sections");
  }
  checkInsertsOfSingles(survey, sections);
  checkRepeatedFiles(survey);
}

}  // namespace velk::check
