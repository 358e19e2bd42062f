// Headers of gzip members: all fields, in files of one member, and what may be wrong with them.
#include "streaming/gzipHeader.h"

#include <zlib.h>

#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

enum Flags : int { kText = 1, kChecksum = 2, kExtra = 4, kName = 8, kComment = 16 };
constexpr int kAllFlags = 32;  // beyond them

// A header with the fields that the flags name.
std::string header(int flags, const std::string& extra = "extra",
                   const std::string& name = "name") {
  std::string bytes("\x1f\x8b\x08\0\1\2\3\4\5\6", 10);
  bytes[3] = static_cast<char>(flags);
  if ((flags & kExtra) != 0) {
    bytes += static_cast<char>(extra.size() & 0xff);
    bytes += static_cast<char>(extra.size() >> 8);
    bytes += extra;
  }
  if ((flags & kName) != 0) bytes += name + '\0';
  if ((flags & kComment) != 0) bytes += "a comment\n" + std::string(1, '\0');
  if ((flags & kChecksum) != 0) {
    const auto checksum =
        crc32(0, reinterpret_cast<const Bytef*>(bytes.data()), static_cast<uInt>(bytes.size()));
    bytes += static_cast<char>(checksum & 0xff);
    bytes += static_cast<char>(checksum >> 8 & 0xff);
  }
  return bytes;
}

std::string withHeader(const std::string& bytes, const std::string& text) {
  constexpr std::size_t kUsualHeader = 10;  // bytes
  return bytes + gzipped(text).substr(kUsualHeader);
}

class GzipHeaders : public GzipWayTest {};

INSTANTIATE_GZIP_WAYS(GzipHeaders);

TEST_P(GzipHeaders, EverySetOfFields) {
  std::string file;
  std::string text;
  for (int flags = 0; flags < kAllFlags; ++flags) {
    const std::string member = withHeader(header(flags), "ACGT\n");
    EXPECT_EQ(inflateFile(member), (Inflated{"ACGT\n", ""})) << flags;
    file += member;
    text += "ACGT\n";
  }
  EXPECT_EQ(inflateFile(file), (Inflated{text, ""}));
}

TEST_P(GzipHeaders, FieldsOfAllLengths) {
  for (const std::size_t length : {0u, 1u, 255u, 256u, 65535u}) {
    const std::string extra(length, '\x1f');
    const std::string name(length, 'n');
    for (const int flags : {int{kExtra}, kExtra | kName, kExtra | kName | kComment | kChecksum}) {
      EXPECT_EQ(inflateFile(withHeader(header(flags, extra, name), "AC\n")),
                (Inflated{"AC\n", ""}));
    }
  }
}

TEST_P(GzipHeaders, CutAtEveryByte) {
  const std::string whole = header(kChecksum | kExtra | kName | kComment);
  for (std::size_t cut = 2; cut <= whole.size(); ++cut) {
    EXPECT_EQ(inflateFile(whole.substr(0, cut)), (Inflated{"", "unexpected end of file"})) << cut;
  }
}

TEST_P(GzipHeaders, WrongChecksum) {
  const std::string whole = header(kChecksum | kExtra | kName);
  for (std::size_t at = 4; at < whole.size(); ++at) {
    std::string changed = whole;
    changed[at] = static_cast<char>(changed[at] ^ 1);
    const std::string damage = inflateFile(withHeader(changed, "AC\n")).damage;
    EXPECT_NE(damage, "") << at;
    const bool movesNoField = at < 10 || at >= whole.size() - 2;
    if (movesNoField) {
      EXPECT_EQ(damage, "header crc mismatch") << at;
    }
  }
}

TEST_P(GzipHeaders, MethodAndFlagsAreJudgedTogether) {
  const Inflated cut{"", "unexpected end of file"};
  EXPECT_EQ(inflateFile("\x1f\x8b\x07"), cut);
  EXPECT_EQ(inflateFile("\x1f\x8b\x07\xff"), (Inflated{"", "unknown compression method"}));
  for (const char* flag : {"\x20", "\x40", "\x80"}) {
    EXPECT_EQ(inflateFile(std::string("\x1f\x8b\x08") + flag),
              (Inflated{"", "unknown header flags set"}));
  }
}

}  // namespace
}  // namespace velk::test
