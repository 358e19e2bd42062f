// A sink of placement that keeps all it receives, in the words of the plain model.
#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "placement/verdict.h"
#include "tests/placement/plainPlacement.h"

namespace velk::test {

class EventSink {
 public:
  static constexpr bool kTakesRefusals = true;

  void found(const Found& found, const std::string& bases);
  void anchored(const Anchored& anchored);
  void refused(const Refused& refused);

  const std::vector<PlainEvent>& events() const { return events_; }

 private:
  std::vector<PlainEvent> events_;
};

/// For messages of failed tests.
void PrintTo(const PlainEvent& event, std::ostream* out);

}  // namespace velk::test
