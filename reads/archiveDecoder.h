// A zstd, xz or bzip2 file unpacked by libarchive.
//
// Several streams one behind the other are one text. Nearly all that unpacks is handed out before
// damage ends the bytes; libarchive keeps up to a block of it. What stands behind the last stream
// is damage, as it may be a stream whose beginning is damaged.
#pragma once

#include <archive.h>

#include <memory>
#include <string>

#include "reads/storedFile.h"
#include "streaming/decoder.h"

namespace velk::reads {

class ArchiveDecoder final : public Decoder {
 public:
  /// Decodes `file`, which must outlive it. Throws std::bad_alloc when there is no memory.
  ArchiveDecoder(BlockSource& file, Packing packing);

  std::size_t read(std::span<char> room) override;
  const std::string& damage() const override { return damage_; }

 private:
  struct Free {
    void operator()(archive* opened) const { archive_read_free(opened); }
  };

  bool nextBlock();
  static la_ssize_t giveBlock(archive* asking, void* decoder, const void** block);
  void open();
  void endWith(int result);
  void noteTrailingBytes();

  BlockSource& file_;
  int64_t given_ = 0;       // bytes of the file that libarchive has got
  std::string_view block_;  // unpacked bytes not yet handed out
  bool fileHasEnded_ = false;
  bool isOpen_ = false;
  bool isAtEnd_ = false;
  std::string damage_;
  std::unique_ptr<archive, Free> archive_;
};

}  // namespace velk::reads
