#include "check/refusal.h"

namespace velk::check {

void RefusingListener::end(ExitStatus status, std::string_view message) {
  while (message.ends_with('\n')) message.remove_suffix(1);
  throw Refusal{status, std::string(message)};
}

}  // namespace velk::check
