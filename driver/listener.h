// Who receives the messages of a run and its early end.
//
// The engine neither prints nor ends the process: it calls `listener`. The default is velk's own,
// which prints to the standard streams and exits. A program that has the engine inside it puts
// another in its place (ListenerInUse), whose end() may throw. Main thread only: a worker never
// calls it but reports to the main thread (streaming/workerPool.h).
#pragma once

#include <string_view>
#include <utility>

namespace velk {

/// The exit statuses of velk.
enum ExitStatus : int {
  kSuccess = 0,
  kUserError = 1,     // help, bad input, files that cannot be opened or written
  kMemoryError = 2,   // allocation failures of the driver, the splitter and the read streaming
  kHeaderError = 3,   // scaffold headers that cannot be understood
  kInputError = 255,  // stray argument, unreadable library file, bad contig input
};

class Listener {
 public:
  /// Takes a message of progress, or a warning: whole lines.
  virtual void say(std::string_view text) = 0;

  /// Takes a message about a failure after which the run goes on. velk's own writes it even where
  /// an earlier message could not be written.
  virtual void complain(std::string_view text) { say(text); }

  /// Takes the last message of a run that ends early. Ends the process, or throws.
  virtual void end(ExitStatus status, std::string_view message) = 0;

  /// The same with a text for standard output.
  virtual void endOnOutput(ExitStatus status, std::string_view text) { end(status, text); }

 protected:
  ~Listener() = default;  // nobody owns one
};

extern Listener* listener;  // velk's own; the one in use, written by ListenerInUse

/// Gives the listener in use a message of progress, or a warning.
inline void say(std::string_view text) {
  listener->say(text);
}

/// Puts `next` in the place of the listener in use, as long as it lives.
class ListenerInUse {
 public:
  explicit ListenerInUse(Listener& next) : before_(std::exchange(listener, &next)) {}
  ~ListenerInUse() { listener = before_; }
  ListenerInUse(const ListenerInUse&) = delete;
  ListenerInUse& operator=(const ListenerInUse&) = delete;

 private:
  Listener* before_;
};

}  // namespace velk
