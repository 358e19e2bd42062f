#include "check/libraryLines.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

#include "check/readFile.h"
#include "driver/textInput.h"
#include "driver/velk.h"
#include "libinfo/libinfo.h"

namespace velk::check {
namespace {

constexpr std::array<std::string_view, 8> kUsedKeys = {"avg_ins", "q1", "q2", "f1",
                                                       "f2",      "p",  "f",  "q"};
constexpr std::array<std::string_view, 7> kUnusedKeys = {
    "min_ins",   "max_ins",   "rd_len_cutoff", "reverse_seq",
    "asm_flags", "reads_sum", "pair_reads_sum"};

template <class Keys>
bool isOneOf(const Keys& keys, const std::string& key) {
  return std::find(keys.begin(), keys.end(), key) != keys.end();
}

std::string lowered(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

std::string trimmed(const std::string& text) {
  const std::size_t start = text.find_first_not_of(" \t\r");
  if (start == std::string::npos) return "";
  return text.substr(start, text.find_last_not_of(" \t\r") - start + 1);
}

// The fewest letters to change, add or leave out that turn one word into the other.
std::size_t editDistance(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);
  for (std::size_t j = 0; j < row.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= one.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j < row.size(); ++j) {
      const std::size_t change = diagonal + (one[i - 1] == other[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({change, row[j] + 1, row[j - 1] + 1});
    }
  }
  return row.back();
}

bool namesReads(const std::string& value) {
  const std::string name = lowered(trimmed(value));
  for (const char* ending : {".gz", ".fq", ".fastq", ".fa", ".fasta"}) {
    if (name.ends_with(ending)) return true;
  }
  return false;
}

bool isComment(const std::string& line) {
  const std::string text = trimmed(line);
  return text.empty() || text.front() == '#' || text.front() == ';' || text.starts_with("//");
}

class LineChecker {
 public:
  explicit LineChecker(Survey& survey) : findings_(survey.findings) {}

  void check(const std::string& line, uint64_t number) {
    place_ = {lib_file, number};
    std::string key;
    std::string value;
    if (line.find("[LIB]") != std::string::npos) {
      sections_.push_back({});
      sections_.back().line = number;
      checkTail(line.substr(line.find("[LIB]") + 5));
    } else if (splitColumn(line, key, value)) {
      checkKey(key, value, line);
    } else if (!isComment(line)) {
      checkOther(line);
    }
  }

  std::vector<Section> takeSections() { return std::move(sections_); }

 private:
  void checkTail(const std::string& tail) {
    if (isOneOf(kUsedKeys, lowered(trimmed(tail.substr(0, tail.find('='))))) &&
        tail.find('=') != std::string::npos) {
      findings_.add("section-tail", place_, "\"" + trimmed(tail) + "\"");
    }
  }

  void checkOther(const std::string& line) {
    if (lowered(line).find("[lib]") != std::string::npos) {
      findings_.add("section-case", place_, "\"" + trimmed(line) + "\"");
      return;
    }
    const std::string text = trimmed(line);
    const std::string first = lowered(text.substr(0, text.find_first_of(" \t:")));
    if (isOneOf(kUsedKeys, first)) findings_.add("line-without-equals", place_, quoted(text));
  }

  void checkKey(const std::string& key, const std::string& value, const std::string& line) {
    if (isComment(line)) return;
    const std::string plain = lowered(trimmed(key));
    const bool isUsed = isOneOf(kUsedKeys, plain);
    if (isUsed && sections_.empty()) {
      findings_.add("key-before-section", place_, quoted(trimmed(line)));
    } else if (isUsed && key != trimmed(key)) {
      findings_.add("key-blank", place_, quoted(key));
    } else if (isUsed && key != plain) {
      findings_.add("key-case", place_, quoted(key));
    } else if (isUsed) {
      take(key, value);
    } else if (isOneOf(kUnusedKeys, plain)) {
      findings_.add("key-unused", place_, quoted(trimmed(key)));
      if (key == "reverse_seq" && !sections_.empty()) sections_.back().reverse = place_.line;
    } else if (editDistance(plain, "avg_ins") <= 2 || namesReads(value)) {
      findings_.add("key-misspelt", place_, quoted(trimmed(key)));
    } else {
      findings_.add("key-unknown", place_, quoted(trimmed(key)));
    }
  }

  void take(const std::string& key, const std::string& value) {
    Section& section = sections_.back();
    if (key == "avg_ins") {
      section.inserts.push_back(place_.line);
      checkInsertText(value);
      return;
    }
    if (value != trimmed(value) && trimmed(value) + "\r" != value) {
      findings_.add("value-blank", place_, quoted(value));
    }
    if (key == "q1" || key == "f1") {
      section.firstMates.push_back(place_.line);
      section.secondMates.push_back(0);
    } else if (key == "q2" || key == "f2") {
      takeSecond(section);
    } else if (key == "p") {
      section.interleaved.push_back(place_.line);
    } else {
      (key == "f" ? section.singles : section.singlesQ).push_back(place_.line);
    }
  }

  void takeSecond(Section& section) {
    if (section.firstMates.empty()) {
      findings_.add("second-without-first", place_, "no q1 or f1 stands before it");
      return;
    }
    if (section.secondMates.back() != 0) {
      findings_.add("second-replaced", place_,
                    "it replaces line " + std::to_string(section.secondMates.back()));
    }
    section.secondMates.back() = place_.line;
  }

  void checkInsertText(const std::string& value) {
    const std::string digits = trimmed(value);
    const bool isSigned = digits.starts_with('-') || digits.starts_with('+');
    const std::string rest = digits.substr(isSigned ? 1 : 0);
    const bool isNumber =
        !rest.empty() &&
        std::all_of(rest.begin(), rest.end(), [](unsigned char c) { return std::isdigit(c) != 0; });
    if (isNumber && rest.size() < 10) return;
    findings_.add("insert-not-number", place_,
                  quoted(digits) + " is taken as " + std::to_string(lenientInt(value)));
  }

  static std::string quoted(const std::string& text) { return "\"" + text + "\""; }

  Findings& findings_;
  std::vector<Section> sections_;
  Place place_;
};

}  // namespace

std::vector<Section> checkLibraryLines(Survey& survey) {
  LineChecker checker(survey);
  TextInput input(lib_file);
  for (std::string line; input.readLine(line);) checker.check(line, input.lineNumber());
  return checker.takeSections();
}

}  // namespace velk::check
