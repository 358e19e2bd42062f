#include "tests/fuzz/fuzz.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <utility>

#include "libinfo/libinfo.h"
#include "streaming/gzipInput.h"
#include "streaming/inflater.h"
#include "tests/support/runParameters.h"

namespace velk::fuzz {
namespace {

const test::RunParameters kDefaults;

bool isBlank(char letter) {
  return letter == ' ' || (letter >= '\t' && letter <= '\r');
}

// All of `content`, which the system may take in pieces.
void writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = write(descriptor, content.data(), content.size());
    require(written > 0, "the target cannot write its files");
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

}  // namespace

void finding(std::string_view what) {
  std::fprintf(stderr, "FINDING: %.*s\n", static_cast<int>(what.size()), what.data());
  std::abort();
}

int Input::next() {
  if (rest_.empty()) return 0;
  const char first = rest_.front();
  rest_.remove_prefix(1);
  return first & 63;
}

std::vector<std::string> linesOf(std::string_view text) {
  std::vector<std::string> lines = partsOf(text, '\n');
  if (lines.back().empty()) lines.pop_back();
  return lines;
}

std::vector<std::string> partsOf(std::string_view text, char separator) {
  std::vector<std::string> parts(1);
  for (const char letter : text) {
    if (letter == separator) {
      parts.emplace_back();
    } else {
      parts.back() += letter;
    }
  }
  return parts;
}

int64_t numberIn(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size() && isBlank(text[at])) ++at;
  const bool isNegative = at < text.size() && text[at] == '-';
  if (at < text.size() && (text[at] == '-' || text[at] == '+')) ++at;
  const uint64_t most = uint64_t{std::numeric_limits<int64_t>::max()} + (isNegative ? 1 : 0);
  uint64_t number = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at) {
    const auto digit = static_cast<uint64_t>(text[at] - '0');
    number = number > (most - digit) / 10 ? most : 10 * number + digit;
  }
  return static_cast<int64_t>(isNegative ? 0 - number : number);
}

int intIn(std::string_view text) {
  return static_cast<int>(numberIn(text));
}

void Said::end(ExitStatus status, std::string_view message) {
  errors_ += message;
  throw RunEnded{status};
}

void Said::endOnOutput(ExitStatus status, std::string_view text) {
  output_ += text;
  throw RunEnded{status};
}

MemoryFile::MemoryFile()
    : descriptor_(memfd_create("velk", MFD_CLOEXEC)),
      name_("/proc/self/fd/" + std::to_string(descriptor_)) {
  require(descriptor_ >= 0, "no file in memory");
}

MemoryFile::~MemoryFile() {
  close(descriptor_);
}

void MemoryFile::fill(std::string_view content) const {
  require(ftruncate(descriptor_, 0) == 0 && lseek(descriptor_, 0, SEEK_SET) == 0,
          "the target cannot empty its file");
  writeAll(descriptor_, content);
}

void writeFile(const std::string& name, std::string_view content) {
  const int descriptor = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  require(descriptor >= 0, "the target cannot open its files");
  writeAll(descriptor, content);
  close(descriptor);
}

std::string contentOf(const std::string& name) {
  const int descriptor = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  require(descriptor >= 0, "a file that velk should have written is not there");
  std::string content;
  std::array<char, 4096> block;
  ssize_t got = 0;
  while ((got = read(descriptor, block.data(), block.size())) > 0) {
    content.append(block.data(), static_cast<std::size_t>(got));
  }
  close(descriptor);
  require(got == 0, "a file that velk should have written cannot be read");
  return content;
}

void startAfresh() {
  kDefaults.restore();
  forgetFiles();
  forgetGzipDamage();
  releaseSingleQuals();
  inflateLibrary = InflateLibrary::kZlib;  // the models', and exact; `inflate` compares the others
}

}  // namespace velk::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  velk::fuzz::startAfresh();
  velk::fuzz::tryInput(velk::fuzz::Input(data, size));
  return 0;
}
