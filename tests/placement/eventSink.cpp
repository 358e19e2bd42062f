#include "tests/placement/eventSink.h"

#include <cstdlib>
#include <ostream>

#include "contig/contig.h"
#include "tests/placement/placementTest.h"

namespace velk::test {
namespace {

PlainEvent eventOf(const char* what, const Origin& origin, const Hit& hit) {
  return {what,
          {origin.entry, origin.mate, origin.isReversed},
          static_cast<int64_t>(hit.scaffold),
          static_cast<int64_t>(hit.contig),
          hit.offset,
          -1,
          0,
          {}};
}

const char* nameOf(RecordKind kind) {
  switch (kind) {
    case RecordKind::kEdge:
      return "record: edge";
    case RecordKind::kMate:
      return "record: mate";
    case RecordKind::kGapBeyond:
      return "record: gap beyond";
    case RecordKind::kAnchor:
      return "record: anchor";
  }
  std::abort();
}

const char* nameOf(Refusal reason) {
  switch (reason) {
    case Refusal::kNoGap:
      return "refused: no gap";
    case Refusal::kAtFirstBase:
      return "refused: at the first base";
    case Refusal::kInsideContig:
      return "refused: inside the contig";
    case Refusal::kSmallGap:
      return "refused: small gap";
    case Refusal::kShortOverlap:
      return "refused: short overlap";
    case Refusal::kUnlike:
      return "refused: unlike";
    case Refusal::kNone:
      break;
  }
  std::abort();
}

}  // namespace

void EventSink::found(const Found& found, const std::string& bases) {
  const GapPlace& place = found.place;
  const ContigInfo& behind = scaffoldInfo[found.hit.scaffold].contigsInfo[place.gap];
  PlainEvent event = eventOf(nameOf(place.kind), found.origin, found.hit);
  event.gap = static_cast<int64_t>(place.gap);
  event.unmoved = place.unmoved;
  event.record = {bases,          found.hit.scaffold, place.gap - 1,
                  place.position, behind.frontGapNum, behind.frontGapSize};
  events_.push_back(event);
}

void EventSink::anchored(const Anchored& anchored) {
  PlainEvent event = eventOf("anchored", anchored.origin, anchored.hit);
  event.gap = static_cast<int64_t>(anchored.gap);
  event.unmoved = anchored.matePosition;
  events_.push_back(event);
}

void EventSink::refused(const Refused& refused) {
  PlainEvent event = eventOf(nameOf(refused.reason), refused.origin, refused.hit);
  event.gap = refused.gap == 0 ? -1 : static_cast<int64_t>(refused.gap);
  event.unmoved = refused.matePosition;
  events_.push_back(event);
}

void PrintTo(const PlainEvent& event, std::ostream* out) {
  *out << event.what << ", entry " << event.origin.entry << ", mate " << event.origin.mate
       << (event.origin.isReversed ? " reversed" : "") << ", scaffold " << event.scaffold
       << ", contig " << event.contig << ", offset " << event.offset << ", gap " << event.gap
       << ", unmoved " << event.unmoved << ' ';
  PrintTo(event.record, out);
}

}  // namespace velk::test
