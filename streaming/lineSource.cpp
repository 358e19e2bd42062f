#include "streaming/lineSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "driver/fatal.h"
#include "driver/velk.h"
#include "streaming/filesAhead.h"
#include "streaming/gzipInput.h"

namespace velk {
namespace {

constexpr std::size_t kPlainBlock = 256 << 10;  // bytes

}  // namespace

PlainLineSource::PlainLineSource(const std::string& file) : file_(file), blocks_(kPlainBlock) {}

bool PlainLineSource::startRecord() {
  if (atEnd_) return false;
  skipLine();
  return true;
}

void PlainLineSource::keepLine(std::string& entry) {
  if (atEnd_) return;
  entry.clear();
  do {
    entry += nextPiece();
  } while (!pieceEndsLine_ && !atEnd_);
}

void PlainLineSource::skipLine() {
  while (!atEnd_) {
    nextPiece();
    if (pieceEndsLine_) return;
  }
}

// The rest of the line as far as the block holds it; meets the end of the file when there is none.
std::string_view PlainLineSource::nextPiece() {
  pieceEndsLine_ = false;
  if (block_.empty()) {
    block_ = blocks_.next();
    if (blocks_.error() != 0) {
      errno = blocks_.error();
      failReading(file_);
    }
    if (block_.empty()) {
      atEnd_ = true;
      return {};
    }
  }
  const std::size_t newline = block_.find('\n');
  pieceEndsLine_ = newline != std::string_view::npos;
  const std::string_view piece = block_.substr(0, newline);
  block_.remove_prefix(piece.size() + (pieceEndsLine_ ? 1 : 0));
  return piece;
}

GzipLineSource::GzipLineSource(const std::string& file) : file_(file) {}

bool GzipLineSource::open() {
  if (filesAhead != nullptr) input_ = filesAhead->take(file_);
  if (input_ != nullptr) return true;
  input_ = std::make_unique<GzipInput>();
  if (!input_->open(file_)) {
    reportGzipDamage(file_, std::strerror(errno));
    isAtEnd_ = true;
  } else if (thread_num > 1) {
    input_->inflateAhead(inflatersFor(thread_num));
  }
  return true;
}

// Gets the next inflated bytes. Returns false at their end, and reports damage when it met it
// there.
bool GzipLineSource::refill() {
  if (isAtEnd_) return false;
  block_ = input_->next();
  isAtEnd_ = block_.empty();
  if (isAtEnd_ && !input_->damage().empty()) reportGzipDamage(file_, input_->damage());
  return !isAtEnd_;
}

// Reads the next line into line_, its '\n' included. Returns false, and leaves line_ as it was,
// when there are no more bytes.
bool GzipLineSource::readLine() {
  const std::string_view piece = block_.substr(0, kLongestPiece);
  const std::size_t newline = piece.find('\n');
  if (newline == std::string_view::npos && piece.size() < kLongestPiece) return gatherLine();
  line_ = piece.substr(0, newline == std::string_view::npos ? newline : newline + 1);
  block_.remove_prefix(line_.size());
  return true;
}

// Reads a line that does not end in the block, as far as there is room for it.
bool GzipLineSource::gatherLine() {
  const std::string_view before = block_.empty() ? line_ : block_;  // the block goes
  if (!before.empty()) std::memmove(gathered_.data(), before.data(), before.size());
  line_ = {gathered_.data(), before.size()};
  std::size_t length = block_.size();
  block_ = {};
  bool isWhole = false;
  while (!isWhole && length < kLongestPiece && (!block_.empty() || refill())) {
    std::string_view piece = block_.substr(0, kLongestPiece - length);
    const std::size_t newline = piece.find('\n');
    isWhole = newline != std::string_view::npos;
    if (isWhole) piece = piece.substr(0, newline + 1);
    std::copy(piece.begin(), piece.end(), gathered_.begin() + length);
    length += piece.size();
    block_.remove_prefix(piece.size());
  }
  if (length == 0) return false;
  line_ = {gathered_.data(), length};
  return true;
}

void GzipLineSource::keepLine(std::string& entry) {
  readLine();
  entry = line();
  if (!entry.empty()) entry.pop_back();
}

void GzipLineSource::finish() {
  while (refill()) {
  }
}

}  // namespace velk
