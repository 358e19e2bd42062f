#include "check/refusal.h"

namespace velk::check {
namespace {

const Quiet* quietInUse = nullptr;

}  // namespace

Quiet::Quiet() : before_(std::cerr.rdbuf(text_.rdbuf())) {
  quietInUse = this;
}

Quiet::~Quiet() {
  std::cerr.rdbuf(before_);
  quietInUse = nullptr;
}

std::string Quiet::lastLine() const {
  std::string text = text_.str();
  while (text.ends_with('\n')) text.pop_back();
  return text.substr(text.rfind('\n') + 1);
}

namespace {

[[noreturn]] void refuse(int status) {
  throw Refusal{status, quietInUse == nullptr ? "" : quietInUse->lastLine()};
}

}  // namespace
}  // namespace velk::check

// The linker puts it in the place of velk::endRun(), and so it has a name of the linker's making.
// NOLINTNEXTLINE(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" [[noreturn]] void __wrap__ZN4velk6endRunEi(int status);
void __wrap__ZN4velk6endRunEi(int status) {
  velk::check::refuse(status);
}
