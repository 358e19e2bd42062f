// The rules of the plain model for one hit: single reads, forward pairs, reverse pairs.
#include "tests/placement/plainPlacement.h"

namespace velk::test {
namespace {

int64_t lengthOf(const std::string& bases) {
  return static_cast<int64_t>(bases.size());
}

}  // namespace

int64_t PlainPlacement::single(const std::string& read, std::vector<TestRecord>& records) {
  for (const PlainHit& hit : hitsOf(read)) {
    if (placeSingle(hit, read, records)) return hit.i;
  }
  return lengthOf(read) - settings_.kmer + 1;
}

int64_t PlainPlacement::forward(const std::string& anchor, const std::string& mate,
                                std::vector<TestRecord>& records) {
  for (const PlainHit& hit : hitsOf(anchor)) {
    if (placeForward(hit, anchor, mate, records)) return hit.i;
  }
  return lengthOf(anchor) - settings_.kmer + 1;
}

int64_t PlainPlacement::reverse(const std::string& anchor, const std::string& mate,
                                std::vector<TestRecord>& records) {
  for (const PlainHit& hit : hitsOf(anchor)) {
    if (placeReverse(hit, anchor, mate, records)) return hit.i;
  }
  return lengthOf(anchor) - settings_.kmer + 1;
}

bool PlainPlacement::placeSingle(const PlainHit& hit, const std::string& read,
                                 std::vector<TestRecord>& records) {
  const int64_t contigs =
      static_cast<int64_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  const TestContig& contig = contigAt(hit.scaffold, c);
  if (hit.offset > 0 && c < contigs - 1) {
    if (!agreesOverRightEnd(contig.bases, read, hit.offset)) {
      meet("single: refused at the right end");
      return false;
    }
    meet("single: placed at the right end");
    record(hit, c + 1, read, hit.offset - lengthOf(contig.bases), records);
    return true;
  }
  if (hit.offset < 0 && c >= 1) {
    if (!agreesOverLeftEnd(contig.bases, read, hit.offset)) {
      meet("single: refused at the left end");
      return false;
    }
    meet("single: placed at the left end");
    record(hit, c, read, hit.offset + contig.gapBefore, records);
    return true;
  }
  meet(hit.offset == 0 ? "single: offset zero" : "single: no gap there");
  return false;
}

bool PlainPlacement::placeForward(const PlainHit& hit, const std::string& anchor,
                                  const std::string& mate, std::vector<TestRecord>& records) {
  const int64_t contigs =
      static_cast<int64_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  if (c == contigs - 1) {
    meet("forward: last contig");
    return false;
  }
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t gap = contigAt(hit.scaffold, c + 1).gapBefore;
  const int64_t offset = hit.offset;
  const int64_t insert = settings_.insert;
  const int64_t anchorLength = lengthOf(anchor);
  const int64_t mateLength = lengthOf(mate);
  const int64_t twoKmers = 2 * int64_t{settings_.kmer};
  const int64_t twoReads = 2 * int64_t{settings_.readLength};

  if (gap < settings_.bigGap && insert > settings_.bigGap) {
    meet("forward: guard");
    return true;
  }
  if (!agrees(contig.bases, anchor, offset)) {
    meet("forward: refused");
    return false;
  }
  meet("forward: settled");

  int64_t position = offset + insert - mateLength - length;
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
    record(hit, c + 1, mate, position, records);
  }

  if (c < contigs - 2) {
    const int64_t between = lengthOf(contigAt(hit.scaffold, c + 1).bases);
    const int64_t farGap = contigAt(hit.scaffold, c + 2).gapBefore;
    if (twoReads > between && twoReads < farGap && twoReads < length &&
        offset + insert > length + gap + between &&
        offset + insert - mateLength < length + gap + between + farGap) {
      meet("forward: mate in the far gap");
      record(hit, c + 2, mate, offset + insert - mateLength - length - gap - between, records);
    }
  }

  if (offset > 0 && anchorLength + offset > length) {
    meet("forward: anchor over the right edge");
    record(hit, c + 1, anchor, offset - length, records);
  } else if (offset < 0 && anchorLength + offset >= 1 && c >= 1) {
    meet("forward: anchor over the left edge");
    record(hit, c, anchor, contig.gapBefore + offset, records);
  }
  return true;
}

bool PlainPlacement::placeReverse(const PlainHit& hit, const std::string& anchor,
                                  const std::string& mate, std::vector<TestRecord>& records) {
  const uint32_t contigs =
      static_cast<uint32_t>(assembly_.at(static_cast<std::size_t>(hit.scaffold)).size());
  const int64_t c = hit.contig;
  if (c == 0) {
    meet("reverse: first contig");
    return false;
  }
  const TestContig& contig = contigAt(hit.scaffold, c);
  const int64_t length = lengthOf(contig.bases);
  const int64_t gap = contig.gapBefore;
  const int64_t offset = hit.offset;
  const int64_t insert = settings_.insert;
  const int64_t anchorLength = lengthOf(anchor);
  const int64_t mateLength = lengthOf(mate);
  const int64_t twoKmers = 2 * int64_t{settings_.kmer};
  const int64_t twoReads = 2 * int64_t{settings_.readLength};

  if (gap < settings_.bigGap && insert > settings_.bigGap) {
    meet("reverse: guard");
    return true;
  }
  if (!agrees(contig.bases, anchor, offset)) {
    meet("reverse: refused");
    return false;
  }
  meet("reverse: settled");

  int64_t position = gap + offset + anchorLength - insert;
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
    record(hit, c, mate, position, records);
  }

  if (c >= 2) {
    const TestContig& before = contigAt(hit.scaffold, c - 1);
    const int64_t between = lengthOf(before.bases);
    const int64_t farGap = before.gapBefore;
    if (twoReads > between && twoReads < farGap && twoReads < length &&
        offset + anchorLength + gap + between - insert < 0 &&
        insert - anchorLength - mateLength - offset - gap - between < farGap) {
      meet("reverse: mate in the far gap");
      record(hit, c - 1, mate, farGap + between + gap + offset + anchorLength - insert, records);
    }
  }

  if (offset > 0 && anchorLength + offset > length) {
    if (static_cast<uint32_t>(c) < contigs - 2U) {
      meet("reverse: anchor over the right edge");
      record(hit, c + 1, anchor, offset - length, records);
    } else {
      meet("reverse: anchor over the right edge of the last two");
    }
  } else if (offset < 0 && anchorLength + offset >= 1 && c >= 1) {
    meet("reverse: anchor over the left edge");
    record(hit, c, anchor, contig.gapBefore + offset, records);
  }
  return true;
}

}  // namespace velk::test
