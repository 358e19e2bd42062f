// Contigs as input: the headers say of which scaffold each is, and which gap follows it.
#include <algorithm>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/textInput.h"
#include "driver/velk.h"

namespace velk {
namespace {

std::string idOf(const std::string& header, const TextInput& input) {
  return scaffoldPart(idAfter(header, kScaffoldWord.size(), input, kInputError));
}

int gapLengthOf(const std::string& header) {
  const std::size_t tab = header.find('\t');
  if (tab == std::string::npos) {
    fatal(kInputError, "no contig before gap len, please check!\n");
  }
  return lenientInt(header.substr(tab + 1));
}

TextInput openContigs(const std::string& file) {
  TextInput input(file);
  if (!input.isOpen()) fatal(kInputError, "Fail to load file " + file + "\n");
  return input;
}

// The contigs of the model in the order in which their headers are met.
class ContigFiller {
 public:
  ContigFiller(ScaffoldInfo* scaffoldInfo, const ScaftigMap& scaftigNum)
      : scaffoldInfo_(scaffoldInfo), scaftigNum_(scaftigNum) {}

  void startContig(const std::string& header, const TextInput& input) {
    const std::string id = idOf(header, input);
    const int gapLength = gapLengthOf(header);
    if (contig_ == nullptr || id != id_) {
      id_ = id;
      // KEPT: a scaffold met again starts anew at its first contig
      // (ContigInput.ScatteredBlocksOverwriteEarlierOnes)
      contigIndex_ = 0;
    } else {
      ++contigIndex_;
    }
    ++headers_;
    contig_ = &contigInHand(input.file());
    contig_->readsInFrontGap = nullptr;
    contig_->frontGapSize = static_cast<uint64_t>(int64_t{gapLength});
    contig_->frontGapNum = contigIndex_ == 0 ? ~uint64_t{0} : nextGap_++;
    contig_->contigSeq.clear();
  }

  void addSequence(const std::string& line, const TextInput& input) {
    if (contig_ == nullptr) {
      fatal(kInputError, "[ERROR]: " + input.place() + ": sequence before the first header\n");
    }
    contig_->contigSeq += line;
    requireContigLength(contig_->contigSeq.size(), input.file(), id_, kInputError);
  }

  uint64_t headers() const { return headers_; }

 private:
  // The slot of the current contig. It exists unless the file has changed since it was counted.
  ContigInfo& contigInHand(const std::string& file) {
    const auto found = scaftigNum_.find(id_);
    if (found == scaftigNum_.end() || contigIndex_ >= scaffoldInfo_[found->second].contigsSum) {
      failChanged(file, kInputError);
    }
    return scaffoldInfo_[found->second].contigsInfo[contigIndex_];
  }

  ScaffoldInfo* scaffoldInfo_;
  const ScaftigMap& scaftigNum_;
  std::string id_;                // the current scaffold
  uint32_t contigIndex_ = 0;      // the current contig
  ContigInfo* contig_ = nullptr;  // the current one; null before the first header
  uint64_t nextGap_ = 0;          // number of the next gap, over all scaffolds
  uint64_t headers_ = 0;          // headers met
};

}  // namespace

void CountscaftigNum(const std::string& file, ScaftigMap& scaftigNum) {
  say("Start to count contig number\n");
  TextInput input = openContigs(file);
  for (std::string line; input.readLine(line);) {
    if (line.starts_with('>')) ++scaftigNum[idOf(line, input)];
  }
}

void contigtoScafInfo(const std::string& file, ScaffoldInfo* scaffoldInfo,
                      const ScaftigMap& scaftigNum) {
  TextInput input = openContigs(file);
  ContigFiller filler(scaffoldInfo, scaftigNum);
  for (std::string line; input.readLine(line);) {
    if (line.starts_with('>')) {
      filler.startContig(line, input);
    } else if (!line.empty()) {
      filler.addSequence(line, input);
    }
  }
  uint64_t counted = 0;
  for (std::size_t i = 0; i < scaftigNum.size(); ++i) counted += scaffoldInfo[i].contigsSum;
  if (filler.headers() != counted) failChanged(file, kInputError);
}

}  // namespace velk
