// Contig FASTA and its headers. Input: the file.
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "driver/fatal.h"
#include "tests/fuzz/fuzz.h"

namespace velk::fuzz {
namespace {

struct Contig {
  std::string bases;
  uint64_t gapNum = 0;
  uint64_t gapSize = 0;
};

// What should be read of a file.
struct Model {
  std::map<std::string, std::vector<Contig>> scaffolds;
  int status = kRanOn;
};

constexpr std::size_t kDropped = 9;  // characters in front of an id

std::string idOf(const std::string& header) {
  return header.substr(kDropped, header.find('_', kDropped) - kDropped);
}

// Makes place for all contigs. Returns false when a header is too short.
bool count(const std::vector<std::string>& lines, Model& model) {
  for (const std::string& line : lines) {
    if (!line.starts_with('>')) continue;
    if (line.size() < kDropped) return false;
    model.scaffolds[idOf(line)].emplace_back();
  }
  return true;
}

// Fills the places, the contigs of a block one after the other from the scaffold's first on.
bool fill(const std::vector<std::string>& lines, Model& model) {
  std::vector<Contig>* scaffold = nullptr;
  std::size_t index = 0;
  uint64_t gaps = 0;
  for (const std::string& line : lines) {
    if (line.starts_with('>')) {
      const std::size_t tab = line.find('\t');
      if (tab == std::string::npos) return false;
      std::vector<Contig>* const named = &model.scaffolds[idOf(line)];
      index = named == scaffold ? index + 1 : 0;
      scaffold = named;
      const int64_t gapSize = intIn(line.substr(tab + 1));
      scaffold->at(index) = {"", index == 0 ? ~uint64_t{0} : gaps++,
                             static_cast<uint64_t>(gapSize)};
    } else if (!line.empty()) {
      if (scaffold == nullptr) return false;
      scaffold->at(index).bases += line;
    }
  }
  return true;
}

Model modelOf(std::string_view text) {
  Model model;
  const std::vector<std::string> lines = linesOf(text);
  if (!count(lines, model) || !fill(lines, model)) model.status = kInputError;
  return model;
}

void compareModel(const Model& model, uint64_t gapSum) {
  uint32_t i = 0;
  uint64_t gaps = 0;
  for (const auto& [id, contigs] : model.scaffolds) {
    const ScaffoldInfo& info = scaffoldInfo[i++];
    require(info.scaffoldId == id, "another id");
    require(info.contigsSum == contigs.size(), "another number of contigs");
    for (std::size_t k = 0; k < contigs.size(); ++k) {
      const ContigInfo& contig = info.contigsInfo[k];
      require(contig.contigSeq == contigs[k].bases, "other bases of a contig");
      require(contig.frontGapNum == contigs[k].gapNum && contig.frontGapSize == contigs[k].gapSize,
              "another gap in front of a contig");
    }
    gaps += contigs.size() - 1;
  }
  require(gapSum == gaps, "another number of gaps");
}

void compare(std::string_view text) {
  static const MemoryFile kFile;
  kFile.fill(text);
  const Model model = modelOf(text);
  Said said;
  ScaftigMap counts;
  uint64_t gapSum = 0;
  const int status = statusOf([&] {
    CountscaftigNum(kFile.name(), counts);
    InitialScaffold(scaffoldInfo, counts, gapSum);
    scaffoldSum = static_cast<uint32_t>(counts.size());
    contigtoScafInfo(kFile.name(), scaffoldInfo, counts);
  });
  require(status == model.status, "the contig file ends the run with another status");
  if (status == kRanOn) {
    require(scaffoldSum == model.scaffolds.size(), "another number of scaffolds");
    require(said.errors() == "Start to count contig number\nScaffold Initialization finished!\n",
            "other messages");
    compareModel(model, gapSum);
  } else {
    const std::string message = said.errors();
    require(message.find(", please check!\n") != std::string::npos ||
                message.find("[ERROR]: ") != std::string::npos,
            "no message");
  }
  releaseScaffolds();
}

}  // namespace

void tryInput(Input input) {
  compare(input.rest());
}

}  // namespace velk::fuzz
