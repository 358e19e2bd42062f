// Cuts one scaffold into contigs at its runs of N.
#include <algorithm>
#include <cstddef>
#include <ostream>

#include "contig/contig.h"
#include "contig/header.h"
#include "driver/fatal.h"
#include "driver/velk.h"

namespace velk {
namespace {

bool isGapLetter(char letter) {
  return letter == 'N' || letter == 'n';
}

// A maximal stretch of bases between gaps: [start, end) in the scaffold sequence.
struct Run {
  std::size_t start;
  std::size_t end;

  std::size_t length() const { return end - start; }
};

// The run that begins at or after `position`; empty at the end of the sequence when there is none.
Run nextRun(const std::string& sequence, std::size_t position) {
  const auto from = sequence.begin() + static_cast<std::ptrdiff_t>(position);
  const auto start = std::find_if_not(from, sequence.end(), isGapLetter);
  const auto end = std::find_if(start, sequence.end(), isGapLetter);
  return {static_cast<std::size_t>(start - sequence.begin()),
          static_cast<std::size_t>(end - sequence.begin())};
}

// What decides which runs become contigs and what of them stays.
struct SplitLimits {
  int64_t shortest;    // CONTIGLEN
  int64_t cut;         // CuttEdge
  int64_t readLength;  // readLen
};

// KEPT: a short last run stays, unless a gap follows it (SplitScaffold.ShortLastRunIsKept)
bool isKept(const Run& run, bool isFirst, std::size_t sequenceLength, const SplitLimits& limits) {
  return isFirst || static_cast<int64_t>(run.length()) >= limits.shortest ||
         run.end == sequenceLength;
}

// The number of contigs that get a slot.
uint32_t countKept(const std::string& sequence, const SplitLimits& limits) {
  uint32_t kept = 0;
  for (Run run = nextRun(sequence, 0); run.length() > 0; run = nextRun(sequence, run.end)) {
    const bool isFirst = kept == 0;
    // KEPT: a single last base behind a gap gets no slot (SplitScaffold.SingleFinalBaseHasNoSlot)
    const bool isSingleLastBase = run.length() == 1 && run.end == sequence.size() && !isFirst;
    if (isKept(run, isFirst, sequence.size(), limits) && !isSingleLastBase) ++kept;
  }
  return kept;
}

// The part of a kept run that stays after both ends have been cut; all of a short run.
Run trimmed(const Run& run, const SplitLimits& limits) {
  const auto length = static_cast<int64_t>(run.length());
  if (limits.cut == 0 || 2 * (limits.readLength + limits.cut) > length) return run;
  const auto cut = static_cast<std::size_t>(limits.cut);
  return {run.start + cut, run.end - cut};
}

}  // namespace

void splitScaffold(ScaffoldInfo* scaffoldInfo, const std::string& scaffoldSeq,
                   // cppcheck-suppress constParameter ; always been declared so
                   const std::string& scaffoldId, uint32_t& scaffoldNum, uint64_t& gapNum,
                   std::ostream& contigPosOutfile) {
  const SplitLimits limits{CONTIGLEN, CuttEdge, readLen};
  ScaffoldInfo& info = scaffoldInfo[scaffoldNum];
  info.scaffoldId = scaffoldId;
  info.contigsSum = countKept(scaffoldSeq, limits);
  info.contigsInfo = allocateArray<ContigInfo>(
      info.contigsSum, {__LINE__, "splitScaffold", kMemoryError, ". Function: ", ".\n"});

  ContigInfo noSlot{};  // stands in for a contig behind the last slot
  uint32_t k = 0;       // index of the next contig
  const auto slot = [&]() -> ContigInfo& {
    return k < info.contigsSum ? info.contigsInfo[k] : noSlot;
  };
  for (Run run = nextRun(scaffoldSeq, 0); run.length() > 0;) {
    uint64_t pendingGap = 0;
    if (isKept(run, k == 0, scaffoldSeq.size(), limits)) {
      requireContigLength(run.length(), scaffold_file, scaffoldId, kHeaderError);
      const Run kept = trimmed(run, limits);
      slot().contigSeq = scaffoldSeq.substr(kept.start, kept.length());
      // KEPT: the bases cut from a contig's end are in no gap (SplitScaffold.OnlyTheFrontCutCounts)
      slot().frontGapSize += kept.start - run.start;
      contigPosOutfile << scaffoldId << '\t' << k << '\t' << kept.start << '\t' << kept.end << '\n';
      ++k;
    } else {
      pendingGap = slot().frontGapSize + run.length();
      --gapNum;
    }
    const Run next = nextRun(scaffoldSeq, run.end);
    pendingGap += next.start - run.end;
    if (next.length() > 0) {
      slot().frontGapNum = gapNum++;
      slot().frontGapSize = pendingGap;
    }
    run = next;
  }
}

}  // namespace velk
