#include <fstream>
#include <iostream>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/outputFile.h"

namespace velk {
namespace {

constexpr std::size_t kWordLength = 9;    // ">scaffold"
constexpr std::size_t kLetterLength = 2;  // ">C"

bool contains(const std::string& line, const char* text) {
  return line.find(text) != std::string::npos;
}

std::string idOfFirstHeader(const std::string& line, const LineOfFile& where) {
  if (contains(line, "caffold")) {
    return delete_tail(idAfter(line, kWordLength, where, kHeaderError));
  }
  if (contains(line, "C") || contains(line, "c")) {
    return idAfter(line, kLetterLength, where, kHeaderError);
  }
  fatal(
      kHeaderError,
      "What is the label for scaffold? It't neither \"scaffold/Scaffold\" nor \"C/c\".\n");  // sic
}

// KEPT: narrower than the first header's rule (LoadScaffolds.LaterHeaderLooksForUpperCaseCOnly)
std::string idOfLaterHeader(const std::string& line, const LineOfFile& where) {
  if (contains(line, "C")) return idAfter(line, kLetterLength, where, kHeaderError);
  return delete_tail(idAfter(line, kWordLength, where, kHeaderError));
}

std::ofstream openSideFile(const std::string& file) {
  std::ofstream output;
  if (!openOutput(output, file)) fatal(kUserError, "Can't open output file: " + file + "\n");
  return output;
}

}  // namespace

std::string delete_tail(const std::string& str) {
  return str.substr(0, str.find_first_of(" \t"));
}

void LoadScaffolds(ScaffoldInfo* scaffoldInfo, std::string scaffoldFile, uint32_t scaffoldSum,
                   uint64_t& gapSum) {
  std::ifstream input(scaffoldFile);
  if (!input) fatal(kUserError, "Can't open input file: " + scaffoldFile + "\n");
  const std::string contigPosFile = scaffoldFile + ".contigPos";
  std::ofstream contigPosOutfile = openSideFile(contigPosFile);

  std::string scaffoldSeq;
  std::string scaffoldId;
  uint32_t scaffoldNum = 0;
  const auto split = [&] {
    if (scaffoldNum >= scaffoldSum) {
      fatal(kHeaderError, "[ERROR]: " + scaffoldFile +
                              ": more scaffolds than header lines, the first line must begin with "
                              ">\n");
    }
    splitScaffold(scaffoldInfo, scaffoldSeq, scaffoldId, scaffoldNum, gapSum, contigPosOutfile);
  };

  std::string line;
  std::getline(input, line);
  uint64_t lineNumber = 1;
  scaffoldId = idOfFirstHeader(line, {scaffoldFile, lineNumber});
  while (std::getline(input, line)) {
    ++lineNumber;
    // KEPT: a header that follows a header is sequence (LoadScaffolds.HeaderAfterHeaderIsSequence)
    if (line.starts_with('>') && !scaffoldSeq.empty()) {
      split();
      scaffoldSeq.clear();
      scaffoldId = idOfLaterHeader(line, {scaffoldFile, lineNumber});
      ++scaffoldNum;
    } else {
      scaffoldSeq += line;
    }
  }
  if (input.bad()) failReading(scaffoldFile);
  split();
  finishOutput(contigPosOutfile, contigPosFile);

  printContigs(scaffoldInfo, scaffoldSum, scaffoldFile);
  std::cerr << "Print contigs finished!\n";
  std::cerr << "Load scaffolds finished!\n";
}

void printContigs(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldNum,
                  const std::string& scaffoldFile) {
  const std::string contigFile = scaffoldFile + ".contig";
  std::ofstream output = openSideFile(contigFile);
  for (uint32_t i = 0; i < scaffoldNum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
      output << ">scaffold" << scaffoldInfo[i].scaffoldId << '_' << j << '\t' << contig.frontGapSize
             << '\n'
             << contig.contigSeq << '\n';
    }
  }
  finishOutput(output, contigFile);
}

}  // namespace velk
