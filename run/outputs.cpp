#include "run/outputs.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <future>
#include <optional>

#include "run/alignmentRecords.h"
#include "run/bam.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/flanks.h"
#include "run/layReads.h"
#include "run/resultNames.h"
#include "run/tables.h"

namespace velk::run {
namespace {

// How the memory is shared out.
constexpr double kShareOfRecords = 0.55;
constexpr double kShareOfGapReads = 0.35;
constexpr double kShareOfNames = 0.1;

constexpr uint64_t kRecordsOfEntry = 16;  // at most, as places among the records of a BAM file

uint64_t share(uint64_t memory, double part) {
  return static_cast<uint64_t>(static_cast<double>(memory) * part);
}

// By place, records without one last.
SortKey keyOf(const OutRecord& record, uint64_t number) {
  const auto scaffold = static_cast<uint32_t>(record.scaffold);
  const auto position = static_cast<uint32_t>(record.position + 1);
  return {uint64_t{scaffold} << 32 | position, record.input,
          record.record * kRecordsOfEntry + number};
}

// Whether a read at a gap belongs to it, by itself.
bool belongs(const GapRead& read) {
  return read.isFound && read.certainty != Certainty::kContained;
}

// Which of the reads at one gap, one or both of an entry, are written for it.
std::optional<Written> writtenOf(const GapRead* first, const GapRead* second, bool withAnchors) {
  const bool isFirst = first != nullptr && belongs(*first);
  const bool isSecond = second != nullptr && belongs(*second);
  if (!isFirst && !isSecond) return std::nullopt;
  const auto goesAlong = [&](const GapRead* read) {
    return withAnchors && read != nullptr && !read->isFound;
  };
  const bool hasFirst = isFirst || goesAlong(first);
  const bool hasSecond = isSecond || goesAlong(second);
  if (hasFirst && hasSecond) return Written::kBoth;
  return hasFirst ? Written::kFirst : Written::kSecond;
}

// How far from a gap its reads lie, and the other reads of their pairs; one that ends where the gap
// begins is within reach, too.
uint64_t reachOf(const std::vector<Library>& libraries) {
  double longest = 0;
  for (const Library& library : libraries) {
    longest = std::max(longest, library.insert + kDeviations * library.spread);
  }
  return static_cast<uint64_t>(std::llround(longest)) + 1;
}

std::vector<std::string> namesOf(const std::vector<Library>& libraries) {
  std::vector<std::string> names;
  names.reserve(libraries.size());
  for (const Library& library : libraries) names.push_back(library.name);
  return names;
}

}  // namespace

Outputs::Outputs(const ResultFolder& folder, const Assembly& assembly,
                 const std::vector<Library>& libraries, const OutputOptions& options)
    : folder_(folder),
      assembly_(assembly),
      libraries_(libraries),
      options_(options),
      records_(folder.partial("records.spill"), share(options.memory, kShareOfRecords)),
      gapReads_(folder.partial("gaps.spill"), share(options.memory, kShareOfGapReads)),
      clashes_(libraries, folder.partial("names.spill"), share(options.memory, kShareOfNames)),
      counts_(assembly.gaps().size(), libraries.size()),
      evidence_(assembly.gaps().size(), namesOf(libraries)) {}

void Outputs::take(const FoundEntry& entry) {
  const Library& library = libraries_[entry.library];
  const std::vector<OutRecord> ofEntry =
      alignmentRecords(entry, library, assembly_, options_.mapCut);
  for (std::size_t n = 0; n < ofEntry.size(); ++n) {
    records_.add(keyOf(ofEntry[n], n), encodeBam(ofEntry[n], library.name));
  }
  noteReaches(assembly_, ofEntry, evidence_);
  clashes_.add(entry.library, entry.texts[0].name);
  takeForGaps(entry, ofEntry);
}

void Outputs::takeForGaps(const FoundEntry& entry, const std::vector<OutRecord>& records) {
  const std::vector<GapRead> atGaps = readsOfGaps(records);
  std::array<bool, 2> isFound{};
  for (auto read = atGaps.begin(); read != atGaps.end();) {
    std::array<const GapRead*, 2> mates{};
    const int64_t gap = read->gap;
    for (; read != atGaps.end() && read->gap == gap; ++read) {
      const auto mate = static_cast<std::size_t>(read->mate);
      mates[mate] = &*read;
      isFound[mate] = isFound[mate] || read->isFound;
      counts_.add(*read, entry.library);
    }
    if (const auto written = writtenOf(mates[0], mates[1], options_.areAnchorsWritten)) {
      gapReads_.add({static_cast<uint64_t>(gap), entry.input, entry.record},
                    encodeFastq(entry, *written));
    }
  }
  reads_ += static_cast<uint64_t>(isFound[0]) + static_cast<uint64_t>(isFound[1]);
}

uint64_t Outputs::spilledBytes() const {
  return records_.spilledBytes() + gapReads_.spilledBytes();
}

void Outputs::addShare(const std::string& share, uint64_t library, const ShareItems& items) {
  const auto file = [&](const char* name) { return share + "/" + name; };
  records_.addSaved(file(kShareRecordsName), items.records);
  gapReads_.addSaved(file(kShareReadsName), items.gapReads);
  clashes_.addSaved(file(kShareNamesName), items.names);
  const std::string ofGaps = file(kShareCountsName);
  counts_.addEncoded(readFile(ofGaps), library, ofGaps);
  const std::string ofEvidence = file(kShareEvidenceName);
  const Evidence ofShare = Evidence::parse(readFile(ofEvidence), ofEvidence);
  if (ofShare.gaps() != evidence_.gaps() || ofShare.libraries() != evidence_.libraries()) {
    throw Failure(Status::kFailed, ofEvidence + " is of other gaps or libraries than the plan's");
  }
  evidence_ += ofShare;
}

ShareItems Outputs::writeShare(uint64_t library) {
  records_.save(folder_.partial(kShareRecordsName));
  gapReads_.save(folder_.partial(kShareReadsName));
  clashes_.save(folder_.partial(kShareNamesName));
  writeFile(folder_.partial(kShareCountsName), counts_.encoded(library));
  writeFile(folder_.partial(kShareEvidenceName), evidence_.text());
  return {records_.items(), gapReads_.items(), clashes_.names()};
}

void Outputs::write() {
  clashes_.find();
  // Both at once, if there are threads for it.
  const auto when = options_.threads > 1 ? std::launch::async : std::launch::deferred;
  std::future<void> bam = std::async(when, [this] { writeBam(); });
  const std::vector<TextPlace> texts = writeFastq();
  bam.get();
  writeIndex(texts, writeFlanks());
  writeFile(folder_.partial("gaps.tsv"), gapTable(assembly_, libraries_, counts_));
  writeFile(folder_.partial("gaps.bed"), gapBed(assembly_, counts_));
  writeFile(folder_.partial("evidence.tsv"), evidence_.text());
  writeFile(folder_.partial("inserts.tsv"), insertTable(libraries_));
}

void Outputs::writeBam() {
  const bool hasLongIndex = needsLongIndex(assembly_);
  BamWriter bam(folder_.partial("reads.bam"),
                folder_.partial(hasLongIndex ? "reads.bam.csi" : "reads.bam.bai"),
                bamHeader(assembly_, libraries_, options_.names), hasLongIndex, helpers());
  records_.forEach([&](const SortKey&, std::string_view bytes) {
    const BamName name = bamNameOf(bytes);
    bam.write(bytes, clashes_.prefixOf(name.library, name.name));
  });
  bam.close();
}

// Returns where each gap's reads begin, and at last where they end.
std::vector<TextPlace> Outputs::writeFastq() {
  BgzipWriter pairs(folder_.partial("pairs.fq.gz"), folder_.partial("pairs.fq.gz.gzi"), helpers());
  BgzipWriter singles(folder_.partial("singles.fq.gz"), folder_.partial("singles.fq.gz.gzi"),
                      helpers());
  FastqWriter fastq(pairs, singles, clashes_, assembly_.gaps().size());
  gapReads_.forEach(
      [&](const SortKey& key, std::string_view encoded) { fastq.write(key.first, encoded); });
  std::vector<TextPlace> places = fastq.finish();
  pairs.close();
  singles.close();
  return places;
}

// Returns where each gap's flanks begin, and at last where they end.
std::vector<uint64_t> Outputs::writeFlanks() {
  BgzipWriter flanks(folder_.partial("flanks.fa.gz"), folder_.partial("flanks.fa.gz.gzi"),
                     helpers());
  std::vector<uint64_t> places;
  for (uint64_t gap = 0; gap < assembly_.gaps().size(); ++gap) {
    places.push_back(flanks.bytes());
    flanks.write(flanksOf(assembly_, gap));
  }
  places.push_back(flanks.bytes());
  flanks.close();
  return places;
}

void Outputs::writeIndex(const std::vector<TextPlace>& texts, const std::vector<uint64_t>& flanks) {
  std::vector<GapEntry> entries;
  for (uint64_t n = 0; n < texts.size(); ++n) {
    GapEntry entry{texts[n].pairs, texts[n].singles, flanks[n], 0, 0, 0};
    if (n < assembly_.gaps().size()) {
      const Gap& gap = assembly_.gaps()[n];
      entry.start = gap.start;
      entry.end = gap.end;
      entry.scaffold = gap.scaffold;
    }
    entries.push_back(entry);
  }
  writeFile(folder_.partial("gaps.idx"), gapIndexText(entries, reachOf(libraries_)));
}

}  // namespace velk::run
