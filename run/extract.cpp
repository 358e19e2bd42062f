#include "run/extract.h"

#include <htslib/bgzf.h>
#include <htslib/hts_log.h>
#include <unistd.h>

#include <fcntl.h>
#include <algorithm>
#include <cstring>
#include <iterator>
#include <map>
#include <memory>
#include <string_view>

#include "run/diskFile.h"
#include "run/failure.h"
#include "run/fastqWriter.h"
#include "run/flanks.h"
#include "run/resultNames.h"
#include "run/tables.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

struct Closer {
  void operator()(BGZF* file) const { bgzf_close(file); }
};

// A block of a compressed file: where it begins in the file, and in its text.
struct Block {
  uint64_t start;
  uint64_t text;
};

// The blocks of a file, as bgzip lists them: the number of those behind the first, and each of
// them.
std::vector<Block> blocksOf(const std::string& file) {
  const Descriptor input(file, O_RDONLY);
  uint64_t size = 0;
  const std::string bytes = readDescriptor(input.get(), file);
  if (bytes.size() >= sizeof size) std::memcpy(&size, bytes.data(), sizeof size);
  if (bytes.size() < sizeof size || (bytes.size() - sizeof size) / sizeof(Block) != size) {
    throw Failure(Status::kFailed, file + " is no index of blocks, or is damaged");
  }
  std::vector<Block> blocks(size + 1);
  std::memcpy(blocks.data() + 1, bytes.data() + sizeof size, size * sizeof(Block));
  return blocks;
}

// A compressed file of the folder, read from any byte of its text.
class BlockReader {
 public:
  BlockReader(const std::string& file, const std::string& index)
      : file_(file), input_(bgzf_open(file.c_str(), "r")) {
    if (input_ == nullptr) failFile(file_, "opened");
    blocks_ = blocksOf(index);
  }

  std::string text(uint64_t from, uint64_t to) {
    std::string text(to - from, '\0');
    if (text.empty()) return text;
    const auto next = std::partition_point(blocks_.begin(), blocks_.end(),
                                           [&](const Block& block) { return block.text <= from; });
    const Block& block = *std::prev(next);
    const auto place = static_cast<int64_t>(block.start << 16 | (from - block.text));
    const bool isThere = bgzf_seek(input_.get(), place, SEEK_SET) == 0;
    const ssize_t got = isThere ? bgzf_read(input_.get(), text.data(), text.size()) : -1;
    if (got != static_cast<ssize_t>(text.size())) {
      throw Failure(Status::kFailed, file_ + " can't be read, or is damaged");
    }
    return text;
  }

 private:
  std::string file_;
  std::unique_ptr<BGZF, Closer> input_;
  std::vector<Block> blocks_;
};

// Takes the first line off.
std::string_view takeLine(std::string_view& text) {
  const std::size_t end = text.find('\n');
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(text.size(), end + 1));
  return line;
}

std::string recordText(std::string_view head, std::string_view bases, ExtractForm form) {
  const bool isFasta = form == ExtractForm::kFasta;
  std::string text(isFasta ? ">" : "@");
  text.append(head.substr(1)).append("\n").append(bases).append("\n");
  if (!isFasta) text.append("+\n").append(bases.size(), kUnknownQuality).append("\n");
  return text;
}

// A gap's reads as they are asked for.
std::string readsText(const std::string& fastq, ExtractForm form) {
  if (form == ExtractForm::kFastq) return fastq;
  std::string text;
  for (std::string_view rest = fastq; !rest.empty();) {
    const std::string_view head = takeLine(rest);
    text += recordText(head, takeLine(rest), form);
    takeLine(rest);
    takeLine(rest);
  }
  return text;
}

// A gap's flanks, their last and first bases.
std::string flanksText(const std::string& fasta, uint64_t bases, ExtractForm form) {
  std::string_view rest = fasta;
  const std::string_view frontHead = takeLine(rest);
  std::string_view front = takeLine(rest);
  const std::string_view behindHead = takeLine(rest);
  const std::string_view behind = takeLine(rest).substr(0, bases);
  front.remove_prefix(front.size() - std::min<uint64_t>(front.size(), bases));
  return recordText(frontHead, front, form) + recordText(behindHead, behind, form);
}

// The gaps that are asked for, each once, of a folder that has so many.
std::vector<uint64_t> gapsOf(const ExtractRequest& request, uint64_t count) {
  std::vector<uint64_t> gaps;
  std::vector<bool> isTaken(count);
  for (const GapRange& range : request.gaps) {
    if (range.last >= count) {
      throw Failure(Status::kUsage,
                    "there is no gap " + std::to_string(std::max(range.first, count)) + "; " +
                        request.folder + " has " + std::to_string(count) + ", numbered from 0");
    }
    for (uint64_t gap = range.first; gap <= range.last; ++gap) {
      if (!isTaken[gap]) gaps.push_back(gap);
      isTaken[gap] = true;
    }
  }
  return gaps;
}

// As bgzip does, to a file that messages call `output`.
void writePacked(const std::string& text, const std::string& made, const std::string& output) {
  std::unique_ptr<BGZF, Closer> file(bgzf_open(made.c_str(), "w"));
  if (file == nullptr) failFile(output, "opened");
  const bool isWritten =
      bgzf_write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  if (bgzf_close(file.release()) != 0 || !isWritten) failFile(output, "written");
}

void writeText(const std::string& text, const std::string& output) {
  if (output == "-") {
    writeDescriptor(STDOUT_FILENO, "standard output", text);
    return;
  }
  const bool isPacked = output.ends_with(".gz") || output.ends_with(".bgz");
  writeWhole(output, [&](int descriptor, const std::string& made) {
    isPacked ? writePacked(text, made, output) : writeDescriptor(descriptor, output, text);
  });
}

// The folder of a result.
class Result {
 public:
  // Throws Failure where it is none, or where a file that it lists is the output.
  Result(const std::string& folder, const std::string& output)
      : folder_(folder), sums_(sumsOfSummary(file(kSummaryName), resultForm().names)) {
    if (!isSummary(file(kSummaryName))) {
      throw Failure(Status::kFailed, folder + " holds no whole result of velk-run");
    }
    std::vector<std::string> files{file(kSummaryName)};
    for (const auto& [name, sum] : sums_) files.push_back(file(name));
    requireNoInput(output, files, "extract");
  }

  std::string file(const std::string& name) const { return folder_ + "/" + name; }

  // Returns the path of a file that leads to the places in others, none of which would show that
  // it is damaged. Throws Failure where it is not as the summary lists it.
  std::string index(const std::string& name) const {
    uint64_t bytes = 0;
    const auto sum = sums_.find(name);
    if (sum != sums_.end() && md5OfFile(file(name), bytes) != sum->second) {
      throw Failure(Status::kFailed, file(name) + " is not as velk-run wrote it");
    }
    return file(name);
  }

 private:
  std::string folder_;
  std::map<std::string, std::string> sums_;
};

}  // namespace

void extractReads(const ExtractRequest& request, const std::string& output) {
  hts_set_log_level(HTS_LOG_OFF);  // failures are reported here
  const Result result(request.folder, output);
  const GapIndex index(result.index("gaps.idx"));
  std::vector<uint64_t> gaps = gapsOf(request, index.gaps());
  if (request.form == ExtractForm::kBam) {
    std::sort(gaps.begin(), gaps.end());
    const bool isShort = exists(result.file("reads.bam.bai"));
    extractBam(result.file("reads.bam"), result.index(isShort ? "reads.bam.bai" : "reads.bam.csi"),
               index, gaps, output);
    return;
  }
  const auto reader = [&](const std::string& name) {
    return BlockReader(result.file(name), result.index(name + ".gzi"));
  };
  BlockReader flanks = reader("flanks.fa.gz");
  BlockReader pairs = reader("pairs.fq.gz");
  BlockReader singles = reader("singles.fq.gz");
  std::string text;
  for (const uint64_t gap : gaps) {
    const auto [from, to] = index.entriesOf(gap);
    if (request.flankBases > 0) {
      text += flanksText(flanks.text(from.flanks, to.flanks), request.flankBases, request.form);
    }
    if (request.part != ExtractPart::kSingles) {
      text += readsText(pairs.text(from.pairs, to.pairs), request.form);
    }
    if (request.part != ExtractPart::kPairs) {
      text += readsText(singles.text(from.singles, to.singles), request.form);
    }
  }
  writeText(text, output);
}

}  // namespace velk::run
