// velk's own code at work inside velk-check: its messages are dropped, its early ends become
// exceptions.
#pragma once

#include <string>
#include <string_view>

#include "driver/listener.h"

namespace velk::check {

/// velk's code would have ended the run with this message (without its last newline).
struct Refusal {
  int status;
  std::string message;
};

/// The listener of velk-check: it drops messages and throws Refusal.
class RefusingListener final : public Listener {
 public:
  void say(std::string_view /*text*/) override {}
  [[noreturn]] void end(ExitStatus status, std::string_view message) override;
};

}  // namespace velk::check
