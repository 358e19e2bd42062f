// The FASTA reader of assemblies.
#include "run/assembly.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <set>
#include <string_view>

#include "reads/byteSource.h"
#include "run/failure.h"

namespace velk::run {
namespace {

constexpr std::size_t kLongestScaffold = 0x7FFFFFFF;  // bases, of a BAM file

// The upper case of each letter; 0 for what is none.
constexpr std::array<char, 256> makeLetters() {
  std::array<char, 256> letters{};
  for (char letter = 'A'; letter <= 'Z'; ++letter) {
    letters[static_cast<unsigned char>(letter)] = letter;
    letters[static_cast<unsigned char>(letter - 'A' + 'a')] = letter;
  }
  return letters;
}

constexpr std::array<char, 256> kLetters = makeLetters();

// Throws Failure where a file of this start is one of reads.
void refuseReads(const std::string& file, std::string_view start) {
  const bool isBam = start.starts_with(std::string_view("BAM\1", 4));
  if (!isBam && !start.starts_with('@')) return;
  throw Failure(Status::kUsage, file +
                                    (isBam ? " is a BAM file" : " begins with '@', as reads do") +
                                    "; the assembly is a FASTA file, and comes first");
}

class Reader {
 public:
  Reader(const std::string& file, AssemblyNotes& notes,
         const std::function<void(const std::string&, const std::string&)>& onScaffold)
      : file_(file), notes_(notes), onScaffold_(onScaffold) {}

  // Takes a line in, or a part of one: `isStart` and `isEnd` say which.
  void take(std::string_view part, bool isStart, bool isEnd) {
    if (isStart) {
      ++line_;
      isHeader_ = part.starts_with('>');
      if (isHeader_) {
        finish();
        header_.clear();
      }
    }
    if (isHeader_) {
      header_ += part;
      if (isEnd) begin();
    } else {
      addBases(part);
    }
  }

  // Ends the scaffold in work.
  void finish() {
    if (name_.empty()) return;
    if (bases_.empty()) {
      ++notes_.empty;
    } else {
      onScaffold_(name_, bases_);
    }
    name_.clear();
    bases_.clear();
  }

 private:
  [[noreturn]] void fail(const std::string& text) const {
    throw Failure(Status::kUsage, file_ + ", line " + std::to_string(line_) + ": " + text);
  }

  void begin() {
    if (header_.ends_with('\r')) ++notes_.carriageReturns;
    name_ = header_.substr(1, header_.find_first_of(" \t\r") - 1);
    if (name_.empty()) fail("a header without a name");
    if (const char c = forbiddenIn(name_); c != '\0') {
      fail("the name " + name_ + " has the character '" + c + "', which SAM files forbid there");
    }
    if (!names_.insert(name_).second) fail("a second scaffold with the name " + name_);
  }

  static bool isUsual(char upper) {
    return upper == 'A' || upper == 'C' || upper == 'G' || upper == 'T' || upper == 'N';
  }

  void addBases(std::string_view part) {
    if (name_.empty()) {
      if (part.find_first_not_of(" \t\r") == std::string_view::npos) return;
      refuseReads(file_, part);
      fail("sequence in front of the first header, which begins with '>'");
    }
    if (bases_.size() + part.size() > kLongestScaffold) {
      fail("scaffold " + name_ + " is longer than 2147483647 bases");
    }
    const std::size_t before = bases_.size();
    bases_.resize(before + part.size());
    auto end = bases_.begin() + static_cast<std::ptrdiff_t>(before);
    for (const char c : part) {
      const char upper = kLetters[static_cast<unsigned char>(c)];
      if (upper == 0) {
        if (c == '\r') ++notes_.carriageReturns;
        if (c == '\r' || c == ' ' || c == '\t') continue;
        fail(std::string("the character '") + c + "' is no base");
      }
      notes_.lowerCase += static_cast<uint64_t>(upper != c);
      notes_.otherLetters += static_cast<uint64_t>(!isUsual(upper));
      *end++ = upper;
    }
    bases_.erase(end, bases_.end());
  }

  const std::string& file_;
  AssemblyNotes& notes_;
  const std::function<void(const std::string&, const std::string&)>& onScaffold_;
  uint64_t line_ = 0;
  bool isHeader_ = false;
  std::string header_;
  std::string name_;  // of the scaffold in work; empty before the first
  std::string bases_;
  std::set<std::string> names_;
};

}  // namespace

char forbiddenIn(std::string_view name) {
  const auto isForbidden = [](char c) {
    return c < '!' || c > '~' || std::strchr("\\,\"`'()[]{}<>", c) != nullptr;
  };
  if (name.front() == '*' || name.front() == '=') return name.front();
  const auto found = std::find_if(name.begin(), name.end(), isForbidden);
  return found == name.end() ? '\0' : *found;
}

void requireNoReads(const std::string& file) {
  refuseReads(file, reads::openBytes(file, reads::Helpers::kNone)->next());
}

void readFasta(const std::string& file, AssemblyNotes& notes,
               const std::function<void(const std::string&, const std::string&)>& onScaffold) {
  const auto source = reads::openBytes(file, reads::Helpers::kNone);
  Reader reader(file, notes, onScaffold);
  bool isStart = true;
  for (std::string_view block = source->next(); !block.empty(); block = source->next()) {
    while (!block.empty()) {
      const std::size_t end = block.find('\n');
      const bool isEnd = end != std::string_view::npos;
      reader.take(block.substr(0, end), isStart, isEnd);
      block.remove_prefix(isEnd ? end + 1 : block.size());
      isStart = isEnd;
    }
  }
  if (!isStart) reader.take("", false, true);
  reader.finish();
}

}  // namespace velk::run
