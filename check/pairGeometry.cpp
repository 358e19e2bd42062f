#include "check/pairGeometry.h"

#include <algorithm>
#include <utility>

#include "driver/velk.h"
#include "placement/Read2Scaf.h"
#include "placement/kmerWalk.h"

namespace velk::check {
namespace {

std::optional<ReadPlace> placeOnStrand(Engine& engine, const std::string& read, bool isReverse) {
  std::optional<ReadPlace> place;
  Engine::Prepared nothingKnown;
  auto windows = engine.windows(nothingKnown, read, isReverse);
  visitUniqueHits(windows, [&](const Hit& hit) {
    const std::string& contig = scaffoldInfo[hit.scaffold].contigsInfo[hit.contig].contigSeq;
    const int64_t end = hit.offset + static_cast<int64_t>(read.size());
    const bool isInside = hit.offset >= 0 && end <= static_cast<int64_t>(contig.size());
    if (!isInside || MapRead2Contig(contig, read, hit.offset) == 0) return Walk::kGoOn;
    place = ReadPlace{hit.scaffold, hit.contig, hit.offset, end, isReverse};
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

// How far the inserts go that belong together: those of chimeric pairs lie beyond.
uint64_t longestLikely(std::vector<uint64_t> inserts) {
  if (inserts.empty()) return 0;
  constexpr uint64_t kReach = 15;  // median deviations, ten standard deviations of a normal spread
  const auto middle = inserts.begin() + static_cast<std::ptrdiff_t>(inserts.size() / 2);
  std::nth_element(inserts.begin(), middle, inserts.end());
  const uint64_t median = *middle;
  for (uint64_t& insert : inserts) insert = insert > median ? insert - median : median - insert;
  std::nth_element(inserts.begin(), middle, inserts.end());
  return median + kReach * std::max<uint64_t>(*middle, 1);
}

}  // namespace

std::optional<ReadPlace> placeOfRead(Engine& engine, const std::string& read) {
  if (read.size() < static_cast<std::size_t>(Kmer)) return std::nullopt;
  if (read.find('N') != std::string::npos) return std::nullopt;
  if (std::optional<ReadPlace> place = placeOnStrand(engine, read, false)) return place;
  std::string reversed(read.size(), 'A');
  ReverseComplementSeq(reversed, read);
  return placeOnStrand(engine, reversed, true);
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

void PairGeometry::add(const ReadPlace& one, const ReadPlace& other) {
  if (one.scaffold != other.scaffold || one.contig != other.contig) return;
  if (one.isReverse == other.isReverse) {
    ++sameStrand_;
    return;
  }
  const ReadPlace& forward = one.isReverse ? other : one;
  const ReadPlace& reverse = one.isReverse ? one : other;
  const int64_t start = std::min(forward.start, reverse.start);
  const auto insert = static_cast<uint64_t>(std::max(forward.end, reverse.end) - start);
  (forward.start <= reverse.start ? inward_ : outward_).push_back(insert);
}

PairMeasure PairGeometry::measure() const {
  PairMeasure measure;
  measure.inward = inward_.size();
  measure.outward = outward_.size();
  measure.sameStrand = sameStrand_;
  const std::vector<uint64_t>& commonest = inward_.size() >= outward_.size() ? inward_ : outward_;
  const uint64_t longest = longestLikely(commonest);
  std::vector<Weighted> inserts;
  for (const uint64_t insert : commonest) {
    if (insert <= longest) inserts.push_back({insert, 1 / places(insert)});
  }
  std::sort(inserts.begin(), inserts.end(),
            [](const Weighted& a, const Weighted& b) { return a.insert < b.insert; });
  measure.insert = quantile(inserts, 0.5);
  measure.spread = (quantile(inserts, 0.84) - quantile(inserts, 0.16)) / 2;
  return measure;
}

}  // namespace velk::check
