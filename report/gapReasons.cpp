#include "report/gapReasons.h"

#include <algorithm>
#include <cmath>

#include "run/terminal.h"

namespace velk::report {
namespace {

using run::countText;
using run::Evidence;
using run::Side;

constexpr double kLeastExpected = 4;    // reads, below which no number is few
constexpr double kFewInFlanks = 0.5;    // of the reads that contigs have on average
constexpr double kRepeatedShare = 0.9;  // of the k-mers
constexpr double kMuchRepeated = 0.4;   // of them, where nothing else is the reason

std::string percent(double share) {
  return std::to_string(std::lround(100 * share)) + " %";
}

}  // namespace

const char* nameOf(Reason reason) {
  switch (reason) {
    case Reason::kEnough:
      return "as expected";
    case Reason::kInsertTooLarge:
      return "inserts too large";
    case Reason::kRepeats:
      return "repeated flanks";
    case Reason::kShortContig:
      return "short contig";
    case Reason::kNothingNear:
      return "no reads near";
    case Reason::kUnlike:
      return "too many differences";
    case Reason::kShortOverlap:
      return "too little overlap";
    case Reason::kPlaceholder:
      return "unknown length";
    case Reason::kContained:
      return "contained reads";
    case Reason::kFewNear:
      return "few reads near";
    case Reason::kUnknown:
      break;
  }
  return "no single reason";
}

const char* explain(Reason reason) {
  switch (reason) {
    case Reason::kEnough:
      return "At least a quarter of the reads that depth and reach predict.";
    case Reason::kInsertTooLarge:
      return "Every library has inserts too large for a gap of this length.";
    case Reason::kRepeats:
      return "Over 90 % of the k-mers in the flanks occur more than once, and place no read; or "
             "over 40 %, and nothing else is a reason.";
    case Reason::kShortContig:
      return "A contig beside the gap is shorter than -L or than a k-mer, and places no read.";
    case Reason::kNothingNear:
      return "No read of any library that a gap of this length can use lies within reach.";
    case Reason::kUnlike:
      return "Reads are there, but differ from the contigs in more bases than -M allows.";
    case Reason::kShortOverlap:
      return "Reads are there, but overlap the contigs by less than -O asks for.";
    case Reason::kPlaceholder:
      return "The gap's length is unknown, and its reads may lie anywhere within the reach.";
    case Reason::kContained:
      return "Reads were found, but a contig beside the gap has all of their bases.";
    case Reason::kFewNear:
      return "The flanks of the gap have under half of the reads that contigs have on average.";
    case Reason::kUnknown:
      break;
  }
  return "Fewer reads than predicted, and none of the other reasons holds.";
}

Judge::Judge(const RunData& data) : data_(data) {
  uint64_t inGaps = 0;
  for (const GapData& gap : data.gaps) inGaps += gap.to - gap.from;
  const auto onContigs = static_cast<double>(
      std::max<uint64_t>(1, data.assembly.bases - std::min(data.assembly.bases, inGaps)));
  for (const LibraryData& library : data.libraries) {
    const double insert = std::round(library.insert);
    depths_.push_back({static_cast<double>(library.onContigs) / onContigs, library.readLength(),
                       insert, insert > static_cast<double>(data.settings.bigGapLength)});
  }
  std::vector<double> flanks;
  for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) {
    if (const double reads = readsPerFlankBase(gap); reads >= 0) flanks.push_back(reads);
  }
  if (flanks.empty()) return;
  const auto middle = flanks.begin() + static_cast<std::ptrdiff_t>(flanks.size() / 2);
  std::nth_element(flanks.begin(), middle, flanks.end());
  medianFlank_ = *middle;
}

// Reads that the contig on one side of a gap gives it. Of pairs, an anchor may lie anywhere in the
// contig, so mates begin in a stretch of the gap and the read before it; and reads run over the
// contig's end themselves, with the least overlap at most.
double Judge::ofSide(const Depth& depth, double length, double contig) {
  constexpr double kLeastOverlap = 0.3;
  const double overEnd = (1 - kLeastOverlap) * depth.read;
  if (depth.insert == 0) return depth.perBase * overEnd;
  const double last = std::min(length, depth.insert - (1 + kLeastOverlap) * depth.read);
  const double first = std::max(-depth.read, depth.insert - depth.read - contig);
  return depth.perBase * (std::max(0.0, last - first) + overEnd);
}

double Judge::expectedAt(double length, double before, double behind) const {
  double sum = 0;
  for (const Depth& depth : depths_) {
    const bool isSmall = length < static_cast<double>(data_.settings.bigGapLength);
    if (depth.needsBigGap && isSmall) continue;
    sum += ofSide(depth, length, before) + ofSide(depth, length, behind);
  }
  return sum;
}

double Judge::expectedAt(double length) const {
  constexpr double kLong = 1e9;
  return expectedAt(length, kLong, kLong);
}

bool Judge::canPredict() const {
  return std::any_of(depths_.begin(), depths_.end(),
                     [](const Depth& depth) { return depth.perBase > 0; });
}

double Judge::readsPerFlankBase(std::size_t gap) const {
  if (!data_.evidence) return -1;
  const GapData& facts = data_.gaps[gap];
  constexpr auto kWidest = static_cast<uint64_t>(Evidence::kFlankBases);
  const uint64_t bases =
      std::min(facts.basesBefore, kWidest) + std::min(facts.basesBehind, kWidest);
  return bases == 0 ? -1 : data_.evidence->flankReads(gap) / static_cast<double>(bases);
}

double Judge::flankShare(std::size_t gap) const {
  const double reads = readsPerFlankBase(gap);
  double usual = 0;
  for (const Depth& depth : depths_) usual += depth.perBase;
  return reads < 0 || usual == 0 ? -1 : reads / usual;
}

double Judge::flankDepth(std::size_t gap) const {
  const double reads = readsPerFlankBase(gap);
  return reads < 0 || medianFlank_ == 0 ? -1 : reads / medianFlank_;
}

uint64_t Judge::refused(std::size_t gap, Refusal why) const {
  uint64_t sum = 0;
  for (std::size_t l = 0; l < data_.libraries.size(); ++l) {
    sum += data_.evidence->refused(gap, l, why);
  }
  return sum;
}

double Judge::shareRepeated(std::size_t gap) const {
  const Evidence& evidence = *data_.evidence;
  const uint64_t kmers =
      uint64_t{evidence.kmers(gap, Side::kFront)} + evidence.kmers(gap, Side::kBehind);
  const uint64_t repeated = uint64_t{evidence.repeatedKmers(gap, Side::kFront)} +
                            evidence.repeatedKmers(gap, Side::kBehind);
  return kmers == 0 ? 0 : static_cast<double>(repeated) / static_cast<double>(kmers);
}

// The rule of placement for large inserts at small gaps, where it has refused pairs at this one.
bool Judge::areInsertsTooLarge(std::size_t gap) const {
  const auto bigGap = std::max<int64_t>(0, data_.settings.bigGapLength);
  return data_.gaps[gap].length < static_cast<uint64_t>(bigGap) &&
         refused(gap, Refusal::kSmallGap) > 0 &&
         std::all_of(depths_.begin(), depths_.end(),
                     [](const Depth& depth) { return depth.needsBigGap; });
}

Reason Judge::reasonOf(std::size_t gap, double expected, uint64_t belonging) const {
  if (!data_.evidence) return Reason::kUnknown;
  // 1, 2, 3. What the libraries cannot reach, and the contigs cannot place.
  if (areInsertsTooLarge(gap)) return Reason::kInsertTooLarge;
  if (shareRepeated(gap) > kRepeatedShare) return Reason::kRepeats;
  for (const Side side : {Side::kFront, Side::kBehind}) {
    if (data_.evidence->kmers(gap, side) == 0) return Reason::kShortContig;
  }
  // 4. What came of the libraries that a gap of its length can use.
  const uint64_t contained = data_.count(gap, ReadKind::kContained);
  const uint64_t unlike = refused(gap, Refusal::kUnlike);
  const uint64_t lost = unlike + refused(gap, Refusal::kShortOverlap);
  if (belonging + contained + lost == 0) return Reason::kNothingNear;
  // 5. What of it was refused: so much that with it there would be enough.
  const Reason ofLost = 2 * unlike >= lost ? Reason::kUnlike : Reason::kShortOverlap;
  const bool isMost = lost > 0 && lost >= belonging;
  if (isMost && static_cast<double>(lost + belonging) >= kFewShare * expected) return ofLost;
  // 6, 7. What it was found to be, if that is most of what is missing; if much of the flanks is
  // repeats, these come before what chance has left.
  if (data_.gaps[gap].isPlaceholder) return Reason::kPlaceholder;
  if (shareRepeated(gap) > kMuchRepeated) return Reason::kRepeats;
  const bool isEnoughWithContained =
      static_cast<double>(contained + belonging) >= kFewShare * expected;
  if (contained > 0 && contained >= belonging && isEnoughWithContained) return Reason::kContained;
  // 8. Hardly anything came, or most of the little that did was refused or contained.
  const double share = flankShare(gap);
  if (share >= 0 && share < kFewInFlanks) return Reason::kFewNear;
  if (isMost) return ofLost;
  return contained > 0 && belonging == 0 ? Reason::kContained : Reason::kUnknown;
}

std::string Judge::figureOf(std::size_t gap, Reason reason) const {
  switch (reason) {
    case Reason::kInsertTooLarge:
      return countText(refused(gap, Refusal::kSmallGap)) + " refused";
    case Reason::kRepeats:
      return percent(shareRepeated(gap)) + " of k-mers";
    case Reason::kShortContig:
      return countText(std::min(data_.gaps[gap].basesBefore, data_.gaps[gap].basesBehind)) +
             " bases";
    case Reason::kUnlike:
      return countText(refused(gap, Refusal::kUnlike)) + " refused";
    case Reason::kShortOverlap:
      return countText(refused(gap, Refusal::kShortOverlap)) + " refused";
    case Reason::kContained:
      return countText(data_.count(gap, ReadKind::kContained)) + " contained";
    case Reason::kFewNear:
      return percent(flankShare(gap)) + " of the usual depth";
    case Reason::kEnough:
    case Reason::kPlaceholder:
    case Reason::kUnknown:
      break;
    case Reason::kNothingNear:
      if (const uint64_t large = refused(gap, Refusal::kSmallGap); large > 0) {
        return countText(large) + " refused, of large inserts";
      }
      break;
  }
  return "";
}

Judgement Judge::judge(std::size_t gap) const {
  const GapData& facts = data_.gaps[gap];
  const auto length = static_cast<double>(facts.length);
  Judgement judgement{expectedAt(length, static_cast<double>(facts.basesBefore),
                                 static_cast<double>(facts.basesBehind)),
                      data_.belonging(gap), Reason::kEnough, ""};
  const bool isFew = judgement.expected >= kLeastExpected &&
                     static_cast<double>(judgement.belonging) < kFewShare * judgement.expected;
  if (judgement.belonging == 0 || isFew) {
    judgement.reason = reasonOf(gap, judgement.expected, judgement.belonging);
    judgement.figure = figureOf(gap, judgement.reason);
  }
  return judgement;
}

std::vector<Judgement> judgeAll(const RunData& data, const Judge& judge) {
  std::vector<Judgement> all;
  all.reserve(data.gaps.size());
  for (std::size_t gap = 0; gap < data.gaps.size(); ++gap) all.push_back(judge.judge(gap));
  return all;
}

}  // namespace velk::report
