// The libraries that inflate, by one thread and by two, against each other and against zlib's own
// reading of gzip files.
// Input: a byte for the way to make the file, one for the size of a system read, one for the size
// of the room that is inflated into, four more (see PackedFile), then the file or the text in it.
//
// What must hold: of a sound file every library gives all bytes and no damage. Of a damaged one
// each gives all blocks before the damaged one and says that it is damaged; zlib gives what it
// gives itself. ISA-L takes sets of codes that have gaps, which zlib refuses: where none of the
// gaps is met, the checksum is right, and there is no damage to report.
#include <sys/types.h>
#include <zlib.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

#include "streaming/blockReader.h"
#include "streaming/gzipDecoder.h"
#include "streaming/inflater.h"
#include "tests/fuzz/fuzz.h"

namespace velk::fuzz {
namespace {

std::size_t longestRead = 0;  // bytes that the system gives at once; 0: as many as asked for

}  // namespace
}  // namespace velk::fuzz

// The linker puts it in the place of read().
extern "C" ssize_t __real_read(int descriptor, void* bytes, std::size_t count);
extern "C" ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count);

ssize_t __wrap_read(int descriptor, void* bytes, std::size_t count) {
  const std::size_t most = velk::fuzz::longestRead;
  return __real_read(descriptor, bytes, most == 0 ? count : std::min(count, most));
}

namespace velk::fuzz {
namespace {

constexpr int kGzip = MAX_WBITS + 16;  // zlib's way to ask for header and trailer
constexpr std::string_view kMark = "\x1f\x8b";

Bytef* bytesOf(std::string& text) {
  return reinterpret_cast<Bytef*>(text.data());
}

// A gzip member as bgzip writes it, with its size in its header.
std::string asBgzf(const std::string& member) {
  constexpr std::size_t kUsualHeader = 10;  // bytes
  const std::size_t last = member.size() + 8 - 1;
  require(last <= 0xffff, "a member is too long for bgzip");
  std::string header("\x1f\x8b\x08\x04\0\0\0\0\0\xff\x06\0BC\x02\0", 16);
  header += {static_cast<char>(last & 0xff), static_cast<char>(last >> 8)};
  return header + member.substr(kUsualHeader);
}

// A text as members of a few bytes, each deflated by a level and strategy of zlib, and what is then
// done to the file: nothing, a cut, or a flipped bit.
struct PackedFile {
  bool isBgzf;
  bool isLong;  // each part over and over: two members are enough for two threads
  int harm;
  int level;
  int strategy;
  std::size_t memberSize;
  std::size_t place;

  std::string operator()(std::string_view text) const {
    std::string file;
    do {
      const std::string_view part = text.substr(0, memberSize == 0 ? text.size() : memberSize);
      text.remove_prefix(part.size());
      const std::string packed = member(isLong ? repeated(part) : std::string(part));
      file += isBgzf ? asBgzf(packed) : packed;
    } while (!text.empty());
    const std::size_t at = std::min(file.size() - 1, place * file.size() / 4096);
    if (harm == 1) file.resize(at);
    if (harm == 2) file[at] = static_cast<char>(file[at] ^ 1 << place % 8);
    return file;
  }

  static std::string repeated(std::string_view part) {
    constexpr std::size_t kLong = 20000;  // bytes
    std::string text(part);
    while (!part.empty() && text.size() < kLong) text += part;
    return text;
  }

  std::string member(std::string text) const {
    z_stream stream{};
    require(deflateInit2(&stream, level, Z_DEFLATED, kGzip, 1 + strategy, strategy) == Z_OK,
            "zlib does not start");
    std::string packed(deflateBound(&stream, text.size()) + 100, '\0');
    stream.next_in = bytesOf(text);
    stream.next_out = bytesOf(packed);
    stream.avail_out = static_cast<uInt>(packed.size());
    stream.avail_in = static_cast<uInt>(text.size() / 2);
    deflate(&stream, Z_FULL_FLUSH);  // so that there are several blocks
    stream.avail_in = static_cast<uInt>(text.size() - text.size() / 2);
    require(deflate(&stream, Z_FINISH) == Z_STREAM_END, "zlib does not end");
    packed.resize(packed.size() - stream.avail_out);
    deflateEnd(&stream);
    return packed;
  }
};

// What zlib alone makes of a gzip file.
struct Reference {
  std::string bytes;
  std::size_t whole = 0;  // bytes before the damaged block
  bool isDamaged = false;
  std::string reason = "";
};

// Inflates the member that starts `file` onto `reference`. Returns its length, 0 when it is
// damaged.
std::size_t inflateMember(std::string_view file, Reference& reference) {
  z_stream stream{};
  require(inflateInit2(&stream, kGzip) == Z_OK, "zlib does not start");
  std::string input(file);
  stream.next_in = bytesOf(input);
  stream.avail_in = static_cast<uInt>(input.size());
  std::array<char, 16384> block;
  int result = Z_OK;
  do {
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = block.size();
    result = inflate(&stream, Z_BLOCK);
    reference.bytes.append(block.data(), block.size() - stream.avail_out);
    constexpr int kBehindBlock = 128;  // zlib's mark in data_type
    if (result == Z_STREAM_END || (result == Z_OK && (stream.data_type & kBehindBlock) != 0)) {
      reference.whole = reference.bytes.size();
    }
  } while (result == Z_OK);
  if (stream.msg != nullptr) reference.reason = stream.msg;
  const std::size_t used = file.size() - stream.avail_in;
  inflateEnd(&stream);
  return result == Z_STREAM_END ? used : 0;
}

Reference referenceOf(std::string_view file) {
  Reference reference;
  if (!file.starts_with(kMark)) return {std::string(file), file.size()};
  while (file.starts_with(kMark)) {
    const std::size_t length = inflateMember(file, reference);
    if (length == 0) {
      reference.isDamaged = true;
      return reference;
    }
    file.remove_prefix(length);
  }
  reference.isDamaged = file.find_first_not_of('\0') != std::string_view::npos;
  return reference;
}

bool isGapInCodes(const std::string& reason) {
  return reason == "invalid code lengths set" || reason == "invalid literal/lengths set" ||
         reason == "invalid distances set";
}

void compare(const std::string& file, std::size_t roomSize, InflateLibrary library, int threads) {
  static const MemoryFile kFile;
  kFile.fill(file);
  inflateLibrary = library;
  BlockReader blocks(GzipDecoder::kRawBlock);
  require(blocks.open(kFile.name()), "the file cannot be opened");
  GzipDecoder decoder(blocks);
  decoder.inflateBy(threads);
  std::string room(roomSize, '\0');
  std::string bytes;
  std::size_t made = 0;
  do {
    made = decoder.read(room);
    bytes.append(room, 0, made);
  } while (made != 0);
  const Reference reference = referenceOf(file);
  const bool isDamaged = !decoder.damage().empty();
  if (library == InflateLibrary::kZlib || !reference.isDamaged) {
    require(isDamaged == reference.isDamaged, "damage without word, or the reverse");
    require(bytes == reference.bytes, "other bytes");
  } else {
    require(isDamaged || isGapInCodes(reference.reason), "damage that goes unnoticed");
    require(std::string_view(bytes).starts_with(
                std::string_view(reference.bytes).substr(0, reference.whole)),
            "blocks before the damage are missing");
  }
}

}  // namespace

void tryInput(Input input) {
  const int way = input.next();
  const auto most = static_cast<std::size_t>(input.next());
  const auto room = static_cast<std::size_t>(input.next());
  const int packing = input.next();
  const auto memberSize = static_cast<std::size_t>(input.next());
  const auto high = static_cast<std::size_t>(input.next());
  const auto low = static_cast<std::size_t>(input.next());
  std::string file(input.rest());
  if (way % 4 != 0) {
    const bool isLong = way / 8 % 8 == 1 && (memberSize == 0 || memberSize > 64);
    const PackedFile pack{way / 4 % 2 == 1, isLong,     way % 4 - 1,    packing % 10,
                          packing / 10 % 5, memberSize, 64 * high + low};
    file = pack(file);
  }
  longestRead = most;
  for (const InflateLibrary library : inflateLibraries()) {
    for (const int threads : {1, 2})
      compare(file, room == 0 ? 100000 : room * room, library, threads);
  }
  longestRead = 0;
}

}  // namespace velk::fuzz
