#include "report/velkReads.h"

#include <algorithm>
#include <cmath>

#include "report/lineReader.h"
#include "run/gapFlanks.h"
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

}  // namespace velk::report
