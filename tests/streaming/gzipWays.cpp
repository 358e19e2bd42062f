#include "tests/streaming/gzipWays.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <fstream>
#include <random>

#include "driver/velk.h"
#include "streaming/gzipInput.h"

namespace velk::test {

std::vector<GzipWay> gzipWays() {
  std::vector<GzipWay> ways;
  for (const InflateLibrary library : inflateLibraries()) {
    ways.push_back({library, false});
    ways.push_back({library, true});
  }
  return ways;
}

void PrintTo(const GzipWay& way, std::ostream* out) {
  *out << (way.library == InflateLibrary::kZlib ? "Zlib" : "Isal")
       << (way.isAhead ? "Ahead" : "InPlace");
}

GzipWayTest::GzipWayTest() {
  inflateLibrary = GetParam().library;
  thread_num = GetParam().isAhead ? 2 : 1;
}

GzipWayTest::~GzipWayTest() {
  inflateLibrary = usualLibrary_;
}

Inflated GzipWayTest::inflateFile(const std::string& content) {
  return velk::test::inflateFile(content, GetParam().isAhead ? 1 : 0);
}

namespace {

constexpr int kGzip = MAX_WBITS + 16;

Bytef* bytesOf(std::string& text) {
  return reinterpret_cast<Bytef*>(text.data());
}

std::string memberWithName(std::string text, std::string name) {
  z_stream stream{};
  gz_header header{};
  constexpr int kUnix = 3;
  header.os = kUnix;
  header.name = bytesOf(name);
  deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, kGzip, 8, Z_DEFAULT_STRATEGY);
  deflateSetHeader(&stream, &header);
  std::string member(deflateBound(&stream, text.size()) + name.size(), '\0');
  stream.next_in = bytesOf(text);
  stream.avail_in = static_cast<uInt>(text.size());
  stream.next_out = bytesOf(member);
  stream.avail_out = static_cast<uInt>(member.size());
  EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
  member.resize(member.size() - stream.avail_out);
  deflateEnd(&stream);
  return member;
}

}  // namespace

Inflated inflateFile(const std::string& content, int threads) {
  std::ofstream("input.gz", std::ios::binary) << content;
  GzipInput input;
  EXPECT_TRUE(input.open("input.gz"));
  if (threads > 0) input.inflateAhead(threads);
  Inflated result;
  for (std::string_view bytes = input.next(); !bytes.empty(); bytes = input.next()) {
    result.bytes += bytes;
  }
  EXPECT_TRUE(input.next().empty()) << "bytes behind the end";
  result.damage = input.damage();
  return result;
}

std::string bgzfMember(const std::string& text) {
  constexpr std::size_t kUsualHeader = 10;  // bytes
  constexpr std::size_t kMoreHeader = 8;
  std::string member = gzipped(text).substr(kUsualHeader);
  const std::size_t last = kUsualHeader + kMoreHeader + member.size() - 1;
  EXPECT_LE(last, 0xffffu);
  std::string header("\x1f\x8b\x08\x04\0\0\0\0\0\xff\x06\0BC\x02\0", 16);
  header += static_cast<char>(last & 0xff);
  header += static_cast<char>(last >> 8);
  return header + member;
}

std::string inflatedPart(const std::string& member) {
  std::string input = member;
  std::string output(400000, '\0');
  z_stream stream{};
  inflateInit2(&stream, kGzip);
  stream.next_in = bytesOf(input);
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = bytesOf(output);
  stream.avail_out = static_cast<uInt>(output.size());
  inflate(&stream, Z_SYNC_FLUSH);
  EXPECT_NE(stream.avail_out, 0u) << "member too large for this function";
  output.resize(output.size() - stream.avail_out);
  inflateEnd(&stream);
  return output;
}

std::string inflatedBlocks(const std::string& member) {
  std::string input = member;
  std::string output(800000, '\0');
  std::size_t whole = 0;
  z_stream stream{};
  inflateInit2(&stream, kGzip);
  stream.next_in = bytesOf(input);
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = bytesOf(output);
  stream.avail_out = static_cast<uInt>(output.size());
  int result = Z_OK;
  while (result == Z_OK) {
    result = inflate(&stream, Z_BLOCK);
    constexpr int kBehindBlock = 128;  // zlib's mark in data_type
    if (result == Z_STREAM_END || (result == Z_OK && (stream.data_type & kBehindBlock) != 0)) {
      whole = output.size() - stream.avail_out;
    }
  }
  EXPECT_NE(stream.avail_out, 0u) << "member too large for this function";
  inflateEnd(&stream);
  return output.substr(0, whole);
}

std::string memberOfSize(const std::string& text, std::size_t size) {
  const std::size_t withOneLetter = memberWithName(text, "n").size();
  EXPECT_GE(size, withOneLetter);
  std::string member = memberWithName(text, std::string(1 + size - withOneLetter, 'n'));
  EXPECT_EQ(member.size(), size);
  return member;
}

std::string noise(std::size_t size, unsigned seed) {
  std::mt19937 random(seed);
  std::string bytes(size, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random() & 0xff);
  return bytes;
}

}  // namespace velk::test
