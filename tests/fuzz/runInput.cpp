#include "tests/fuzz/runInput.h"

#include <algorithm>

#include "tests/fuzz/readModel.h"

namespace velk::fuzz {
namespace {

constexpr std::size_t kMostArguments = 30;
constexpr std::size_t kMostFiles = 8;
constexpr std::size_t kMember = 50;  // bytes of a gzip member
constexpr int64_t kMostSlots = 4000;

bool isPlainName(const std::string& name) {
  return !name.empty() && name.size() <= 20 && name != "." && name != ".." &&
         name.find('\0') == std::string::npos;
}

std::string gzipFileOf(const std::string& content) {
  if (content.starts_with("\x1f\x8b")) return content;
  return content.starts_with('!') ? content.substr(1) : storedAsGzip(content, kMember);
}

// The arguments without any -t, with small tables only.
std::vector<std::string> tamed(const std::vector<std::string>& lines) {
  std::vector<std::string> arguments;
  for (std::size_t i = 0; i < std::min(lines.size(), kMostArguments); ++i) {
    const std::string argument = lines[i].c_str();
    const bool isLetter = argument.size() > 1 && argument[0] == '-';
    if (isLetter && argument[1] == 't') {
      ++i;
      continue;
    }
    arguments.push_back(argument);
    if (isLetter && argument[1] == 'm' && i + 1 < lines.size()) {
      arguments.push_back(std::to_string(numberIn(lines[++i]) % kMostSlots));
    }
  }
  return arguments;
}

}  // namespace

RunInput runInput(Input input) {
  RunInput made;
  made.batch = 1 + input.next() % 8;
  std::string bytes(input.rest());
  std::replace(bytes.begin(), bytes.end(), '/', '_');
  const std::vector<std::string> parts = partsOf(bytes, '\f');
  made.arguments = tamed(linesOf(parts[0]));
  for (std::size_t i = 1; i < std::min(parts.size(), kMostFiles + 1); ++i) {
    const std::size_t end = std::min(parts[i].find('\n'), parts[i].size());
    const std::string name = parts[i].substr(0, end);
    if (!isPlainName(name)) continue;
    const std::string content = parts[i].substr(std::min(end + 1, parts[i].size()));
    made.files[name] = name.ends_with(".gz") ? gzipFileOf(content) : content;
  }
  return made;
}

}  // namespace velk::fuzz
