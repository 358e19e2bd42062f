#include "run/foundStore.h"

#include <array>
#include <cmath>
#include <fstream>

#include "run/diskFile.h"
#include "run/resultNames.h"

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

namespace {

constexpr uint64_t kNativeMemory = uint64_t{64} << 20;  // bytes

}  // namespace

FoundStore::FoundStore(const ResultFolder& folder, const Assembly& assembly,
                       const std::vector<Library>& libraries, const OutputOptions& options,
                       bool isNative)
    : folder_(folder),
      assembly_(assembly),
      libraries_(libraries),
      outputs_(folder, assembly, libraries, options),
      foundReads_(std::make_unique<std::atomic<uint64_t>[]>(libraries.size())) {
  if (!isNative) return;
  native_ = std::make_unique<SpillSorter>(folder.partial("native.spill"), kNativeMemory);
}

void FoundStore::take(int, const FoundEntry& entry) {
  outputs_.take(entry);
  std::array<bool, 2> isFound{};
  for (const FoundPlace& place : entry.places) isFound[static_cast<std::size_t>(place.mate)] = true;
  foundReads_[entry.library] +=
      static_cast<uint64_t>(isFound[0]) + static_cast<uint64_t>(isFound[1]);
  if (native_ == nullptr) return;
  native_->add({entry.input, entry.record, 0},
               nativeRecords(entry, libraries_[entry.library], assembly_));
  for (const FoundPlace& place : entry.places) {
    outputs_.takeRecord(assembly_.gapInFront(place.scaffold, place.contigBehind));
  }
}

uint64_t FoundStore::foundReads() const {
  uint64_t sum = 0;
  for (std::size_t n = 0; n < libraries_.size(); ++n) sum += foundReads_[n];
  return sum;
}

void FoundStore::addShare(const std::string& folder, const Share& share) {
  outputs_.addShare(folder, share.library, share.items);
  if (native_ != nullptr) native_->addSaved(folder + "/" + kShareNativeName, 0);
  foundReads_[share.library] += share.found;
}

void FoundStore::writeShare(Share& share) {
  share.items = outputs_.writeShare(share.library);
  if (native_ != nullptr) native_->save(folder_.partial(kShareNativeName));
  share.found = foundReads_[share.library];
  share.spilledBytes = spilledBytes();
}

void FoundStore::writeResults() {
  outputs_.write();
  if (native_ != nullptr) writeNative();
}

void FoundStore::writeNative() {
  const std::string file = folder_.partial("native/found.fa");
  std::ofstream stream(file);
  native_->forEach([&](const SortKey&, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  });
  stream.close();
  if (!stream) failFile(file, "written");
  std::vector<uint64_t> ofGaps;
  for (std::size_t gap = 0; gap < assembly_.gaps().size(); ++gap) {
    ofGaps.push_back(outputs_.counts().records(gap));
  }
  writeNativeTables(folder_.partial(kNativeName), assembly_, ofGaps);
}

}  // namespace velk::run
