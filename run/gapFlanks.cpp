#include "run/gapFlanks.h"

#include <algorithm>
#include <bit>

namespace velk::run {
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

}  // namespace velk::run
