#include "reads/archiveDecoder.h"

#include <cerrno>
#include <cstring>
#include <new>

namespace velk::reads {
namespace {

void support(archive* opened, Packing packing) {
  if (packing == Packing::kZstd) archive_read_support_filter_zstd(opened);
  if (packing == Packing::kXz) archive_read_support_filter_xz(opened);
  if (packing == Packing::kBzip2) archive_read_support_filter_bzip2(opened);
  archive_read_support_format_raw(opened);
  archive_read_support_format_empty(opened);
}

}  // namespace

ArchiveDecoder::ArchiveDecoder(BlockSource& file, Packing packing)
    : file_(file), archive_(archive_read_new()) {
  if (archive_ == nullptr) throw std::bad_alloc();
  support(archive_.get(), packing);
}

std::size_t ArchiveDecoder::read(std::span<char> room) {
  if (!isOpen_) open();
  std::size_t made = 0;
  while (made < room.size() && (!block_.empty() || nextBlock())) {
    const std::size_t taken = block_.copy(room.data() + made, room.size() - made);
    block_.remove_prefix(taken);
    made += taken;
  }
  return made;
}

// Gets the next unpacked bytes. Returns false at their end.
bool ArchiveDecoder::nextBlock() {
  if (isAtEnd_) return false;
  const void* bytes = nullptr;
  std::size_t size = 0;
  la_int64_t offset = 0;
  const int result = archive_read_data_block(archive_.get(), &bytes, &size, &offset);
  if (result != ARCHIVE_OK) endWith(result);
  block_ = {static_cast<const char*>(bytes), size};
  return !isAtEnd_;
}

la_ssize_t ArchiveDecoder::giveBlock(archive* asking, void* decoder, const void** block) {
  auto& self = *static_cast<ArchiveDecoder*>(decoder);
  const std::string_view bytes = self.file_.next();
  if (self.file_.error() != 0) {
    archive_set_error(asking, self.file_.error(), "%s", std::strerror(self.file_.error()));
    return ARCHIVE_FATAL;
  }
  self.given_ += static_cast<int64_t>(bytes.size());
  self.fileHasEnded_ = bytes.empty();
  *block = bytes.data();
  return static_cast<la_ssize_t>(bytes.size());
}

void ArchiveDecoder::open() {
  isOpen_ = true;
  archive_entry* entry = nullptr;
  int result = archive_read_open(archive_.get(), this, nullptr, giveBlock, nullptr);
  if (result == ARCHIVE_OK) result = archive_read_next_header(archive_.get(), &entry);
  if (result != ARCHIVE_OK) {
    endWith(result);
  } else if (archive_filter_count(archive_.get()) < 2) {  // libarchive takes it for plain
    damage_ = "invalid header";
    isAtEnd_ = true;
  }
}

// Ends the bytes: at their end, or at damage.
void ArchiveDecoder::endWith(int result) {
  isAtEnd_ = true;
  if (result == ARCHIVE_EOF) {
    noteTrailingBytes();
  } else if (archive_errno(archive_.get()) == ENOMEM) {
    throw std::bad_alloc();
  } else if (fileHasEnded_) {
    damage_ = "unexpected end of file";
  } else {
    const char* const reason = archive_error_string(archive_.get());
    damage_ = reason != nullptr ? reason : "invalid compressed data";
  }
}

void ArchiveDecoder::noteTrailingBytes() {
  constexpr int kStored = -1;  // libarchive's number for the bytes of the file itself
  if (archive_filter_bytes(archive_.get(), kStored) < given_ || !file_.next().empty()) {
    damage_ = "trailing bytes after the last stream";
  }
}

}  // namespace velk::reads
