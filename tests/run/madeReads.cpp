#include "tests/run/madeReads.h"

#include <cmath>

#include "placement/verdict.h"
#include "run/alignment.h"

namespace velk::test {
namespace {

constexpr int kKmer = 21;
constexpr double kMapCut = 0.98;
constexpr double kOverRatio = 0.3;
constexpr std::size_t kScaffolds = 3;

// Contigs and gaps in turn, bases.
constexpr int kContigs[] = {400, 300, 90, 350, 500, 45, 400};
constexpr int kGaps[] = {100, 250, 300, 1, 30, 180};

}  // namespace

void MadeReads::makeWorld(unsigned seed, const std::vector<uint64_t>& placeholders) {
  std::vector<MadeScaffold> scaffolds;
  for (unsigned s = 0; s < kScaffolds; ++s) {
    const std::string genome = randomBases(4000, seed * 10 + s);
    genomes_.push_back(genome);
    MadeScaffold scaffold{"chr" + std::to_string(s), {}};
    std::size_t at = s == 1 ? 20 : 0;  // N at the start
    for (std::size_t c = 0; c < std::size(kContigs); ++c) {
      const auto length = static_cast<std::size_t>(kContigs[c]);
      const int64_t gap = c == 0 ? static_cast<int64_t>(at) : kGaps[c - 1];
      if (c > 0) at += static_cast<std::size_t>(gap);
      scaffold.contigs.push_back({genome.substr(at, length), gap});
      at += length;
    }
    if (s == 2) scaffold.contigs.back().bases += std::string(15, 'N');
    scaffolds.push_back(scaffold);
  }
  makeAssembly(scaffolds, placeholders);
}

std::string MadeReads::onScaffold(const run::FoundEntry& entry, int mate) const {
  const std::string bases(entry.texts[static_cast<std::size_t>(mate)].bases);
  const bool isReversed = truthOf(entry.input, entry.record, mate).isReversed;
  return isReversed ? reverseComplement(bases) : bases;
}

reads::RecordView MadeReads::made(uint64_t record, std::size_t scaffold, const TruePlace& place,
                                  int mate, bool hasQuality, Random& random) {
  const auto input = static_cast<uint32_t>(libraries_.size() - 1);
  truth_[{input, record, mate}] = place;
  std::string bases = genomes_[scaffold].substr(static_cast<std::size_t>(place.start), kReadLength);
  if (random() % 10 == 0) bases[random() % bases.size()] = "ACGT"[random() % 4];
  const std::string sequenced = place.isReversed ? reverseComplement(bases) : bases;
  // Both libraries of a test count their reads in the same way.
  reads::RecordView view = read("read" + std::to_string(record), sequenced);
  if (!hasQuality) view.quality = {};
  return view;
}

// Has placement judge the read as one on its true contig. Returns whether something was found.
bool MadeReads::findFrom(int mate, const run::Library& library, run::FoundEntry& entry) {
  const TruePlace place = truthOf(entry.input, entry.record, mate);
  const std::size_t number = scaffold_.back();
  const ScaffoldInfo& info = assembly().model()[number];
  const PlacementOptions options{
      kKmer, static_cast<int>(library.insert), 0, kReadLength, kMapCut, kOverRatio};
  const auto& contigs = assembly().scaffolds()[number].contigs;
  for (uint64_t c = 0; c < contigs.size(); ++c) {
    const run::Stretch contig = run::stretchOf(contigs[c]);
    if (run::common(contig, {place.start, place.start + kReadLength}).length() < kKmer) continue;
    const Hit hit{number, c, place.start - contig.start};
    const std::string bases = onScaffold(entry, mate);
    // On the scaffold the left read of a fragment begins it, however it was sequenced.
    const bool isLeft =
        entry.reads == 2 && place.start <= truthOf(entry.input, entry.record, 1 - mate).start;
    const Verdict verdict = entry.reads == 1
                                ? judgeSingle(hit, bases, info, options)
                                : judgePair(isLeft ? Direction::kForward : Direction::kReverse, hit,
                                            bases, kReadLength, info, options);
    if (verdict.refusal != Refusal::kNone) continue;
    if (entry.reads == 2) {
      entry.anchor = run::FoundAnchor{mate, place.isReversed, number, c, hit.offset};
    }
    for (std::size_t n = 0; n < verdict.count; ++n) {
      const GapPlace& found = verdict.places[n];
      const bool isMates = found.kind == RecordKind::kMate || found.kind == RecordKind::kGapBeyond;
      const int read = isMates ? 1 - mate : mate;
      entry.places.push_back({read, truthOf(entry.input, entry.record, read).isReversed, found.kind,
                              number, found.gap, found.position, found.unmoved, c, hit.offset});
    }
    return true;
  }
  return false;
}

void MadeReads::makePair(const run::Library& library, uint64_t record, bool hasQuality,
                         Random& random) {
  const std::size_t number = scaffold_.back();
  const auto room = static_cast<double>(assembly().scaffolds()[number].length);
  const double length = std::normal_distribution<double>(library.insert, library.spread)(random);
  const auto insert = std::max<int64_t>(kReadLength, std::llround(length));
  const auto last = static_cast<int64_t>(room) - insert;
  if (last <= 0) return;
  const auto start = static_cast<int64_t>(random() % static_cast<uint64_t>(last));
  const bool isOutward = library.orientation == run::Orientation::kOutward;
  const TruePlace left{start, isOutward};
  const TruePlace right{start + insert - kReadLength, !isOutward};
  const auto leftMate = static_cast<int>(random() % 2);
  run::FoundEntry entry{};
  entry.library = entry.input = static_cast<uint32_t>(libraries_.size() - 1);
  entry.record = record;
  entry.reads = 2;
  const auto isLeft = static_cast<std::size_t>(leftMate);
  entry.texts[isLeft] = made(record, number, left, leftMate, hasQuality, random);
  entry.texts[1 - isLeft] = made(record, number, right, 1 - leftMate, hasQuality, random);
  const bool isAnchored =
      findFrom(leftMate, library, entry) || findFrom(1 - leftMate, library, entry);
  if (isAnchored && !entry.places.empty()) entries_.push_back(entry);
}

void MadeReads::makeSingle(uint64_t record, bool hasQuality, Random& random) {
  const std::size_t number = scaffold_.back();
  const auto room = static_cast<uint64_t>(assembly().scaffolds()[number].length) - kReadLength;
  const TruePlace place{static_cast<int64_t>(random() % room), random() % 2 == 0};
  run::FoundEntry entry{};
  entry.library = entry.input = static_cast<uint32_t>(libraries_.size() - 1);
  entry.record = record;
  entry.reads = 1;
  entry.texts[0] = made(record, number, place, 0, hasQuality, random);
  if (findFrom(0, libraries_.back(), entry)) entries_.push_back(entry);
}

void MadeReads::makeReads(const run::Library& library, std::size_t count,
                          double shareWithoutQuality) {
  libraries_.push_back(library);
  Random random(static_cast<unsigned>(libraries_.size()) * 1000 + 7);
  for (uint64_t record = 0; record < count; ++record) {
    scaffold_.push_back(random() % kScaffolds);
    const bool hasQuality = std::uniform_real_distribution<>()(random) >= shareWithoutQuality;
    library.arePairs() ? makePair(library, record, hasQuality, random)
                       : makeSingle(record, hasQuality, random);
  }
}

}  // namespace velk::test
