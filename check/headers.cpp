#include "check/headers.h"

#include <array>
#include <cctype>
#include <map>
#include <string_view>

#include "check/progress.h"
#include "check/readFile.h"
#include "contig/header.h"
#include "driver/textInput.h"
#include "driver/velk.h"

namespace velk::check {
namespace {

enum LetterKind : uint8_t { kBase, kLower, kGap, kReturn, kOther };

std::array<uint8_t, 256> makeKinds() {
  std::array<uint8_t, 256> kinds{};
  kinds.fill(kOther);
  for (const char c : std::string_view("ACGT")) kinds[static_cast<unsigned char>(c)] = kBase;
  for (char c = 'a'; c <= 'z'; ++c) kinds[static_cast<unsigned char>(c)] = kLower;
  kinds['N'] = kinds['n'] = kGap;
  kinds['\r'] = kReturn;
  return kinds;
}

void lookAt(const std::string& line, uint64_t number, AssemblyLines& lines) {
  static const std::array<uint8_t, 256> kKinds = makeKinds();
  for (const char c : line) {
    switch (kKinds[static_cast<unsigned char>(c)]) {
      case kBase:
        ++lines.bases;
        break;
      case kLower:
        ++lines.bases;
        lines.lowerCase.note(number);
        break;
      case kReturn:
        lines.returns.note(number);
        break;
      case kOther:
        lines.otherLetters.note(number);
        break;
      default:
        break;
    }
  }
}

std::string withoutReturn(const std::string& text) {
  return text.ends_with('\r') ? text.substr(0, text.size() - 1) : text;
}

// The id that a reader of the header would expect.
std::string expectedId(const std::string& header) {
  const std::string line = withoutReturn(header);
  std::string word = line.substr(1, line.find_first_of(" \t") - 1);
  if (word.starts_with(kScaffoldWord.substr(1)) || word.starts_with("Scaffold")) {
    word.erase(0, kScaffoldWord.size() - 1);
    return scaffold_file.empty() ? word.substr(0, word.rfind('_')) : word;
  }
  if (word.starts_with('C') && !scaffold_file.empty()) return line.substr(kLetterWord.size());
  return word;
}

// What is odd about ids, each kind with how often and where first.
struct IdFaults {
  Seen cut, empty, equal, underscore, tab, carriage, scattered;
};

IdFaults faultsOf(const std::vector<Header>& headers, const std::vector<std::string>& ids) {
  IdFaults faults;
  std::map<std::string, std::size_t> last;  // header met last with an id
  const bool isScaffolds = !scaffold_file.empty();
  for (std::size_t i = 0; i < headers.size() && i < ids.size(); ++i) {
    const uint64_t number = headers[i].number;
    const std::string expected = expectedId(headers[i].line);
    const std::string id = withoutReturn(ids[i]);
    if (id != ids[i]) faults.carriage.note(number);
    if (id.empty()) faults.empty.note(number);
    if (expected.find('_') != std::string::npos) faults.underscore.note(number);
    if (id.find('\t') != std::string::npos) faults.tab.note(number);
    // -c cuts ids at the first _, which has a finding of its own.
    const bool isCut = isScaffolds ? id != expected : id != expected.substr(0, expected.find('_'));
    if (isCut && !id.empty()) faults.cut.note(number);
    const auto before = last.find(ids[i]);
    if (before != last.end()) {
      if (isScaffolds) faults.equal.note(number);
      if (!isScaffolds && before->second + 1 != i) faults.scattered.note(number);
    }
    last[ids[i]] = i;
  }
  return faults;
}

}  // namespace

AssemblyLines readAssemblyLines(const std::string& file, bool isScaffolds) {
  AssemblyLines lines;
  TextInput input(file);
  Progress progress("reading " + file, factsOf(file).size);
  uint64_t bytes = 0;
  bool hasSequence = true;  // of the current scaffold
  for (std::string line; input.readLine(line);) {
    bytes += line.size() + 1;
    if (input.lineNumber() % 4096 == 0) progress.update(bytes);
    if (!line.starts_with('>') || (isScaffolds && !hasSequence)) {
      if (line.starts_with('>')) {
        lines.swallowed.note(input.lineNumber());
      } else {
        lookAt(line, input.lineNumber(), lines);
      }
      hasSequence = hasSequence || !line.empty();
    } else {
      lines.headers.push_back({line, input.lineNumber()});
      hasSequence = false;
    }
  }
  return lines;
}

void checkIds(Survey& survey, const std::string& file, const std::vector<Header>& headers,
              const std::vector<std::string>& ids) {
  const IdFaults faults = faultsOf(headers, ids);
  const auto add = [&](Id id, const Seen& seen) {
    if (seen.count == 0) return;
    std::string text =
        std::to_string(seen.count) + " of " + std::to_string(headers.size()) + " headers";
    for (std::size_t i = 0; i < headers.size() && i < ids.size(); ++i) {
      if (headers[i].number != seen.first) continue;
      text += ", first \"" + withoutReturn(headers[i].line).substr(0, 60) + "\" with the id \"" +
              withoutReturn(ids[i]).substr(0, 60) + "\"";
    }
    survey.findings.add(id, {file, seen.first}, text);
  };
  add("id-cut", faults.cut);
  add("id-empty", faults.empty);
  add("id-equal", faults.equal);
  add("id-scattered", faults.scattered);
  add("id-underscore", faults.underscore);
  add("id-tab", faults.tab);
  add("id-carriage-return", faults.carriage);
}

}  // namespace velk::check
