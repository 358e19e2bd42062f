#include "driver/listener.h"

#include <cstdlib>
#include <iostream>

namespace velk {
namespace {

// Prints to the standard streams and ends the process.
class StandardListener final : public Listener {
 public:
  void say(std::string_view text) override { std::cerr << text; }

  void complain(std::string_view text) override {
    std::cerr.clear();
    std::cerr << text;
  }

  [[noreturn]] void end(ExitStatus status, std::string_view message) override {
    complain(message);
    std::exit(status);
  }

  [[noreturn]] void endOnOutput(ExitStatus status, std::string_view text) override {
    std::cout << text << std::flush;
    std::exit(status);
  }
};

constinit StandardListener standardListener;

}  // namespace

constinit Listener* listener = &standardListener;

}  // namespace velk
