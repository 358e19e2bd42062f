#include "check/lineReader.h"

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

}  // namespace velk::check
