#include "report/velkRun.h"

#include <algorithm>

#include "report/velkModel.h"
#include "report/velkReads.h"
#include "run/failure.h"

namespace velk::report {
namespace {

// Without names, each record is a fragment of its own.
class VelkReads : public GapReadSource {
 public:
  VelkReads(std::vector<PlacedRead> reads, std::vector<uint32_t> inserts)
      : reads_(std::move(reads)), inserts_(std::move(inserts)) {}

  GapReads readsOf(std::size_t gap) override {
    GapReads found;
    auto read = std::partition_point(reads_.begin(), reads_.end(),
                                     [&](const PlacedRead& one) { return one.gap < gap; });
    for (uint64_t n = 1; read != reads_.end() && read->gap == gap; ++read, ++n) {
      if (read->bases == 0) {
        ++found.withoutPlace;
        continue;
      }
      constexpr uint64_t kMix = 0x9E3779B97F4A7C15U;  // fragments are drawn in this order
      found.reads.push_back(
          {n * kMix, read->start, read->start + read->bases, libraryOf(read->insert), read->kind});
    }
    return found;
  }

 private:
  uint32_t libraryOf(uint32_t insert) const {
    const auto found = std::find(inserts_.begin(), inserts_.end(), insert);
    return static_cast<uint32_t>(found - inserts_.begin());
  }

  std::vector<PlacedRead> reads_;
  std::vector<uint32_t> inserts_;  // of the libraries
};

// The insert sizes that occur; single reads, which have none, come last.
std::vector<uint32_t> insertsOf(const std::vector<PlacedRead>& reads) {
  std::vector<uint32_t> inserts;
  for (const PlacedRead& read : reads) {
    if (std::find(inserts.begin(), inserts.end(), read.insert) == inserts.end()) {
      inserts.push_back(read.insert);
    }
  }
  std::sort(inserts.begin(), inserts.end(),
            [](uint32_t one, uint32_t other) { return one - 1 < other - 1; });
  return inserts;
}

LibraryData libraryOf(uint32_t insert) {
  LibraryData library;
  library.arePairs = insert > 0;
  library.kind = library.arePairs ? "pairs" : "single reads";
  library.name = library.arePairs ? "insert size " + std::to_string(insert) : library.kind;
  library.insert = insert;
  library.insertSource = "given";
  library.spread = kUsualSpread * insert;
  return library;
}

void addModel(const VelkModel& model, RunData& data) {
  data.assembly.scaffolds = model.scaffolds().size();
  for (const VelkScaffold& scaffold : model.scaffolds()) {
    data.scaffolds.push_back(scaffold.id);
    data.assembly.contigs += scaffold.contigs.size();
    data.assembly.bases += scaffold.places.length;
  }
  for (const VelkGap& gap : model.gaps()) {
    const VelkScaffold& scaffold = model.scaffolds()[gap.place.scaffold];
    const auto bases = [&](uint64_t contig) { return scaffold.contigs[contig].contigSeq.size(); };
    const auto from = static_cast<uint64_t>(static_cast<int64_t>(gap.place.start) + gap.shift);
    data.gaps.push_back({gap.place.scaffold,
                         from,
                         from + gap.place.length,
                         gap.place.length,
                         false,
                         bases(gap.place.contigBehind - 1UL),
                         bases(gap.place.contigBehind),
                         {},
                         0,
                         gap.number});
  }
}

// Counts the reads, of which a gap must have as many as its report says.
void count(const std::vector<PlacedRead>& reads, const std::vector<uint32_t>& inserts,
           const VelkModel& model, const VelkFiles& files, RunData& data) {
  data.counts.resize(data.gaps.size() * inserts.size() * run::kReadKinds);
  std::vector<uint64_t> ofGap(data.gaps.size());
  for (const PlacedRead& read : reads) {
    const auto library = static_cast<std::size_t>(
        std::find(inserts.begin(), inserts.end(), read.insert) - inserts.begin());
    ++data.counts[(read.gap * inserts.size() + library) * run::kReadKinds +
                  static_cast<std::size_t>(read.kind)];
    ++data.libraries[library].readsFound;
    ++ofGap[read.gap];
  }
  for (std::size_t gap = 0; gap < ofGap.size(); ++gap) {
    if (ofGap[gap] == model.gaps()[gap].reads) continue;
    throw run::Failure(run::Status::kFailed,
                       files.found + " has " + std::to_string(ofGap[gap]) + " reads of gap " +
                           std::to_string(data.gaps[gap].number) + ", and " + files.scaffolds +
                           ".gapsinfo says " + std::to_string(model.gaps()[gap].reads) +
                           ": they are not of one run, or not whole");
  }
}

}  // namespace

VelkRun readVelkRun(const VelkFiles& files) {
  const VelkModel model(files.scaffolds);
  PlacedReads placed = placeReads(files.found, model);
  const std::vector<uint32_t> inserts = insertsOf(placed.reads);
  RunData data;
  data.isOfVelk = true;
  data.sample = files.found.substr(files.found.rfind('/') + 1);
  data.assembly.name = files.scaffolds;
  data.settings.minIdentity = kUsualIdentity;
  data.readsFound = placed.reads.size();
  for (const uint32_t insert : inserts) data.libraries.push_back(libraryOf(insert));
  addModel(model, data);
  count(placed.reads, inserts, model, files, data);
  data.reach = std::move(placed.reach);
  return {std::move(data), std::make_unique<VelkReads>(std::move(placed.reads), inserts)};
}

}  // namespace velk::report
