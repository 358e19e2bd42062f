#include "run/flanks.h"

#include <algorithm>
#include <bit>

#include "placement/edgeCheck.h"

namespace velk::run {

std::string flanksOf(const Assembly& assembly, uint64_t gap) {
  const Gap& place = assembly.gaps()[gap];
  std::string_view front = assembly.basesOf(place.scaffold, place.contigBehind - 1UL);
  std::string_view behind = assembly.basesOf(place.scaffold, place.contigBehind);
  front.remove_prefix(front.size() - std::min<std::size_t>(front.size(), kLongestFlank));
  behind = behind.substr(0, kLongestFlank);
  const std::string name = "gap" + std::to_string(gap);
  const std::string comment = "\tzg:i:" + std::to_string(gap) + "\n";
  std::string text = ">" + name + ":front" + comment;
  text.append(front).append("\n>" + name + ":behind" + comment).append(behind).append("\n");
  return text;
}

namespace {

// The aligned bases of a record.
int64_t alignedBases(const std::vector<uint32_t>& cigar) {
  constexpr uint32_t kMatch = 0;
  int64_t bases = 0;
  for (const uint32_t operation : cigar) {
    if ((operation & 15U) == kMatch) bases += operation >> 4;
  }
  return bases;
}

void noteReach(const Gap& gap, const OutRecord& record, Evidence& evidence) {
  const Stretch ofGap{static_cast<int64_t>(gap.start), static_cast<int64_t>(gap.end)};
  const Reached reached =
      reachInto(ofGap, {record.position, record.position + alignedBases(record.cigar)});
  const auto number = static_cast<uint64_t>(record.gap);
  evidence.addReach(number, Side::kFront, static_cast<uint64_t>(reached.front));
  evidence.addReach(number, Side::kBehind, static_cast<uint64_t>(reached.behind));
}

constexpr uint64_t kMarks = 64;  // of the text, in a word

// How many of the windows [from, to) are marked as repeated.
uint64_t repeatedIn(const ContigText& text, uint64_t from, uint64_t to) {
  uint64_t sum = 0;
  for (; from < to; from += kMarks) {
    uint64_t marks = text.repeatedMarksFrom(from);
    const uint64_t left = to - from;
    if (left < kMarks) marks &= (uint64_t{1} << left) - 1;
    sum += static_cast<uint64_t>(std::popcount(marks));
  }
  return sum;
}

}  // namespace

Reached reachInto(const Stretch& gap, const Stretch& read) {
  Reached reached;
  if (read.start <= gap.start && read.end > gap.start) {
    reached.front = std::min(read.end, gap.end) - gap.start;
  }
  if (read.end >= gap.end && read.start < gap.end) {
    reached.behind = gap.end - std::max(read.start, gap.start);
  }
  return reached;
}

void noteReaches(const Assembly& assembly, const std::vector<OutRecord>& records,
                 Evidence& evidence) {
  for (const OutRecord& record : records) {
    if (!record.isFound || record.certainty != Certainty::kExact || record.cigar.empty()) continue;
    noteReach(assembly.gaps()[static_cast<std::size_t>(record.gap)], record, evidence);
  }
}

void noteRepeats(const ContigText& text, const Assembly& assembly, const FlankReach& reach,
                 Evidence& evidence) {
  for (const TextContig& contig : text.contigs()) {
    const auto note = [&](uint64_t contigBehind, Side side) {
      const uint64_t gap = assembly.gapInFront(contig.scaffold, contigBehind);
      const bool isBig = assembly.gaps()[gap].length >= reach.bigGapLength;
      const uint64_t windows =
          std::min<uint64_t>(contig.windows, isBig ? reach.atBigGaps : reach.atOthers);
      const uint64_t from =
          side == Side::kBehind ? contig.firstWindow : contig.endWindow() - windows;
      evidence.setKmers(gap, side, windows, repeatedIn(text, from, from + windows));
    };
    if (contig.contig > 0) note(contig.contig, Side::kBehind);
    if (contig.contig + 1 < assembly.scaffolds()[contig.scaffold].contigs.size()) {
      note(contig.contig + 1, Side::kFront);
    }
  }
}

void GapWatch::refused(const Refused& refused, int64_t length, int64_t mateLength) {
  const Hit& hit = refused.hit;
  switch (refused.reason) {
    case Refusal::kNone:
    case Refusal::kNoGap:
    case Refusal::kAtFirstBase:
      return;
    case Refusal::kInsideContig:
      isAccepted_ = true;
      place(hit, length);
      return;
    case Refusal::kSmallGap:
      place(hit, length);
      break;
    case Refusal::kShortOverlap:
    case Refusal::kUnlike:
      break;
  }
  const ScaffoldInfo& info = assembly_.model()[hit.scaffold];
  // 1. The read itself runs over an end of the contig.
  if (hit.offset < 0 && hit.contig > 0) note(hit.scaffold, hit.contig, refused.reason);
  const bool isOverRight = hit.offset + length > lengthOf(info.contigsInfo[hit.contig].bases());
  if (isOverRight && hit.contig + 1 < info.contigsSum) {
    note(hit.scaffold, hit.contig + 1, refused.reason);
  }
  // 2. Its mate would lie in the gap.
  if (mateLength == 0 || refused.gap == 0) return;
  const int64_t gapLength = gapBefore(info.contigsInfo[refused.gap]);
  if (-mateLength < refused.matePosition && refused.matePosition < gapLength) {
    note(hit.scaffold, refused.gap, refused.reason);
  }
}

void GapWatch::note(uint64_t scaffold, uint64_t contigBehind, Refusal why) {
  const AtGap here{assembly_.gapInFront(scaffold, contigBehind), why};
  if (std::find(refused_.begin(), refused_.end(), here) == refused_.end()) {
    refused_.push_back(here);
  }
}

void GapWatch::anchored(const Hit& hit, int64_t length) {
  isAccepted_ = true;
  place(hit, length);
}

void GapWatch::place(const Hit& hit, int64_t length) {
  if (isPlaced_) return;
  isPlaced_ = true;
  const ScaffoldInfo& info = assembly_.model()[hit.scaffold];
  const int64_t behind =
      lengthOf(info.contigsInfo[hit.contig].bases()) - hit.offset - length;  // to the right end
  if (hit.offset < Evidence::kFlankBases && hit.contig > 0) {
    evidence_.addFlankRead(assembly_.gapInFront(hit.scaffold, hit.contig));
  }
  if (behind < Evidence::kFlankBases && hit.contig + 1 < info.contigsSum) {
    evidence_.addFlankRead(assembly_.gapInFront(hit.scaffold, hit.contig + 1));
  }
}

void GapWatch::endEntry(bool isFound) {
  if (isFound || isPlaced_) ++placedEntries_;
  if (!isFound && !isAccepted_) {
    for (const AtGap& one : refused_) evidence_.addRefused(one.gap, library_, one.why);
  }
  refused_.clear();
  isPlaced_ = false;
  isAccepted_ = false;
}

}  // namespace velk::run
