#include "run/native.h"

#include <cmath>
#include <fstream>

#include "run/diskFile.h"

namespace velk::run {
namespace {

// A file that is written line by line.
class Table {
 public:
  explicit Table(const std::string& file) : file_(file), stream_(file) {
    if (!stream_) failFile(file_, "made");
  }

  std::ostream& line() { return stream_; }

  void finish() {
    stream_.close();
    if (!stream_) failFile(file_, "written");
  }

 private:
  std::string file_;
  std::ofstream stream_;
};

void writeContigs(const std::string& file, const Assembly& assembly) {
  Table table(file);
  const ScaffoldInfo* const model = assembly.model();
  for (std::size_t s = 0; s < assembly.scaffolds().size(); ++s) {
    for (uint32_t c = 0; c < model[s].contigsSum; ++c) {
      const ContigInfo& contig = model[s].contigsInfo[c];
      table.line() << ">scaffold" << model[s].scaffoldId << '_' << c << '\t' << contig.frontGapSize
                   << '\n'
                   << contig.bases() << '\n';
    }
  }
  table.finish();
}

void writePositions(const std::string& file, const Assembly& assembly) {
  Table table(file);
  const ScaffoldInfo* const model = assembly.model();
  for (std::size_t s = 0; s < assembly.scaffolds().size(); ++s) {
    const Scaffold& scaffold = assembly.scaffolds()[s];
    uint64_t shift = 0;  // by the placeholders in front
    const auto write = [&](std::size_t c, const ContigPlace& place) {
      table.line() << model[s].scaffoldId << '\t' << c << '\t' << place.start + shift << '\t'
                   << place.end + shift << '\n';
    };
    for (std::size_t c = 0; c < scaffold.contigs.size(); ++c) {
      if (c > 0) shift += assembly.gaps()[assembly.gapInFront(s, c)].lengthened;
      write(c, scaffold.contigs[c]);
    }
    if (scaffold.lastBase) write(scaffold.contigs.size(), *scaffold.lastBase);
  }
  table.finish();
}

void writeGaps(const std::string& file, const Assembly& assembly,
               const std::vector<uint64_t>& found) {
  Table table(file);
  const ScaffoldInfo* const model = assembly.model();
  for (std::size_t s = 0; s < assembly.scaffolds().size(); ++s) {
    const ScaffoldInfo& info = model[s];
    table.line() << '>' << info.scaffoldId << '\t' << info.contigsSum << '\t' << info.contigsSum - 1
                 << '\n';
    for (uint32_t c = 1; c < info.contigsSum; ++c) {
      const ContigInfo& contig = info.contigsInfo[c];
      table.line() << contig.frontGapNum << '\t' << contig.frontGapSize << '\t'
                   << found[assembly.gapInFront(s, c)] << '\t'
                   << info.contigsInfo[c - 1].bases().size() << '\t' << contig.bases().size()
                   << '\n';
    }
  }
  table.finish();
}

}  // namespace

std::string nativeRecords(const FoundEntry& entry, const Library& library,
                          const Assembly& assembly) {
  std::string text;
  for (const FoundPlace& place : entry.places) {
    const ScaffoldInfo& info = assembly.model()[place.scaffold];
    const ContigInfo& behind = info.contigsInfo[place.contigBehind];
    text += '>' + std::to_string(behind.frontGapNum) + '\t' + std::to_string(behind.frontGapSize) +
            '\t' + std::to_string(place.position) + '\t' + info.scaffoldId + '\t' +
            std::to_string(place.contigBehind - 1) + '\t' +
            std::to_string(std::lround(library.insert)) + '\n' + place.bases + '\n';
  }
  return text;
}

void writeNativeTables(const std::string& folder, const Assembly& assembly,
                       const std::vector<uint64_t>& found) {
  writeContigs(folder + "/scaffolds.fa.contig", assembly);
  writePositions(folder + "/scaffolds.fa.contigPos", assembly);
  writeGaps(folder + "/scaffolds.fa.gapsinfo", assembly, found);
}

}  // namespace velk::run
