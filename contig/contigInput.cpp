#include <fstream>
#include <iostream>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/velk.h"

namespace velk {
namespace {

constexpr std::size_t kWordLength = 9;  // ">scaffold"

// The scaffold id of a header: from the tenth character up to the first '_' behind it.
std::string idOf(const std::string& header, const LineOfFile& where) {
  const std::string rest = idAfter(header, kWordLength, where, kInputError);
  return rest.substr(0, rest.find('_'));
}

int gapLengthOf(const std::string& header) {
  const std::size_t tab = header.find('\t');
  if (tab == std::string::npos) {
    fatal(kInputError, "no contig before gap len, please check!\n");
  }
  return lenientInt(header.substr(tab + 1));
}

// Calls onHeader(line, where) for every header line and onSequence(line, where) for every other
// line that is not empty.
template <class OnHeader, class OnSequence>
void forEachLine(std::ifstream& input, const std::string& file, OnHeader onHeader,
                 OnSequence onSequence) {
  uint64_t number = 0;
  for (std::string line; std::getline(input, line);) {
    const LineOfFile where{file, ++number};
    if (line.starts_with('>')) {
      onHeader(line, where);
    } else if (!line.empty()) {
      onSequence(line, where);
    }
  }
  if (input.bad()) failReading(file);
}

// The contigs of the model in the order in which their headers are met.
class ContigFiller {
 public:
  ContigFiller(ScaffoldInfo* scaffoldInfo, const ScaftigMap& scaftigNum)
      : scaffoldInfo_(scaffoldInfo), scaftigNum_(scaftigNum) {}

  void startContig(const std::string& header, const LineOfFile& where) {
    const std::string id = idOf(header, where);
    const int gapLength = gapLengthOf(header);
    if (contig_ == nullptr || id != id_) {
      id_ = id;
      // KEPT: a scaffold met again starts anew at its first contig
      // (ContigInput.ScatteredBlocksOverwriteEarlierOnes)
      contigIndex_ = 0;
    } else {
      ++contigIndex_;
    }
    contig_ = &contigInHand(where.file);
    contig_->readsInFrontGap = nullptr;
    contig_->frontGapSize = static_cast<uint64_t>(int64_t{gapLength});
    contig_->frontGapNum = contigIndex_ == 0 ? ~uint64_t{0} : nextGap_++;
    contig_->contigSeq.clear();
  }

  void addSequence(const std::string& line, const LineOfFile& where) {
    if (contig_ == nullptr) {
      fatal(kInputError, "[ERROR]: " + where.file + ", line " + std::to_string(where.number) +
                             ": sequence before the first header\n");
    }
    contig_->contigSeq += line;
    requireContigLength(contig_->contigSeq.size(), where.file, id_, kInputError);
  }

 private:
  // The slot of the contig in hand. It exists unless the file has changed since it was counted.
  ContigInfo& contigInHand(const std::string& file) {
    const auto found = scaftigNum_.find(id_);
    if (found == scaftigNum_.end() || contigIndex_ >= scaffoldInfo_[found->second].contigsSum) {
      fatal(kInputError, "[ERROR]: " + file + " changed while it was read\n");
    }
    return scaffoldInfo_[found->second].contigsInfo[contigIndex_];
  }

  ScaffoldInfo* scaffoldInfo_;
  const ScaftigMap& scaftigNum_;
  std::string id_;                // scaffold in hand
  uint32_t contigIndex_ = 0;      // contig in hand
  ContigInfo* contig_ = nullptr;  // contig in hand; null before the first header
  uint64_t nextGap_ = 0;          // number of the next gap, over all scaffolds
};

}  // namespace

void CountscaftigNum(const std::string& file, ScaftigMap& scaftigNum) {
  std::cerr << "Start to count contig number\n";
  std::ifstream input(file);
  if (!input) fatal(kInputError, "Fail to load file " + file + "\n");
  forEachLine(
      input, file,
      [&](const std::string& line, const LineOfFile& where) { ++scaftigNum[idOf(line, where)]; },
      [](const std::string&, const LineOfFile&) {});
}

void contigtoScafInfo(const std::string& file, ScaffoldInfo* scaffoldInfo,
                      const ScaftigMap& scaftigNum) {
  std::ifstream input(file);
  if (!input) fatal(kInputError, "Fail to load file " + file + "\n");
  ContigFiller filler(scaffoldInfo, scaftigNum);
  forEachLine(
      input, file,
      [&](const std::string& line, const LineOfFile& where) { filler.startContig(line, where); },
      [&](const std::string& line, const LineOfFile& where) { filler.addSequence(line, where); });
}

}  // namespace velk
