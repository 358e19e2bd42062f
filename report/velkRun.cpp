#include "report/velkRun.h"

#include <algorithm>
#include <cmath>

#include "report/lineReader.h"
#include "report/velkModel.h"
#include "run/failure.h"
#include "run/flanks.h"
#include "run/library.h"
#include "run/placeCheck.h"

namespace velk::report {
namespace {

using run::Certainty;
using run::Stretch;

constexpr double kUsualOverlap = 0.3;  // -O

ReadKind kindOf(Certainty certainty) {
  switch (certainty) {
    case Certainty::kExact:
      return ReadKind::kExact;
    case Certainty::kContained:
      return ReadKind::kContained;
    case Certainty::kEstimate:
      break;
  }
  return ReadKind::kEstimate;
}

// A record of the reads found, as its header has it.
struct Record {
  uint32_t gap;  // index
  int64_t position;
  uint32_t insert;
};

Record recordOf(std::string_view header, const VelkModel& model, const LineReader& reader) {
  if (!header.starts_with('>')) reader.fail();
  header.remove_prefix(1);
  const auto next = [&] {
    const std::size_t tab = header.find('\t');
    if (tab == std::string_view::npos) reader.fail();
    const std::string_view field = header.substr(0, tab);
    header.remove_prefix(tab + 1);
    return field;
  };
  const auto number = reader.number<uint64_t>(next());
  const auto length = reader.number<uint64_t>(next());
  const auto position = reader.number<int64_t>(next());
  const auto insert = reader.number<uint32_t>(header.substr(header.rfind('\t') + 1));
  const std::vector<VelkGap>& gaps = model.gaps();
  const auto gap = std::partition_point(gaps.begin(), gaps.end(),
                                        [&](const VelkGap& one) { return one.number < number; });
  const bool isThere = gap != gaps.end() && gap->number == number && gap->place.length == length;
  if (!isThere) reader.fail();
  return {static_cast<uint32_t>(gap - gaps.begin()), position, insert};
}

// Where a read lies, and how sure that is. One that was found by its own bases agrees with a contig
// at the place that is written; others may lie off it, as the insert size gave it.
run::CheckedPlace placeOf(const Record& record, std::string_view bases,
                          const run::ScaffoldText& scaffold, const run::Gap& gap) {
  const auto gapStart = static_cast<int64_t>(gap.start);
  const auto length = static_cast<int64_t>(bases.size());
  run::Expected expected{bases, gapStart + record.position, 0, true};
  const int64_t overlap =
      std::max(gapStart - expected.start, expected.start + length - static_cast<int64_t>(gap.end));
  const run::CheckedPlace asWritten = checkPlace(scaffold, gap, expected, kUsualIdentity);
  const bool isOfHit = static_cast<double>(overlap) >= kUsualOverlap * static_cast<double>(length);
  if (isOfHit && asWritten.certainty == Certainty::kExact) return asWritten;
  if (record.insert == 0) {
    const bool isInFront = expected.start < gapStart;
    return {Certainty::kExact, expected.start, gap.contigBehind - (isInFront ? 1U : 0U)};
  }
  expected.spread = std::llround(run::kDeviations * kUsualSpread * record.insert);
  return checkPlace(scaffold, gap, expected, kUsualIdentity);
}

// Places records one by one.
class Placing {
 public:
  explicit Placing(const VelkModel& model)
      : model_(model), placed_{{}, std::vector<Reach>(model.gaps().size())} {}

  void add(const Record& record, std::string_view bases) {
    const VelkGap& gap = model_.gaps()[record.gap];
    const run::ScaffoldText scaffold = model_.scaffolds()[gap.place.scaffold].text();
    const Stretch ofGap{static_cast<int64_t>(gap.place.start), static_cast<int64_t>(gap.place.end)};
    const run::CheckedPlace checked = placeOf(record, bases, scaffold, gap.place);
    const bool isEstimate = checked.certainty == Certainty::kEstimate;
    const Stretch whole{checked.start, checked.start + static_cast<int64_t>(bases.size())};
    const run::Alignment alignment =
        isEstimate
            ? alignedWithin(whole, ofGap)
            : alignedOnContig(scaffold, checked.contig, checked.start, bases, kUsualIdentity);
    const Stretch aligned = alignment.isEmpty() ? Stretch{0, 0} : alignment.aligned;
    if (checked.certainty == Certainty::kExact) {
      const run::Reached reached = run::reachInto(ofGap, aligned);
      Reach& most = placed_.reach[record.gap];
      most.front = std::max(most.front, static_cast<uint32_t>(reached.front));
      most.behind = std::max(most.behind, static_cast<uint32_t>(reached.behind));
    }
    placed_.reads.push_back({aligned.start + gap.shift, static_cast<uint32_t>(aligned.length()),
                             record.gap, record.insert, kindOf(checked.certainty)});
  }

  PlacedReads finish() && {
    std::stable_sort(
        placed_.reads.begin(), placed_.reads.end(),
        [](const PlacedRead& one, const PlacedRead& other) { return one.gap < other.gap; });
    return std::move(placed_);
  }

 private:
  const VelkModel& model_;
  PlacedReads placed_;
};

}  // namespace

PlacedReads placeReads(const std::string& found, const VelkModel& model) {
  Placing placing(model);
  LineReader reader(found);
  std::string_view line;
  while (reader.next(line)) {
    const Record record = recordOf(line, model, reader);
    if (!reader.next(line)) reader.fail();
    placing.add(record, line);
  }
  return std::move(placing).finish();
}

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
