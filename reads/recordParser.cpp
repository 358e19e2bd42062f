#include "reads/recordParser.h"

#include <cstring>

#include "reads/letters.h"

namespace velk::reads {
namespace {

const char* lineEnd(const char* from, const char* end) {
  return static_cast<const char*>(std::memchr(from, '\n', static_cast<std::size_t>(end - from)));
}

// Cuts lines off the front of a text.
class Lines {
 public:
  Lines(std::string_view text, bool isAll) : all_(text), rest_(text), isAll_(isAll) {}

  // Cuts off a line, less its end. Returns false when there is none: none is left, or it may go on.
  bool next(std::string_view& line) {
    const std::size_t newline = rest_.find('\n');
    if (newline == std::string_view::npos && (!isAll_ || rest_.empty())) return false;
    line = rest_.substr(0, newline);
    rest_.remove_prefix(newline == std::string_view::npos ? rest_.size() : newline + 1);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
      hadReturn_ = true;
    }
    return true;
  }

  std::string_view rest() const { return rest_; }
  std::size_t used() const { return all_.size() - rest_.size(); }
  bool hadReturn() const { return hadReturn_; }

  // What take() returns of a record whose end is missing: it goes on, unless this is all.
  std::size_t missing() const {
    if (isAll_) throw RecordFault("it is cut short");
    return 0;
  }

 private:
  std::string_view all_;
  std::string_view rest_;
  bool isAll_;
  bool hadReturn_ = false;
};

void expectMark(std::string_view text, char mark) {
  if (text.front() == mark) return;
  throw RecordFault("it begins with " + shown(text.front()) + ", not with " + shown(mark));
}

// Throws what is said of a line with which there are too many qualities, or that has none. A line
// that looks like a header was meant to be one.
[[noreturn]] void refuseLengths(std::size_t bases, std::size_t qualities, std::string_view line) {
  if (qualities == 0 || !line.starts_with('@')) qualities += line.size();
  throw RecordFault("it has " + std::to_string(bases) + " bases and " + std::to_string(qualities) +
                    " qualities");
}

}  // namespace

std::size_t RecordParser::take(std::string_view text, bool isAll, RecordView& record) {
  if (format_ == TextFormat::kFasta) return takeFasta(text, isAll, record);
  const std::size_t used = takeFourLines(text, record);
  return used != 0 ? used : takeFastq(text, isAll, record);
}

// Takes a record of four whole lines with bases, without a fault in its frame. Returns 0 for any
// other. The end of the last line is looked for where it must be: a quality has no line end within.
std::size_t RecordParser::takeFourLines(std::string_view text, RecordView& record) {
  const char* const end = text.data() + text.size();
  const char* const headerEnd = lineEnd(text.data(), end);
  if (headerEnd == nullptr || text.front() != '@') return 0;
  const char* const bases = headerEnd + 1;
  const char* const basesEnd = lineEnd(bases, end);
  if (basesEnd == nullptr || basesEnd + 1 == end || basesEnd[1] != '+') return 0;
  if (bases == basesEnd || *bases == '+') return 0;
  const bool isPlusAlone = end - basesEnd > 2 && basesEnd[2] == '\n';
  const char* const plusEnd = isPlusAlone ? basesEnd + 2 : lineEnd(basesEnd + 1, end);
  if (plusEnd == nullptr) return 0;
  const char* const quality = plusEnd + 1;
  auto length = static_cast<std::size_t>(basesEnd - bases);
  if (static_cast<std::size_t>(end - quality) <= length || quality[length] != '\n') return 0;
  const std::size_t used = static_cast<std::size_t>(quality - text.data()) + length + 1;

  const bool hasReturn = basesEnd[-1] == '\r';
  if (hasReturn) --length;
  if (length == 0 || (hasReturn && quality[length] != '\r')) return 0;
  if (!areQualities({quality, length})) return 0;
  const bool headerHasReturn = headerEnd[-1] == '\r';
  record.name = nameIn({text.data() + 1, headerEnd - (headerHasReturn ? 1 : 0)});
  record.bases = cleaned({bases, length});
  record.quality = {quality, length};
  countFixes(hasReturn || headerHasReturn, false);
  return used;
}

// Reports the first fault of a record, however much of it is at hand.
std::size_t RecordParser::takeFastq(std::string_view text, bool isAll, RecordView& record) {
  expectMark(text, '@');
  Lines lines(text, isAll);
  std::string_view header;
  if (!lines.next(header)) return lines.missing();
  record.name = nameIn(header.substr(1));
  std::string_view line;
  bases_.clear();
  uint64_t wraps = 0;  // lines behind the first one with bases
  for (;;) {
    if (!lines.next(line)) return lines.missing();
    if (line.starts_with('+')) break;
    if (!bases_.empty() && !line.empty()) ++wraps;
    bases_ += line;
  }
  record.bases = cleaned(bases_);
  quality_.clear();
  while (quality_.size() < bases_.size()) {
    if (!lines.next(line)) return lines.missing();
    if (line.empty() || line.size() > bases_.size() - quality_.size()) {
      refuseLengths(bases_.size(), quality_.size(), line);
    }
    quality_ += line;
  }
  if (!areQualities(quality_)) refuseQualities(quality_);
  record.quality = quality_;
  countFixes(lines.hadReturn(), wraps != 0);
  return lines.used();
}

std::size_t RecordParser::takeFasta(std::string_view text, bool isAll, RecordView& record) {
  expectMark(text, '>');
  Lines lines(text, isAll);
  std::string_view header;
  if (!lines.next(header) || lines.rest().empty()) return lines.missing();
  std::string_view bases;  // the first line of them, or all in bases_
  uint64_t wraps = 0;
  while (!lines.rest().starts_with('>')) {
    std::string_view line;
    if (lines.rest().empty() && isAll) break;
    if (!lines.next(line)) return 0;
    if (line.empty()) continue;
    if (bases.empty()) {
      bases = line;
      continue;
    }
    if (wraps++ == 0) bases_ = bases;
    bases_ += line;
  }
  record.name = nameIn(header.substr(1));
  record.bases = cleaned(wraps == 0 ? bases : std::string_view(bases_));
  record.quality = {};
  countFixes(lines.hadReturn(), wraps != 0);
  return lines.used();
}

// Returns the bases in upper case.
std::string_view RecordParser::cleaned(std::string_view bases) {
  wasLower_ = false;
  if (areUpperCase(bases)) return bases;
  wasLower_ = toUpperCase(bases, upper_);
  return upper_;
}

// Counts what was fixed in a record that is taken.
void RecordParser::countFixes(bool hadReturn, bool wasWrapped) {
  if (hadReturn) ++fixes_.carriageReturns;
  if (wasLower_) ++fixes_.lowerCase;
  if (wasWrapped) ++fixes_.wrapped;
}

}  // namespace velk::reads
