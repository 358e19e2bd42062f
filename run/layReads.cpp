#include "run/layReads.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "run/alignment.h"

namespace velk::run {
namespace {

class Laying {
 public:
  Laying(const FoundEntry& entry, const Library& library, const Assembly& assembly, double mapCut)
      : entry_(entry),
        library_(library),
        assembly_(assembly),
        mapCut_(mapCut),
        spread_(std::llround(kDeviations * library.spread)) {}

  LaidReads lay() {
    for (const FoundPlace& place : entry_.places) {
      isOfHit(place.kind) ? layHit(place) : layMate(place);
    }
    if (entry_.reads == 2) layCompany();
    for (std::vector<Laid>& reads : laid_) {
      choosePrimary(reads);
      alignFurther(reads);
    }
    return std::move(laid_);
  }

 private:
  static bool isOfHit(RecordKind kind) {
    return kind == RecordKind::kEdge || kind == RecordKind::kAnchor;
  }

  ScaffoldText scaffold(int64_t number) const { return {assembly_, static_cast<uint64_t>(number)}; }

  Stretch contigOf(uint64_t scaffold, uint64_t contig) const {
    return stretchOf(assembly_.scaffolds()[scaffold].contigs[contig]);
  }

  // The gap of a read, and where it lies.
  const Gap& gapOf(const Laid& laid) const {
    return assembly_.gaps()[static_cast<std::size_t>(laid.gap)];
  }
  static Stretch stretchOfGap(const Gap& gap) {
    return {static_cast<int64_t>(gap.start), static_cast<int64_t>(gap.end)};
  }

  Stretch stretchAt(const Laid& laid) const {
    return {laid.start, laid.start + lengthOf(laid.mate)};
  }

  int64_t lengthOf(int mate) const {
    return static_cast<int64_t>(entry_.texts[static_cast<std::size_t>(mate)].bases.size());
  }

  std::string basesOf(int mate, bool isReversed) const {
    const std::string_view bases = entry_.texts[static_cast<std::size_t>(mate)].bases;
    return isReversed ? reverseComplementOf(bases) : std::string(bases);
  }

  void add(const Laid& laid) { laid_[static_cast<std::size_t>(laid.mate)].push_back(laid); }

  // A read's place in a gap, without where it is aligned.
  Laid laidAt(const FoundPlace& place) const {
    Laid laid;
    laid.mate = place.mate;
    laid.isReversed = place.isReversed;
    laid.isFound = true;
    laid.gap = static_cast<int64_t>(assembly_.gapInFront(place.scaffold, place.contigBehind));
    laid.gapPosition = place.position;
    laid.scaffold = static_cast<int64_t>(place.scaffold);
    return laid;
  }

  // Aligns a read that agrees with a contig.
  void alignOn(Laid& laid, uint64_t contig, int64_t start, Certainty certainty) const {
    laid.start = start;
    laid.certainty = certainty;
    laid.alignment = alignedOnContig(scaffold(laid.scaffold), contig, start,
                                     basesOf(laid.mate, laid.isReversed), mapCut_);
  }

  // A read that was itself hit: its place is that of the hit.
  void layHit(const FoundPlace& place) {
    Laid laid = laidAt(place);
    laid.kind = place.kind == RecordKind::kEdge ? 'E' : 'A';
    alignOn(laid, place.hitContig,
            contigOf(place.scaffold, place.hitContig).start + place.hitOffset, Certainty::kExact);
    add(laid);
  }

  // A mate, which lies where the insert size says, unless a contig says otherwise. In a gap of
  // unknown length its place counts from the contig that gave it.
  void layMate(const FoundPlace& place) {
    Laid laid = laidAt(place);
    const Gap& gap = gapOf(laid);
    const Stretch ofGap = stretchOfGap(gap);
    const bool isFromFront = place.hitContig < place.contigBehind;
    laid.start = isFromFront ? ofGap.start + place.unmoved
                             : ofGap.end + place.unmoved - static_cast<int64_t>(gap.length);
    const std::string bases = basesOf(laid.mate, laid.isReversed);
    const CheckedPlace checked = checkPlace(scaffold(laid.scaffold), gap,
                                            {bases, laid.start, spread_, isFromFront}, mapCut_);
    if (checked.certainty == Certainty::kEstimate) {
      laid.alignment = alignedWithin(stretchAt(laid), ofGap);
    } else {
      alignOn(laid, checked.contig, checked.start, checked.certainty);
    }
    add(laid);
  }

  // The reads of a pair that were not found: the anchor, and the mate of one that was.
  void layCompany() {
    if (!entry_.anchor) return;
    const FoundAnchor& anchor = *entry_.anchor;
    Laid laid;
    laid.scaffold = static_cast<int64_t>(anchor.scaffold);
    laid.gap = firstGap();
    if (!isLaid(anchor.mate)) {
      laid.mate = anchor.mate;
      laid.kind = 'A';
      laid.isReversed = anchor.isReversed;
      alignOn(laid, anchor.contig, startOf(anchor), Certainty::kExact);
      add(laid);
    } else if (!isLaid(1 - anchor.mate)) {
      laid.mate = 1 - anchor.mate;
      laid.isReversed = !anchor.isReversed;
      layBeside(anchor, laid);
      add(laid);
    }
  }

  bool isLaid(int mate) const { return !laid_[static_cast<std::size_t>(mate)].empty(); }

  int64_t firstGap() const {
    const FoundPlace& first = entry_.places.front();
    return static_cast<int64_t>(assembly_.gapInFront(first.scaffold, first.contigBehind));
  }

  int64_t startOf(const FoundAnchor& anchor) const {
    return contigOf(anchor.scaffold, anchor.contig).start + anchor.offset;
  }

  // The mate of an anchor, aligned if a contig within the spread has all of it.
  void layBeside(const FoundAnchor& anchor, Laid& laid) const {
    const bool isBehind = anchor.isReversed == (library_.orientation == Orientation::kOutward);
    const int64_t insert = std::llround(library_.insert);
    const int64_t start = startOf(anchor);
    laid.start =
        isBehind ? start + insert - lengthOf(laid.mate) : start + lengthOf(anchor.mate) - insert;
    const auto inside = findContained(scaffold(laid.scaffold), basesOf(laid.mate, laid.isReversed),
                                      laid.start, spread_, mapCut_);
    if (inside) alignOn(laid, inside->contig, inside->start, Certainty::kExact);
  }

  // Puts a read's first exact place in front, else the first in a contig.
  static void choosePrimary(std::vector<Laid>& reads) {
    for (const Certainty certainty : {Certainty::kExact, Certainty::kContained}) {
      const auto first = std::find_if(reads.begin(), reads.end(), [&](const Laid& laid) {
        return laid.certainty == certainty;
      });
      if (first == reads.end()) continue;
      std::rotate(reads.begin(), first, first + 1);
      return;
    }
  }

  // A record beside the primary one must be aligned: it gets the gap's base that is nearest.
  void alignFurther(std::vector<Laid>& reads) const {
    for (std::size_t i = 1; i < reads.size(); ++i) {
      Laid& laid = reads[i];
      if (laid.isMapped()) continue;
      const Stretch gap = stretchOfGap(gapOf(laid));
      laid.start = laid.start < gap.start ? gap.start + 1 - lengthOf(laid.mate) : gap.end - 1;
      laid.alignment = alignedWithin(stretchAt(laid), gap);
    }
  }

  const FoundEntry& entry_;
  const Library& library_;
  const Assembly& assembly_;
  double mapCut_;
  int64_t spread_;
  LaidReads laid_;
};

}  // namespace

LaidReads layReads(const FoundEntry& entry, const Library& library, const Assembly& assembly,
                   double mapCut) {
  return Laying(entry, library, assembly, mapCut).lay();
}

}  // namespace velk::run
