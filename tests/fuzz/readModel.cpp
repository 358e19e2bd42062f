#include "tests/fuzz/readModel.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#include "tests/fuzz/fuzz.h"

namespace velk::fuzz {
namespace {

// Lines as std::getline finds them on a file stream.
class PlainLines {
 public:
  explicit PlainLines(std::string_view text) : text_(text) {}

  bool startsRecord() {
    if (hasMetEnd_) return false;
    std::string header;
    readInto(header);
    return true;
  }

  void readInto(std::string& target) {
    if (hasMetEnd_) return;
    const std::size_t newline = text_.find('\n');
    target = text_.substr(0, newline);
    hasMetEnd_ = newline == std::string_view::npos;
    text_.remove_prefix(hasMetEnd_ ? text_.size() : newline + 1);
  }

 private:
  std::string_view text_;
  bool hasMetEnd_ = false;
};

// Lines as gzgets gives them in a buffer of 1024 bytes.
class GzipLines {
 public:
  explicit GzipLines(std::string_view text) : text_(text) {}

  bool startsRecord() { return get(); }

  void readInto(std::string& target) {
    get();
    target = std::string(buffer_.c_str());
    if (!target.empty()) target.pop_back();
  }

 private:
  bool get() {
    if (text_.empty()) return false;
    const std::size_t length =
        std::min({text_.find('\n'), text_.size() - 1, std::size_t{1022}}) + 1;
    buffer_ = text_.substr(0, length);
    text_.remove_prefix(length);
    return true;
  }

  std::string_view text_;
  std::string buffer_;
};

template <class Lines>
ReadBatches batchesOfLines(const ReadShape& shape, Lines first, Lines second, std::size_t limit) {
  std::vector<std::string> slotsA(limit);
  std::vector<std::string> slotsB(shape.isPaired() ? limit : 0);
  ReadBatches batches;
  std::size_t n = 0;
  const auto handOver = [&] {
    const auto end = static_cast<std::ptrdiff_t>(n);
    ReadBatch& batch = batches.emplace_back();
    batch.a.assign(slotsA.begin(), slotsA.begin() + end);
    if (shape.isPaired()) batch.b.assign(slotsB.begin(), slotsB.begin() + end);
    n = 0;
  };
  std::string unused;
  while (first.startsRecord() && (shape.files == 1 || second.startsRecord())) {
    for (int line = 2; line <= shape.lines; ++line) {
      first.readInto(line == 2 ? slotsA[n] : line == shape.secondMate ? slotsB[n] : unused);
      if (shape.files == 2) second.readInto(line == 2 ? slotsB[n] : unused);
    }
    if (++n == limit) handOver();
  }
  if (n != 0) handOver();
  return batches;
}

void appendNumber(std::string& text, uint64_t number, int bytes) {
  for (int i = 0; i < bytes; ++i) text += static_cast<char>(number >> (8 * i) & 0xFF);
}

// Inflates the member that starts `file` onto `text`. Returns its length, 0 when it is damaged.
std::size_t inflateMember(std::string_view file, std::string& text) {
  z_stream stream{};
  require(inflateInit2(&stream, MAX_WBITS + 16) == Z_OK, "zlib does not start");
  std::string input(file);
  stream.next_in = reinterpret_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  int result = Z_OK;
  std::array<char, 16384> block;
  do {
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = block.size();
    result = inflate(&stream, Z_SYNC_FLUSH);
    text.append(block.data(), block.size() - stream.avail_out);
  } while (result == Z_OK && stream.avail_out == 0);
  const std::size_t used = file.size() - stream.avail_in;
  inflateEnd(&stream);
  return result == Z_STREAM_END ? used : 0;
}

}  // namespace

Inflated inflated(std::string_view file) {
  constexpr std::string_view kMark = "\x1f\x8b";
  if (!file.starts_with(kMark)) return {std::string(file), false};
  Inflated whole{"", false};
  while (file.starts_with(kMark)) {
    const std::size_t length = inflateMember(file, whole.bytes);
    if (length == 0) return {whole.bytes, true};
    file.remove_prefix(length);
  }
  whole.isDamaged = file.find_first_not_of('\0') != std::string_view::npos;
  return whole;
}

ReadBatches batchesOf(const ReadShape& shape, std::string_view first, std::string_view second,
                      std::size_t limit) {
  if (shape.isGzip) return batchesOfLines(shape, GzipLines(first), GzipLines(second), limit);
  return batchesOfLines(shape, PlainLines(first), PlainLines(second), limit);
}

std::string storedAsGzip(std::string_view text, std::size_t memberSize) {
  constexpr std::string_view kHeader("\x1f\x8b\x08\0\0\0\0\0\0\xff\x01",
                                     11);  // and: last block, stored
  std::string packed;
  do {
    const std::string_view part = text.substr(0, memberSize);
    text.remove_prefix(part.size());
    packed += kHeader;
    appendNumber(packed, part.size(), 2);
    appendNumber(packed, ~uint64_t{part.size()}, 2);
    packed += part;
    const auto* const bytes = reinterpret_cast<const Bytef*>(part.data());
    appendNumber(packed, crc32(0, bytes, static_cast<uInt>(part.size())), 4);
    appendNumber(packed, part.size(), 4);
  } while (!text.empty());
  return packed;
}

}  // namespace velk::fuzz
