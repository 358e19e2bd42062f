#include "check/recordReader.h"

#include "streaming/lineSource.h"

namespace velk::check {
namespace {

constexpr std::size_t kBlock = 256 << 10;  // bytes

}  // namespace

LineReader::LineReader(const std::string& file, bool isGzip) : isGzip_(isGzip) {
  if (isGzip) {
    gzip_.open(file);
  } else {
    plain_.open(file, std::ios::binary);
    buffer_.resize(kBlock);
  }
}

bool LineReader::refill() {
  if (isGzip_) {
    block_ = gzip_.next();
  } else {
    plain_.read(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    block_ = {buffer_.data(), static_cast<std::size_t>(plain_.gcount())};
  }
  return !block_.empty();
}

bool LineReader::next(std::string& line) {
  line.clear();
  if (block_.empty() && !refill()) return false;
  do {
    const std::size_t newline = block_.find('\n');
    hadNewline_ = newline != std::string_view::npos;
    const std::string_view piece = block_.substr(0, newline);
    line += piece;
    block_.remove_prefix(piece.size() + (hadNewline_ ? 1 : 0));
  } while (!hadNewline_ && refill());
  bytes_ += line.size() + (hadNewline_ ? 1 : 0);
  return true;
}

void LineReader::seekBehind(uint64_t offset) {
  plain_.clear();
  plain_.seekg(static_cast<std::streamoff>(offset));
  block_ = {};
  std::string rest;
  next(rest);
}

namespace {

// A line and its newline must go into the longest piece that velk takes of a gzip line.
constexpr std::size_t kLongestLine = GzipLineSource::kLongestPiece - 1;

// Lines within which a record must begin, wherever one starts to look.
constexpr int kLinesToRecord = 8;

bool isBlank(const std::string& line) {
  return line.find_first_not_of(" \t\r") == std::string::npos;
}

}  // namespace

RecordReader::RecordReader(const std::string& file, bool isGzip)
    : lines_(file, isGzip), isGzip_(isGzip) {
  hasPending_ = lines_.next(pending_);
  ended_ = !hasPending_;
  if (!pending_.empty()) letter_ = pending_.front();
}

bool RecordReader::nextLine(std::string& line) {
  if (hasPending_) {
    line.swap(pending_);
    hasPending_ = false;
  } else if (!lines_.next(line)) {
    ended_ = true;
    return false;
  }
  if (isGzip_ && line.size() > kLongestLine && !longLine_) {
    longLine_ = Fault{"gzip-line-long", records_ + 1,
                      "a line of " + std::to_string(line.size()) + " characters"};
  }
  return true;
}

void RecordReader::fail(Id id, const std::string& text) {
  if (offset_ == 0) {
    fault_ = Fault{id, records_ + 1, text};
  } else {
    fault_ = Fault{id, 0, text + ", behind byte " + std::to_string(offset_)};
  }
}

bool RecordReader::onlyBlankLinesLeft() {
  std::string line;
  while (nextLine(line)) {
    if (!isBlank(line)) return false;
  }
  return true;
}

bool RecordReader::next(Record& record) {
  if (fault_ || ended_) return false;
  if (!nextLine(record.header)) return false;
  if (isBlank(record.header)) {
    if (!onlyBlankLinesLeft()) fail("blank-lines", "a blank line stands where a header should");
    return false;
  }
  const bool isRead = letter_ == '>' ? nextFasta(record) : nextFastq(record);
  if (isRead) ++records_;
  return isRead;
}

bool RecordReader::nextFasta(Record& record) {
  if (record.header.front() != '>') {
    fail("fasta-wrapped", "a sequence line stands where a header should");
    return false;
  }
  if (!nextLine(record.bases)) {
    if (lines_.damage().empty()) fail("record-cut", "a header without a sequence line");
    return false;
  }
  if (record.bases.starts_with('>')) {
    fail("record-cut", "a header stands where a sequence should");
    return false;
  }
  return true;
}

bool RecordReader::nextFastq(Record& record) {
  if (record.header.front() != '@') {
    fail("fastq-lines", "a line that does not begin with @ stands where a header should");
    return false;
  }
  if (!nextLine(record.bases) || !nextLine(plus_) || !nextLine(qualities_)) {
    if (lines_.damage().empty()) fail("record-cut", "fewer than four lines");
    return false;
  }
  if (plus_.starts_with('+')) return true;
  if ((isBlank(record.bases) || isBlank(plus_))) {
    fail("blank-lines", "a blank line within the record");
  } else {
    fail("fastq-lines", "the third line does not begin with +");
  }
  return false;
}

void RecordReader::drain() {
  std::string line;
  while (nextLine(line)) {
  }
}

bool RecordReader::seekBehind(uint64_t offset) {
  lines_.seekBehind(offset);
  offset_ = offset;
  hasPending_ = ended_ = false;
  // A header of FASTQ is a line with @ whose next but one begins with +; qualities may begin with
  // either, so the line behind a candidate must not begin with @ itself.
  std::string first;
  std::string second;
  std::string third;
  if (!lines_.next(first) || !lines_.next(second)) return false;
  for (int i = 0; lines_.next(third); ++i) {
    if (i == kLinesToRecord) {
      fail(letter_ == '>' ? Id("fasta-wrapped") : Id("fastq-lines"),
           "no record begins within " + std::to_string(i) + " lines");
      return false;
    }
    const bool isFasta = letter_ == '>' && first.starts_with('>');
    const bool isFastq = letter_ == '@' && first.starts_with('@') && !second.starts_with('@') &&
                         third.starts_with('+');
    if (isFasta) {
      pending_ = third;
      hasPending_ = true;
      return true;
    }
    if (isFastq) return lines_.next(first);
    first.swap(second);
    second.swap(third);
  }
  return false;
}

}  // namespace velk::check
