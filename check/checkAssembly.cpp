// Checks of the assembly: the file's lines, and the scaffold model that velk makes of it.
#include <algorithm>
#include <iostream>
#include <map>
#include <ostream>

#include "check/headers.h"
#include "check/readFile.h"
#include "check/rehearsal.h"
#include "check/survey.h"
#include "contig/contig.h"
#include "contig/header.h"
#include "driver/velk.h"

namespace velk::check {
namespace {

constexpr double kPlaceholderShare = 0.5;  // of the gaps, from which on a length is suspicious
constexpr uint64_t kFewGaps = 5;           // among fewer, equal lengths may be chance
constexpr double kDroppedShare = 0.1;      // of the bases, from which on -L deserves a word

const std::string& assemblyFile() {
  return scaffold_file.empty() ? contig_file : scaffold_file;
}

// Loads the model as velk does, but for the side files.
void loadModel(Survey& survey) {
  if (!scaffold_file.empty()) {
    InitialScaffold(scaffoldInfo, scaffold_file, scaffoldSum);
    TextInput input(scaffold_file);
    std::ostream nowhere(nullptr);
    readScaffolds(input, scaffoldInfo, scaffoldSum, survey.gapSum, nowhere);
    return;
  }
  ScaftigMap counts;
  CountscaftigNum(contig_file, counts);
  InitialScaffold(scaffoldInfo, counts, survey.gapSum);
  contigtoScafInfo(contig_file, scaffoldInfo, counts);
  scaffoldSum = static_cast<uint32_t>(counts.size());
}

std::vector<std::string> idsOf(const std::vector<Header>& headers) {
  std::vector<std::string> ids;
  if (!scaffold_file.empty()) {
    for (uint32_t i = 0; i < scaffoldSum; ++i) ids.push_back(scaffoldInfo[i].scaffoldId);
    return ids;
  }
  for (const Header& header : headers) {
    ids.push_back(scaffoldPart(header.line.substr(kScaffoldWord.size())));
  }
  return ids;
}

void checkLetters(Survey& survey, const AssemblyLines& lines) {
  const std::string& file = assemblyFile();
  const auto add = [&](Id id, const Seen& seen, const std::string& text) {
    if (seen.count > 0) survey.findings.add(id, {file, seen.first}, text);
  };
  add("scaffold-empty", lines.swallowed,
      std::to_string(lines.swallowed.count) + " headers follow a header directly");
  add("contig-carriage-return", lines.returns,
      std::to_string(lines.returns.count) + " carriage returns");
  add("contig-lower-case", lines.lowerCase,
      shareText(lines.lowerCase.count, lines.bases) + " of the bases");
  add("contig-letters", lines.otherLetters,
      std::to_string(lines.otherLetters.count) + " such letters");
}

// Calls onGap(length) for every gap of the model, onContig(scaffold, contig) for every contig.
template <class OnGap, class OnContig>
void forEachPart(OnGap onGap, OnContig onContig) {
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
      if (j > 0) onGap(static_cast<int64_t>(contig.frontGapSize));
      onContig(i, contig);
    }
  }
}

void checkGaps(Survey& survey, const std::map<int64_t, uint64_t>& gaps) {
  Findings& findings = survey.findings;
  uint64_t sum = 0;
  uint64_t negative = 0;
  auto commonest = gaps.begin();
  for (auto it = gaps.begin(); it != gaps.end(); ++it) {
    sum += it->second;
    if (it->first < 0) negative += it->second;
    if (it->second > commonest->second) commonest = it;
  }
  if (sum == 0) {
    findings.add("no-gaps", {assemblyFile()}, std::to_string(scaffoldSum) + " scaffolds");
    return;
  }
  if (negative > 0) {
    findings.add("gap-negative", {assemblyFile()}, shareText(negative, sum) + " of the gaps");
  }
  if (sum >= kFewGaps &&
      static_cast<double>(commonest->second) >= kPlaceholderShare * static_cast<double>(sum)) {
    findings.add("gap-placeholder", {assemblyFile()},
                 shareText(commonest->second, sum) + " of the gaps have " +
                     std::to_string(commonest->first) + " bases");
  }
}

void checkContigs(Survey& survey, uint64_t basesOfFile) {
  std::map<int64_t, uint64_t> gaps;  // length, how often
  uint64_t bases = 0;                // of contigs that are searched in
  uint64_t ofModel = 0;              // of all contigs
  uint64_t longest = 0;
  uint64_t ofScaffold = 0;
  uint32_t scaffold = 0;
  forEachPart(
      [&](int64_t length) {
        ++gaps[length];
        ofScaffold += length > 0 ? static_cast<uint64_t>(length) : 0;
      },
      [&](uint32_t i, const ContigInfo& contig) {
        const uint64_t length = contig.contigSeq.size();
        if (i != scaffold) ofScaffold = 0;
        scaffold = i;
        survey.longestScaffold = std::max(survey.longestScaffold, ofScaffold += length);
        longest = std::max(longest, length);
        ofModel += length;
        if (static_cast<int64_t>(length) >= CONTIGLEN) bases += length;
      });
  checkGaps(survey, gaps);
  // Of a scaffold file they are not in the model any more.
  if (scaffold_file.empty()) basesOfFile = ofModel;
  const uint64_t dropped = basesOfFile > bases ? basesOfFile - bases : 0;
  if (CONTIGLEN > 0 && bases > 0 && CuttEdge <= 0 &&
      static_cast<double>(dropped) > kDroppedShare * static_cast<double>(basesOfFile)) {
    survey.findings.add("cutoff-drops-contigs", {assemblyFile()},
                        shareText(dropped, basesOfFile) + " of the bases");
  }
  const bool cutsNone = int64_t{2} * (int64_t{readLen} + CuttEdge) > static_cast<int64_t>(longest);
  if (CuttEdge > 0 && (scaffold_file.empty() || cutsNone)) {
    survey.findings.add("edge-cut-no-effect", {}, "-C " + std::to_string(CuttEdge));
  }
}

void checkEmptyScaffolds(Survey& survey) {
  uint64_t empty = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    if (scaffoldInfo[i].contigsSum == 0 && scaffoldInfo[i].contigsInfo != nullptr) ++empty;
  }
  if (empty == 0) return;
  survey.findings.add("scaffold-all-n", {assemblyFile()}, std::to_string(empty) + " scaffolds");
}

bool checkFromOutside(Survey& survey) {
  const FileFacts facts = factsOf(assemblyFile());
  if (!facts.canOpen || !facts.isRegular) {
    survey.findings.add("assembly-unreadable", {assemblyFile()},
                        facts.canOpen ? "no regular file" : facts.reason);
    return false;
  }
  if (facts.packing != Packing::kPlain) {
    survey.findings.add("assembly-compressed", {assemblyFile()},
                        facts.packing == Packing::kGzip ? "gzip" : facts.method);
    return false;
  }
  return true;
}

}  // namespace

void checkAssembly(Survey& survey) {
  if (assemblyFile().empty() || !checkFromOutside(survey)) return;
  AssemblyLines lines;
  try {
    lines = readAssemblyLines(assemblyFile(), !scaffold_file.empty());
    checkLetters(survey, lines);
    loadModel(survey);
  } catch (const Refusal& refusal) {
    survey.findings.add("assembly-refused", {assemblyFile()}, "\"" + refusal.message + "\"");
    return;
  }
  survey.hasAssembly = true;
  checkIds(survey, assemblyFile(), lines.headers, idsOf(lines.headers));
  checkEmptyScaffolds(survey);
  checkContigs(survey, lines.bases);
}

}  // namespace velk::check
