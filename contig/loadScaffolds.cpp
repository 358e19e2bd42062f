// Scaffolds as input: read line by line, cut into contigs, and written to the two side files.
#include <fstream>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/outputFile.h"
#include "driver/textInput.h"

namespace velk {
namespace {

bool contains(const std::string& line, const char* text) {
  return line.find(text) != std::string::npos;
}

// The id in a header that names it behind ">scaffold".
std::string idAfterWord(const std::string& line, const TextInput& input) {
  return delete_tail(idAfter(line, kScaffoldWord.size(), input, kHeaderError));
}

// The id in a header that names it behind ">C"; nothing is cut at its end.
std::string idAfterLetter(const std::string& line, const TextInput& input) {
  return idAfter(line, kLetterWord.size(), input, kHeaderError);
}

std::string idOfFirstHeader(const std::string& line, const TextInput& input) {
  if (contains(line, "caffold")) return idAfterWord(line, input);
  if (contains(line, "C") || contains(line, "c")) return idAfterLetter(line, input);
  fatal(
      kHeaderError,
      "What is the label for scaffold? It't neither \"scaffold/Scaffold\" nor \"C/c\".\n");  // sic
}

// KEPT: narrower than the first header's rule (LoadScaffolds.LaterHeaderLooksForUpperCaseCOnly)
std::string idOfLaterHeader(const std::string& line, const TextInput& input) {
  return contains(line, "C") ? idAfterLetter(line, input) : idAfterWord(line, input);
}

void openSideFile(std::ofstream& output, const std::string& file) {
  if (!openOutput(output, file)) fatal(kUserError, "Can't open output file: " + file + "\n");
}

}  // namespace

std::string delete_tail(const std::string& str) {
  return str.substr(0, str.find_first_of(" \t"));
}

void readScaffolds(TextInput& input, ScaffoldInfo* scaffoldInfo, uint32_t scaffoldSum,
                   uint64_t& gapSum, std::ostream& positions) {
  std::string line;
  input.readLine(line);
  std::string scaffoldId = idOfFirstHeader(line, input);
  std::string scaffoldSeq;
  uint32_t scaffoldNum = 0;
  uint32_t headers = line.starts_with('>') ? 1 : 0;
  const auto split = [&] {
    if (scaffoldNum >= scaffoldSum) {
      fatal(kHeaderError, "[ERROR]: " + input.file() +
                              ": more scaffolds than header lines, the first line must begin with "
                              ">\n");
    }
    splitScaffold(scaffoldInfo, scaffoldSeq, scaffoldId, scaffoldNum, gapSum, positions);
  };
  while (input.readLine(line)) {
    if (line.starts_with('>')) ++headers;
    // KEPT: a header that follows a header is sequence (LoadScaffolds.HeaderAfterHeaderIsSequence)
    if (line.starts_with('>') && !scaffoldSeq.empty()) {
      split();
      scaffoldSeq.clear();
      scaffoldId = idOfLaterHeader(line, input);
      ++scaffoldNum;
    } else {
      scaffoldSeq += line;
    }
  }
  split();
  if (headers != scaffoldSum) failChanged(input.file(), kHeaderError);
}

// The file name is a copy because the function has always taken one.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
void LoadScaffolds(ScaffoldInfo* scaffoldInfo, std::string scaffoldFile, uint32_t scaffoldSum,
                   uint64_t& gapSum) {
  TextInput input(scaffoldFile);
  if (!input.isOpen()) fatal(kUserError, "Can't open input file: " + scaffoldFile + "\n");
  const std::string contigPosFile = contigPositionsFileOf(scaffoldFile);
  LocalOutput contigPosOutfile;
  openSideFile(contigPosOutfile, contigPosFile);
  readScaffolds(input, scaffoldInfo, scaffoldSum, gapSum, contigPosOutfile);
  finishOutput(contigPosOutfile, contigPosFile);

  printContigs(scaffoldInfo, scaffoldSum, scaffoldFile);
  say("Print contigs finished!\n");
  say("Load scaffolds finished!\n");
}

void printContigs(const ScaffoldInfo* scaffoldInfo, uint32_t scaffoldNum,
                  const std::string& scaffoldFile) {
  const std::string contigFile = contigFileOf(scaffoldFile);
  LocalOutput output;
  openSideFile(output, contigFile);
  for (uint32_t i = 0; i < scaffoldNum; ++i) {
    for (uint32_t j = 0; j < scaffoldInfo[i].contigsSum; ++j) {
      const ContigInfo& contig = scaffoldInfo[i].contigsInfo[j];
      output << kScaffoldWord << scaffoldInfo[i].scaffoldId << '_' << j << '\t'
             << contig.frontGapSize << '\n'
             << contig.contigSeq << '\n';
    }
  }
  finishOutput(output, contigFile);
}

}  // namespace velk
