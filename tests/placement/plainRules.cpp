// The rules of the plain model for one hit: single reads, forward pairs, reverse pairs.
#include "tests/placement/plainPlacement.h"

namespace velk::test {
namespace {

int64_t lengthOf(const std::string& bases) {
  return static_cast<int64_t>(bases.size());
}

}  // namespace

int64_t PlainPlacement::single(const PlainRead& read, std::vector<TestRecord>& records) {
  refused_.clear();
  for (const PlainHit& hit : hitsOf(read.bases)) {
    if (placeSingle(hit, read, records)) return hit.i;
  }
  return lengthOf(read.bases) - settings_.kmer + 1;
}

int64_t PlainPlacement::forward(const PlainRead& anchor, const PlainRead& mate,
                                std::vector<TestRecord>& records) {
  refused_.clear();
  for (const PlainHit& hit : hitsOf(anchor.bases)) {
    if (placeForward(hit, anchor, mate, records)) return hit.i;
  }
  return lengthOf(anchor.bases) - settings_.kmer + 1;
}

int64_t PlainPlacement::reverse(const PlainRead& anchor, const PlainRead& mate,
                                std::vector<TestRecord>& records) {
  refused_.clear();
  for (const PlainHit& hit : hitsOf(anchor.bases)) {
    if (placeReverse(hit, anchor, mate, records)) return hit.i;
  }
  return lengthOf(anchor.bases) - settings_.kmer + 1;
}

bool PlainPlacement::placeSingle(const PlainHit& hit, const PlainRead& read,
                                 std::vector<TestRecord>& records) {
  const int64_t contigs =
      static_cast<int64_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  const TestContig& contig = contigAt(hit.scaffold, c);
  if (hit.offset > 0 && c < contigs - 1) {
    const std::string reason = overRightEnd(contig.bases, read.bases, hit.offset);
    if (!reason.empty()) {
      meet("single: refused at the right end");
      refuse(hit, read, reason, c + 1);
      return false;
    }
    meet("single: placed at the right end");
    const int64_t position = hit.offset - lengthOf(contig.bases);
    record(hit, "edge", c + 1, read, position, position, records);
    return true;
  }
  if (hit.offset < 0 && c >= 1) {
    const std::string reason = overLeftEnd(contig.bases, read.bases, hit.offset);
    if (!reason.empty()) {
      meet("single: refused at the left end");
      refuse(hit, read, reason, c);
      return false;
    }
    meet("single: placed at the left end");
    const int64_t position = hit.offset + contig.gapBefore;
    record(hit, "edge", c, read, position, position, records);
    return true;
  }
  meet(hit.offset == 0 ? "single: offset zero" : "single: no gap there");
  refuse(hit, read, hit.offset == 0 ? "at the first base" : "no gap");
  return false;
}

bool PlainPlacement::placeForward(const PlainHit& hit, const PlainRead& anchor,
                                  const PlainRead& mate, std::vector<TestRecord>& records) {
  const int64_t contigs =
      static_cast<int64_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  if (c == contigs - 1) {
    meet("forward: last contig");
    refuse(hit, anchor, "no gap");
    return false;
  }
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t gap = contigAt(hit.scaffold, c + 1).gapBefore;
  const int64_t offset = hit.offset;
  const int64_t insert = settings_.insert;
  const int64_t mateLength = lengthOf(mate.bases);
  const int64_t twoKmers = 2 * int64_t{settings_.kmer};
  const int64_t twoReads = 2 * int64_t{settings_.readLength};
  const int64_t unmoved = offset + insert - mateLength - length;

  if (gap < settings_.bigGap && insert > settings_.bigGap) {
    meet("forward: guard");
    refuse(hit, anchor, "small gap", c + 1, unmoved);
    return true;
  }
  const std::string reason = onContig(contig.bases, anchor.bases, offset);
  if (!reason.empty()) {
    meet("forward: refused");
    refuse(hit, anchor, reason, c + 1, unmoved);
    return false;
  }
  meet("forward: accepted");
  tellAnchor(hit, anchor, c + 1, unmoved);
  int64_t position = unmoved;
  if (-twoKmers - mateLength < position && position <= -mateLength) {
    meet("forward: moved to the gap's start");
    position = -mateLength;
  }
  if (position >= gap && position < gap + twoKmers) {
    meet("forward: moved to the gap's end");
    position = gap;
  }
  if (-mateLength <= position && position <= gap) {
    meet("forward: mate");
    record(hit, "mate", c + 1, mate, position, unmoved, records);
  }

  if (c < contigs - 2) {
    const int64_t between = lengthOf(contigAt(hit.scaffold, c + 1).bases);
    const int64_t farGap = contigAt(hit.scaffold, c + 2).gapBefore;
    if (twoReads > between && twoReads < farGap && twoReads < length &&
        offset + insert > length + gap + between &&
        offset + insert - mateLength < length + gap + between + farGap) {
      meet("forward: mate in the far gap");
      const int64_t far = offset + insert - mateLength - length - gap - between;
      record(hit, "gap beyond", c + 2, mate, far, far, records);
    }
  }

  recordForwardAnchor(hit, anchor, records);
  return true;
}

bool PlainPlacement::placeReverse(const PlainHit& hit, const PlainRead& anchor,
                                  const PlainRead& mate, std::vector<TestRecord>& records) {
  const int64_t c = hit.contig;
  if (c == 0) {
    meet("reverse: first contig");
    refuse(hit, anchor, "no gap");
    return false;
  }
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t gap = contig.gapBefore;
  const int64_t offset = hit.offset;
  const int64_t insert = settings_.insert;
  const int64_t anchorLength = lengthOf(anchor.bases);
  const int64_t mateLength = lengthOf(mate.bases);
  const int64_t twoKmers = 2 * int64_t{settings_.kmer};
  const int64_t twoReads = 2 * int64_t{settings_.readLength};
  const int64_t unmoved = gap + offset + anchorLength - insert;

  if (gap < settings_.bigGap && insert > settings_.bigGap) {
    meet("reverse: guard");
    refuse(hit, anchor, "small gap", c, unmoved);
    return true;
  }
  const std::string reason = onContig(contig.bases, anchor.bases, offset);
  if (!reason.empty()) {
    meet("reverse: refused");
    refuse(hit, anchor, reason, c, unmoved);
    return false;
  }
  meet("reverse: accepted");
  tellAnchor(hit, anchor, c, unmoved);
  int64_t position = unmoved;
  if (-twoKmers - mateLength < position && position <= -mateLength) {
    meet("reverse: moved to the gap's start");
    position = -mateLength;
  }
  if (position >= gap && position < gap + twoKmers) {
    meet("reverse: moved to the gap's end");
    position = gap;
  }
  if (-mateLength <= position && position <= gap) {
    meet("reverse: mate");
    record(hit, "mate", c, mate, position, unmoved, records);
  }

  if (c >= 2) {
    const TestContig& before = contigAt(hit.scaffold, c - 1);
    const int64_t between = lengthOf(before.bases);
    const int64_t farGap = before.gapBefore;
    if (twoReads > between && twoReads < farGap && twoReads < length &&
        offset + anchorLength + gap + between - insert < 0 &&
        insert - anchorLength - mateLength - offset - gap - between < farGap) {
      meet("reverse: mate in the far gap");
      const int64_t far = farGap + between + gap + offset + anchorLength - insert;
      record(hit, "gap beyond", c - 1, mate, far, far, records);
    }
  }

  recordReverseAnchor(hit, anchor, records);
  return true;
}

void PlainPlacement::recordForwardAnchor(const PlainHit& hit, const PlainRead& anchor,
                                         std::vector<TestRecord>& records) {
  const int64_t c = hit.contig;
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t offset = hit.offset;
  const int64_t anchorLength = lengthOf(anchor.bases);
  if (offset > 0 && anchorLength + offset > length) {
    meet("forward: anchor over the right edge");
    record(hit, "anchor", c + 1, anchor, offset - length, offset - length, records);
  } else if (offset < 0 && anchorLength + offset >= 1 && c >= 1) {
    meet("forward: anchor over the left edge");
    const int64_t inGap = contig.gapBefore + offset;
    record(hit, "anchor", c, anchor, inGap, inGap, records);
  }
}

void PlainPlacement::recordReverseAnchor(const PlainHit& hit, const PlainRead& anchor,
                                         std::vector<TestRecord>& records) {
  const uint32_t contigs =
      static_cast<uint32_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t offset = hit.offset;
  const int64_t anchorLength = lengthOf(anchor.bases);
  if (offset > 0 && anchorLength + offset > length) {
    if (static_cast<uint32_t>(c) < contigs - 2U) {
      meet("reverse: anchor over the right edge");
      record(hit, "anchor", c + 1, anchor, offset - length, offset - length, records);
    } else {
      meet("reverse: anchor over the right edge of the last two");
    }
  } else if (offset < 0 && anchorLength + offset >= 1 && c >= 1) {
    meet("reverse: anchor over the left edge");
    const int64_t inGap = contig.gapBefore + offset;
    record(hit, "anchor", c, anchor, inGap, inGap, records);
  }
}

}  // namespace velk::test
