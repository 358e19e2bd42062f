#include "tests/reads/plainRecords.h"

#include <algorithm>
#include <cctype>
#include <sstream>

namespace velk::test {
namespace {

std::string wrapped(const std::string& text, const Writing& writing) {
  if (writing.width == 0) return text + writing.lineEnd;
  std::string lines;
  for (std::size_t at = 0; at < text.size() || at == 0; at += writing.width) {
    lines += text.substr(at, writing.width) + writing.lineEnd;
  }
  return lines;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

std::string upper(std::string text) {
  for (char& letter : text) letter = static_cast<char>(std::toupper(letter));
  return text;
}

}  // namespace

std::string written(const std::vector<Read>& reads, const Writing& writing) {
  std::string text;
  for (const Read& read : reads) {
    const std::string header = read.name + writing.comment;
    text += (writing.isFastq ? "@" : ">") + header + writing.lineEnd;
    text += wrapped(read.bases, writing);
    if (!writing.isFastq) continue;
    text += "+" + (writing.repeatsHeader ? header : "") + writing.lineEnd;
    text += wrapped(read.quality, writing);
  }
  if (!writing.endsWithLine && !reads.empty()) {
    text.resize(text.size() - writing.lineEnd.size());
  } else {
    for (std::size_t i = 0; i < writing.blankLines; ++i) text += writing.lineEnd;
  }
  return text;
}

std::vector<Read> plainRecords(const std::string& text) {
  std::vector<Read> reads;
  const std::vector<std::string> lines = linesOf(text);
  for (std::size_t at = 0; at < lines.size();) {
    const std::string header =
        lines[at].substr(std::min(lines[at].find_first_not_of('\r'), lines[at].size()));
    ++at;
    if (header.empty()) continue;
    const char mark = header.front();
    Read read;
    read.name = header.substr(1, header.find_first_of(" \t") - 1);
    const char next = mark == '@' ? '+' : '>';
    for (; at < lines.size() && (lines[at].empty() || lines[at].front() != next); ++at) {
      read.bases += upper(lines[at]);
    }
    if (mark == '@') {
      ++at;
      while (read.quality.size() < read.bases.size()) read.quality += lines.at(at++);
    }
    reads.push_back(read);
  }
  return reads;
}

}  // namespace velk::test
