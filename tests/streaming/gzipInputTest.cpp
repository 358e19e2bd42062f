// The bytes of whole gzip files, however they are cut into members and blocks.
#include "streaming/gzipInput.h"

#include <zlib.h>

#include "streaming/gzipDecoder.h"
#include "tests/streaming/gzipWays.h"

namespace velk::test {
namespace {

constexpr std::size_t kRawBlock = 131072;       // bytes that GzipInput reads at once
constexpr std::size_t kInflatedBlock = 262144;  // bytes that it hands out at once

class GzipBytes : public GzipWayTest {
 protected:
  static void expectWhole(const std::string& file, const std::string& bytes) {
    const Inflated inflated = inflateFile(file);
    EXPECT_EQ(inflated.damage, "");
    // No EXPECT_EQ, which would print large texts.
    EXPECT_EQ(inflated.bytes.size(), bytes.size());
    EXPECT_TRUE(inflated.bytes == bytes);
  }
};

INSTANTIATE_GZIP_WAYS(GzipBytes);

TEST_P(GzipBytes, OneMember) {
  expectWhole(gzipped(">1\nACGT\n"), ">1\nACGT\n");
}

TEST_P(GzipBytes, SeveralMembers) {
  expectWhole(gzipped("AC") + gzipped("G\nT") + gzipped("T\n"), "ACG\nTT\n");
}

TEST_P(GzipBytes, EmptyMembers) {
  expectWhole(gzipped(""), "");
  expectWhole(gzipped("") + gzipped("AC\n"), "AC\n");
  expectWhole(gzipped("AC\n") + gzipped("") + gzipped("") + gzipped("GT\n"), "AC\nGT\n");
  expectWhole(gzipped("AC\n") + gzipped(""), "AC\n");
}

TEST_P(GzipBytes, MemberBoundaryAroundTheEndOfABlock) {
  // From the whole trailer of the first member in the second block to the whole header of the
  // second member in the first block.
  const std::string first = noise(kRawBlock - 300, 1);
  const std::string second = "ACGT\n";
  for (int shift = -14; shift <= 12; ++shift) {
    SCOPED_TRACE(shift);
    const std::size_t size = static_cast<std::size_t>(static_cast<int>(kRawBlock) + shift);
    expectWhole(memberOfSize(first, size) + gzipped(second), first + second);
  }
}

TEST_P(GzipBytes, MemberThatEndsWithABlockAndTheFile) {
  const std::string bytes = noise(kRawBlock - 300, 2);
  expectWhole(memberOfSize(bytes, kRawBlock), bytes);
  const std::string more = noise(2 * kRawBlock - 400, 3);
  expectWhole(memberOfSize(more, 2 * kRawBlock), more);
}

TEST_P(GzipBytes, OutputAroundOneBlock) {
  for (const std::size_t size : {kInflatedBlock - 1, kInflatedBlock, kInflatedBlock + 1}) {
    const std::string bytes(size, 'A');
    expectWhole(gzipped(bytes), bytes);
    expectWhole(gzipped(bytes) + gzipped("C"), bytes + "C");
  }
}

TEST_P(GzipBytes, OutputOfManyBlocks) {
  const std::string even(5 * kInflatedBlock + 17, 'G');  // much output from little input
  expectWhole(gzipped(even), even);
  const std::string uneven = noise(3 * kInflatedBlock + 17, 4);
  expectWhole(gzipped(uneven) + gzipped(even), uneven + even);
}

TEST_P(GzipBytes, PlainContent) {
  expectWhole(">1\nACGT\n", ">1\nACGT\n");
  const std::string large = std::string(3 * kRawBlock + 5, 'C') + "\n";
  expectWhole(large, large);
  expectWhole(std::string(kRawBlock, 'C'), std::string(kRawBlock, 'C'));
}

TEST_P(GzipBytes, PlainContentStaysPlainToItsEnd) {
  const std::string file = ">1\nAC\n" + gzipped("GT\n");
  expectWhole(file, file);
}

TEST_P(GzipBytes, FileOfOneByte) {
  expectWhole("A", "A");
  expectWhole("\x1f", "\x1f");
  expectWhole(std::string(1, '\0'), std::string(1, '\0'));
}

TEST_P(GzipBytes, EmptyFile) {
  expectWhole("", "");
}

TEST_P(GzipBytes, NulPadding) {
  expectWhole(gzipped("AC\n") + std::string(1, '\0'), "AC\n");
  expectWhole(gzipped("AC\n") + std::string(512, '\0'), "AC\n");
  expectWhole(gzipped("AC\n") + std::string(3 * kRawBlock, '\0'), "AC\n");
}

TEST_P(GzipBytes, OptionalHeaderFields) {
  expectWhole(memberOfSize("ACGT\n", 3000) + memberOfSize("AC\n", 300000), "ACGT\nAC\n");
}

TEST_P(GzipBytes, FileThatCannotBeOpened) {
  GzipInput input;
  EXPECT_FALSE(input.open("missing.gz"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(input.next().empty());
  EXPECT_EQ(input.damage(), "");
}

// Headers of gzip members: all fields, in files of one member, and what may be wrong with them.

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

// Damaged gzip files: every byte that inflates is handed out, and the damage has a name.

constexpr const char* kCut = "unexpected end of file";
constexpr const char* kTrailing = "trailing bytes after the last member";
constexpr std::size_t kTrailer = 8;  // bytes: checksum and length

class GzipDamage : public GzipWayTest {
 protected:
  // Three members, the middle one of several deflate symbols.
  const std::string texts_[3] = {">1\nACGTACGTTGCA\n", randomBases(600, 5) + "\n", ">2\nTTGACA\n"};
  const std::string members_[3] = {gzipped(texts_[0]), gzipped(texts_[1]), gzipped(texts_[2])};

  static std::string flipped(std::string bytes, std::size_t at, unsigned mask) {
    bytes[at] = static_cast<char>(static_cast<unsigned char>(bytes[at]) ^ mask);
    return bytes;
  }

  // What is handed out of a file: `before`, and behind it of the damaged `member` all that zlib
  // makes of it. ISA-L may stop elsewhere in the damaged block, but hands out those before it.
  static void expectPart(const std::string& bytes, const std::string& before,
                         const std::string& member) {
    if (isZlib()) {
      EXPECT_TRUE(bytes == before + inflatedPart(member));
    } else {
      EXPECT_TRUE(bytes.starts_with(before + inflatedBlocks(member)));
    }
  }
};

INSTANTIATE_GZIP_WAYS(GzipDamage);

TEST_P(GzipDamage, FileCutAtEveryByte) {
  std::string before;  // the members before the cut one
  std::string text;
  for (int i = 0; i < 3; ++i) {
    for (std::size_t cut = 1; cut < members_[i].size(); ++cut) {
      SCOPED_TRACE(::testing::Message() << "member " << i << " cut to " << cut << " bytes");
      const std::string part = members_[i].substr(0, cut);
      const Inflated inflated = inflateFile(before + part);
      if (cut == 1 && i == 0) {
        EXPECT_EQ(inflated, (Inflated{part, ""}));  // one byte makes no gzip file
      } else if (cut == 1) {
        EXPECT_EQ(inflated, (Inflated{text, kTrailing}));
      } else {
        EXPECT_EQ(inflated.damage, kCut);
        expectPart(inflated.bytes, text, part);
      }
    }
    before += members_[i];
    text += texts_[i];
    EXPECT_EQ(inflateFile(before), (Inflated{text, ""}));
  }
}

// ISA-L looks up two or three letters at a time, and knows no part of them.
TEST_P(GzipDamage, AllButTwoBytesBeforeACut) {
  for (std::size_t cut = 2; cut < members_[1].size(); ++cut) {
    const std::string part = members_[1].substr(0, cut);
    const std::string bytes = inflateFile(part).bytes;
    const std::string most = inflatedPart(part);
    EXPECT_TRUE(most.starts_with(bytes)) << cut;
    EXPECT_GE(bytes.size() + 2, most.size()) << cut;
  }
}

// What is inflated before the damage is met may have no room in the block that is handed out.
TEST_P(GzipDamage, DamageBehindTheEndOfABlock) {
  constexpr std::size_t kBlock = 262144;  // bytes that are handed out at once
  for (std::size_t missing : {0u, 1u, 2u, 100u, 500u, 599u, 600u, 601u, 700u}) {
    const std::string front(kBlock - missing, 'C');
    // Two blocks, the second of no type that there is.
    std::string damaged("\x1f\x8b\x08\0\0\0\0\0\0\x03\0\x58\x02\xa7\xfd", 15);
    damaged += texts_[1].substr(0, 600) + "\x07";
    const Inflated inflated = inflateFile(gzipped(front) + damaged);
    EXPECT_EQ(inflated.damage, "invalid compressed data");
    EXPECT_TRUE(inflated.bytes == front + texts_[1].substr(0, 600)) << missing;
  }
}

TEST_P(GzipDamage, LargeFileCutInItsSecondBlock) {
  const std::string bytes = noise(300000, 6);
  const std::string member = gzipped(bytes);
  const Inflated inflated = inflateFile(member.substr(0, 200000));
  EXPECT_EQ(inflated.damage, kCut);
  EXPECT_GT(inflated.bytes.size(), 199000u);
  EXPECT_TRUE(bytes.starts_with(inflated.bytes));
}

// A few bytes of such a file stand for more than a block of output: none of it is lost.
TEST_P(GzipDamage, MuchOutputFromTheLastBytesBeforeTheCut) {
  const std::string member = gzipped(std::string(300000, 'A'));
  for (std::size_t cut = 2; cut < member.size(); ++cut) {
    const std::string part = member.substr(0, cut);
    const Inflated inflated = inflateFile(part);
    EXPECT_EQ(inflated.damage, kCut) << cut;
    expectPart(inflated.bytes, "", part);
  }
}

// No byte can be changed unseen, but for the fields of the header that say nothing of the content.
TEST_P(GzipDamage, EveryBitFlipped) {
  const std::string text = texts_[0] + texts_[1];
  const std::string file = members_[0] + members_[1];
  for (std::size_t at = 0; at < file.size(); ++at) {
    for (unsigned mask = 1; mask < 0x100; mask <<= 1) {
      if (GetParam().isAhead && mask != 1U << at % 8) continue;  // a thread for each is much
      SCOPED_TRACE(::testing::Message() << "byte " << at << ", mask " << mask);
      const std::string changed = flipped(file, at, mask);
      const Inflated inflated = inflateFile(changed);
      if (at < 2) {
        EXPECT_EQ(inflated, (Inflated{changed, ""}));  // no gzip file at all
      } else if (inflated.damage.empty()) {
        EXPECT_EQ(inflated.bytes, text);
      } else if (at < members_[0].size()) {
        expectPart(inflated.bytes, "", changed.substr(0, members_[0].size()));
      } else {
        expectPart(inflated.bytes, texts_[0], changed.substr(members_[0].size()));
      }
    }
  }
}

TEST_P(GzipDamage, ModificationTimeAndSystemAreNotLookedAt) {
  for (const std::size_t at : {4u, 5u, 6u, 7u, 8u, 9u}) {
    EXPECT_EQ(inflateFile(flipped(members_[0], at, 0xff)), (Inflated{texts_[0], ""}));
  }
}

TEST_P(GzipDamage, BrokenHeaders) {
  EXPECT_EQ(inflateFile(flipped(members_[0], 2, 0xff)),
            (Inflated{"", "unknown compression method"}));
  EXPECT_EQ(inflateFile(flipped(members_[0], 3, 0x80)), (Inflated{"", "unknown header flags set"}));
  EXPECT_EQ(inflateFile(members_[0] + flipped(members_[1], 2, 0xff)),
            (Inflated{texts_[0], "unknown compression method"}));
}

TEST_P(GzipDamage, BrokenDeflateData) {
  constexpr std::size_t kHeader = 10;  // bytes
  EXPECT_EQ(inflateFile(members_[0].substr(0, kHeader) + '\x07'),
            (Inflated{"", "invalid compressed data"}));
}

TEST_P(GzipDamage, WrongChecksum) {
  for (std::size_t i = 0; i < 4; ++i) {
    const std::size_t at = members_[0].size() - kTrailer + i;
    const Inflated expected{texts_[0], "incorrect data check"};
    EXPECT_EQ(inflateFile(flipped(members_[0], at, 0x10)), expected);
    // The members behind are not read.
    EXPECT_EQ(inflateFile(flipped(members_[0] + members_[2], at, 0x10)), expected);
  }
}

TEST_P(GzipDamage, WrongChecksumBeforeACut) {
  constexpr std::size_t kField = 4;  // bytes
  const std::size_t checksum = members_[0].size() - kTrailer;
  const std::string wrong = flipped(members_[0], checksum, 0x10);
  EXPECT_EQ(inflateFile(wrong.substr(0, checksum + kField)),
            (Inflated{texts_[0], "incorrect data check"}));
  EXPECT_EQ(inflateFile(wrong.substr(0, checksum + kField - 1)), (Inflated{texts_[0], kCut}));
}

TEST_P(GzipDamage, WrongLength) {
  for (std::size_t i = 4; i < kTrailer; ++i) {
    const std::size_t at = members_[0].size() - kTrailer + i;
    EXPECT_EQ(inflateFile(flipped(members_[0], at, 0x10)),
              (Inflated{texts_[0], "incorrect length check"}));
  }
}

TEST_P(GzipDamage, TrailingBytes) {
  const Inflated expected{texts_[0], kTrailing};
  EXPECT_EQ(inflateFile(members_[0] + "x"), expected);
  EXPECT_EQ(inflateFile(members_[0] + "\x1f"), expected);
  EXPECT_EQ(inflateFile(members_[0] + ">9\nACGT\n"), expected);
  EXPECT_EQ(inflateFile(members_[0] + std::string(9, '\0') + "x"), expected);
  EXPECT_EQ(inflateFile(members_[0] + std::string(9, '\0') + members_[1]), expected);
  EXPECT_EQ(inflateFile(members_[0] + std::string(400000, '\0') + "x"), expected);
  EXPECT_EQ(inflateFile(members_[0] + "\n" + std::string(400000, '\0')), expected);
}

TEST_P(GzipDamage, FolderInsteadOfAFile) {
  std::filesystem::create_directory("folder");
  GzipInput input;
  ASSERT_TRUE(input.open("folder"));
  EXPECT_TRUE(input.next().empty());
  EXPECT_EQ(input.damage(), "Is a directory");
}

}  // namespace

}  // namespace velk::test
