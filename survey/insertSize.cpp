#include "survey/insertSize.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "placement/edgeCheck.h"
#include "placement/place.h"

namespace velk::survey {
namespace {

// The place of one strand of a read.
std::optional<ReadPlace> placeOnStrand(Scaffolds scaffolds, const PlacementOptions& options,
                                       ReadStrand<Engine> strand) {
  std::optional<ReadPlace> place;
  strand.visitHits([&](const Hit& hit) {
    const std::string_view contig = scaffolds[hit.scaffold].contigsInfo[hit.contig].bases();
    const int64_t end = hit.offset + static_cast<int64_t>(strand.size());
    const bool isInside = hit.offset >= 0 && end <= static_cast<int64_t>(contig.size());
    if (!isInside || checkOnContig(contig, strand.bases(), hit.offset, options) != Refusal::kNone) {
      return Walk::kGoOn;
    }
    place = ReadPlace{hit.scaffold, hit.contig, hit.offset, end, strand.origin().isReversed};
    return Walk::kStop;
  });
  return place;
}

struct Weighted {
  uint64_t insert;
  double weight;
};

// The value below which `share` of the weight lies; `inserts` are sorted.
double quantile(const std::vector<Weighted>& inserts, double share) {
  double total = 0;
  for (const Weighted& one : inserts) total += one.weight;
  double seen = 0;
  for (const Weighted& one : inserts) {
    seen += one.weight;
    if (seen >= share * total) return static_cast<double>(one.insert);
  }
  return 0;
}

// REQUIRES: there are inserts.
uint64_t medianOf(std::vector<uint64_t> inserts) {
  assert(!inserts.empty());
  const auto middle = inserts.begin() + static_cast<std::ptrdiff_t>(inserts.size() / 2);
  std::nth_element(inserts.begin(), middle, inserts.end());
  return *middle;
}

// How far the inserts go that belong together: those of chimeric pairs lie beyond.
uint64_t longestLikely(std::vector<uint64_t> inserts) {
  if (inserts.empty()) return 0;
  constexpr uint64_t kReach = 15;  // median deviations, ten standard deviations of a normal spread
  const uint64_t median = medianOf(inserts);
  for (uint64_t& insert : inserts) insert = insert > median ? insert - median : median - insert;
  return median + kReach * std::max<uint64_t>(medianOf(inserts), 1);
}

}  // namespace

std::optional<ReadPlace> placeOfRead(Engine& engine, Scaffolds scaffolds,
                                     const PlacementOptions& options, const std::string& read) {
  if (read.size() < static_cast<std::size_t>(options.kmer)) return std::nullopt;
  if (read.find('N') != std::string::npos) return std::nullopt;
  Engine::Prepared prepared;
  prepared.bases = &read;
  engine.prepare({&prepared, 1}, {}, false);
  const auto place = placeOnStrand(scaffolds, options, {engine, prepared, read, {0, 0, false}});
  if (place) return place;
  std::string room;
  return placeOnStrand(scaffolds, options, {engine, prepared, read, {0, 0, true}, &room});
}

PairGeometry::PairGeometry(std::vector<uint64_t> contigLengths)
    : lengths_(std::move(contigLengths)), sumFrom_(lengths_.size() + 1) {
  std::sort(lengths_.begin(), lengths_.end());
  for (std::size_t i = lengths_.size(); i > 0; --i) {
    sumFrom_[i - 1] = sumFrom_[i] + static_cast<double>(lengths_[i - 1]);
  }
}

// In how many places of the contigs a fragment of `insert` bases fits.
double PairGeometry::places(uint64_t insert) const {
  const auto first = std::lower_bound(lengths_.begin(), lengths_.end(), insert);
  const auto contigs = static_cast<double>(lengths_.end() - first);
  const double bases = sumFrom_[static_cast<std::size_t>(first - lengths_.begin())];
  return std::max(1.0, bases - contigs * (static_cast<double>(insert) - 1));
}

// How many fragments of an orientation there are for each place: what the contigs' lengths make of
// the counts is taken out again. Those of a few pairs are chimeras, wherever these lie.
double PairGeometry::abundance(Orientation orientation) const {
  constexpr double kFew = 0.1;  // of the pairs on one contig
  std::size_t pairs = 0;
  for (const auto& ofOne : inserts_) pairs += ofOne.size();
  const auto count = static_cast<double>(inserts(orientation).size());
  if (count <= kFew * static_cast<double>(pairs)) return 0;
  return count / places(medianOf(inserts(orientation)));
}

void PairGeometry::add(const ReadPlace& one, const ReadPlace& other) {
  if (one.scaffold != other.scaffold || one.contig != other.contig) return;
  const ReadPlace& forward = one.isReverse ? other : one;
  const ReadPlace& reverse = one.isReverse ? one : other;
  const int64_t start = std::min(forward.start, reverse.start);
  const auto insert = static_cast<uint64_t>(std::max(forward.end, reverse.end) - start);
  Orientation orientation = Orientation::kSameStrand;
  if (one.isReverse != other.isReverse) {
    orientation = forward.start <= reverse.start ? Orientation::kInward : Orientation::kOutward;
  }
  inserts_[static_cast<std::size_t>(orientation)].push_back(insert);
}

PairMeasure PairGeometry::measure() const {
  PairMeasure measure;
  measure.inward = inserts(Orientation::kInward).size();
  measure.outward = inserts(Orientation::kOutward).size();
  measure.sameStrand = inserts(Orientation::kSameStrand).size();
  const double ofInward = abundance(Orientation::kInward);
  const double ofOutward = abundance(Orientation::kOutward);
  const Orientation commoner = ofOutward > ofInward ? Orientation::kOutward : Orientation::kInward;
  const bool isSame = abundance(Orientation::kSameStrand) > std::max(ofInward, ofOutward);
  measure.orientation = isSame ? Orientation::kSameStrand : commoner;
  const std::vector<uint64_t>& commonest = inserts(commoner);
  const uint64_t longest = longestLikely(commonest);
  std::vector<Weighted> likely;
  for (const uint64_t insert : commonest) {
    if (insert <= longest) likely.push_back({insert, 1 / places(insert)});
  }
  std::sort(likely.begin(), likely.end(),
            [](const Weighted& a, const Weighted& b) { return a.insert < b.insert; });
  measure.insert = quantile(likely, 0.5);
  measure.spread = (quantile(likely, 0.84) - quantile(likely, 0.16)) / 2;
  return measure;
}

PairSurvey::PairSurvey(const BoundedIndex& index, Scaffolds scaffolds,
                       const PlacementOptions& options)
    : engine_(index.engine()),
      scaffolds_(scaffolds),
      options_(options),
      geometry_(indexedLengths(scaffolds)) {}

void PairSurvey::add(const std::string& one, const std::string& other) {
  const auto first = placeOfRead(engine_, scaffolds_, options_, one);
  if (!first) return;
  const auto second = placeOfRead(engine_, scaffolds_, options_, other);
  if (second) geometry_.add(*first, *second);
}

}  // namespace velk::survey
