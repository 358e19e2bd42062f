// Scaffold FASTA. Input: a byte each for -L, -C and -r, then the file.
#include <string>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "driver/fatal.h"
#include "driver/velk.h"
#include "tests/contig/splitModel.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/files.h"

namespace velk::fuzz {
namespace {

struct Scaffold {
  std::string id;
  std::string sequence;
};

// What should be read of a file. Without a status it is loaded to its end.
struct Model {
  std::vector<Scaffold> scaffolds;
  uint32_t headers = 0;
  int status = kRanOn;
};

bool has(const std::string& line, const char* text) {
  return line.find(text) != std::string::npos;
}

// Takes the id out of a header that names it behind `dropped` characters; false when it is shorter.
bool takeId(const std::string& line, std::size_t dropped, bool endsAtBlank, std::string& id) {
  if (line.size() < dropped) return false;
  id = line.substr(dropped);
  if (endsAtBlank) id = id.substr(0, id.find_first_of(" \t"));
  return true;
}

bool takeFirstId(const std::string& line, std::string& id) {
  if (has(line, "caffold")) return takeId(line, 9, true, id);
  return (has(line, "C") || has(line, "c")) && takeId(line, 2, false, id);
}

bool takeLaterId(const std::string& line, std::string& id) {
  return has(line, "C") ? takeId(line, 2, false, id) : takeId(line, 9, true, id);
}

Model modelOf(std::string_view text) {
  Model model;
  std::vector<std::string> lines = linesOf(text);
  for (const std::string& line : lines) model.headers += line.starts_with('>') ? 1U : 0U;
  if (lines.empty()) lines.emplace_back();
  Scaffold inHand;
  bool isRead = takeFirstId(lines[0], inHand.id);
  for (std::size_t i = 1; isRead && i < lines.size(); ++i) {
    if (lines[i].starts_with('>') && !inHand.sequence.empty()) {
      model.scaffolds.push_back(inHand);
      inHand.sequence.clear();
      isRead = model.scaffolds.size() <= model.headers && takeLaterId(lines[i], inHand.id);
    } else {
      inHand.sequence += lines[i];
    }
  }
  model.scaffolds.push_back(inHand);
  if (!isRead || model.scaffolds.size() > model.headers) model.status = kHeaderError;
  return model;
}

void compareContigs(const test::PlainContigs& model, const ScaffoldInfo& info) {
  require(model.size() == info.contigsSum, "another number of contigs");
  for (std::size_t k = 0; k < model.size(); ++k) {
    const ContigInfo& contig = info.contigsInfo[k];
    require(contig.contigSeq == model[k].bases, "other bases of a contig");
    require(contig.frontGapNum == model[k].gapNum && contig.frontGapSize == model[k].gapSize,
            "another gap in front of a contig");
    require(contig.readsInFrontGap == nullptr, "reads in a gap");
  }
}

// Contigs and gap lengths, put together, are the scaffold.
void comparePutTogether(const Scaffold& scaffold, const ScaffoldInfo& info) {
  std::size_t at = std::min(scaffold.sequence.find_first_not_of("Nn"), scaffold.sequence.size());
  for (uint32_t k = 0; k < info.contigsSum; ++k) {
    const ContigInfo& contig = info.contigsInfo[k];
    at += contig.frontGapSize;
    require(at <= scaffold.sequence.size() &&
                scaffold.sequence.compare(at, contig.contigSeq.size(), contig.contigSeq) == 0,
            "the contigs do not lie where gaps and contigs before say");
    at += contig.contigSeq.size();
  }
}

std::string contigLines(const ScaffoldInfo& info) {
  std::string lines;
  for (uint32_t k = 0; k < info.contigsSum; ++k) {
    lines += ">scaffold" + info.scaffoldId + "_" + std::to_string(k) + "\t" +
             std::to_string(info.contigsInfo[k].frontGapSize) + "\n" +
             info.contigsInfo[k].contigSeq + "\n";
  }
  return lines;
}

void compareModel(const Model& model, uint64_t gaps, const std::string& file) {
  std::string positions;
  std::string contigs;
  uint64_t gapsBefore = 0;
  for (uint32_t i = 0; i < scaffoldSum; ++i) {
    const ScaffoldInfo& info = scaffoldInfo[i];
    if (i >= model.scaffolds.size()) {
      require(info.contigsSum == 0 && info.contigsInfo == nullptr, "a scaffold out of nothing");
      continue;
    }
    const Scaffold& scaffold = model.scaffolds[i];
    const test::SplitModel split = test::modelOfSplit(scaffold.sequence, scaffold.id,
                                                      {CONTIGLEN, CuttEdge, readLen}, gapsBefore);
    require(info.scaffoldId == scaffold.id, "another id");
    compareContigs(split.contigs, info);
    if (CuttEdge == 0) comparePutTogether(scaffold, info);
    gapsBefore = split.gaps;
    positions += split.positions;
    contigs += contigLines(info);
  }
  require(gaps == gapsBefore, "another number of gaps");
  require(contentOf(file + ".contigPos") == positions, "other contig positions");
  require(contentOf(file + ".contig") == contigs, "another contig file");
}

void compare(std::string_view text) {
  static const test::TemporaryFolder kFolder;
  static const std::string kName = kFolder.path("s.fa");
  writeFile(kName, text);
  const Model model = modelOf(text);
  Said said;
  uint64_t gaps = 0;
  const int status = statusOf([&] {
    InitialScaffold(scaffoldInfo, kName, scaffoldSum);
    LoadScaffolds(scaffoldInfo, kName, scaffoldSum, gaps);
  });
  require(scaffoldSum == model.headers, "another number of headers");
  require(status == model.status, "the scaffold file ends the run with another status");
  const std::string ending = said.errors().substr(said.errors().find('\n') + 1);
  if (status == kRanOn) {
    require(ending == "Print contigs finished!\nLoad scaffolds finished!\n", "other messages");
    compareModel(model, gaps, kName);
  } else {
    require(!ending.empty() && ending.ends_with('\n'), "no message");
  }
  releaseScaffolds();
}

}  // namespace

void tryInput(Input input) {
  CONTIGLEN = input.next() - 2;
  CuttEdge = input.next() % 16;
  readLen = input.next();
  compare(input.rest());
}

}  // namespace velk::fuzz
