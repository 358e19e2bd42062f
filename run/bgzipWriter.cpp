#include "run/bgzipWriter.h"

#include <htslib/bgzf.h>

#include <cerrno>
#include <cstring>

#include "run/diskFile.h"
#include "run/failure.h"

namespace velk::run {
namespace {

constexpr int kBlocksOfThread = 64;  // that wait for a thread

}  // namespace

struct BgzipWriter::Handle {
  ~Handle() {
    if (file != nullptr) bgzf_close(file);
  }

  BGZF* file = nullptr;
};

BgzipWriter::BgzipWriter(const std::string& file, const std::string& blocksFile, int helpers)
    : file_(file), blocksFile_(blocksFile), handle_(std::make_unique<Handle>()) {
  handle_->file = bgzf_open(file_.c_str(), "w1");
  if (handle_->file == nullptr) fail(file_);
  if (bgzf_index_build_init(handle_->file) != 0) fail(file_);
  if (helpers > 0 && bgzf_mt(handle_->file, helpers, kBlocksOfThread) != 0) fail(file_);
}

BgzipWriter::~BgzipWriter() = default;

void BgzipWriter::fail(const std::string& file) const {
  const char* const why = errno != 0 ? std::strerror(errno) : "no reason is known";
  throw Failure(Status::kFailed, file + " can't be written: " + why);
}

void BgzipWriter::write(std::string_view text) {
  errno = 0;  // what fails in a helper's thread leaves none here
  const ssize_t written = bgzf_write(handle_->file, text.data(), text.size());
  if (written < 0 || static_cast<std::size_t>(written) != text.size()) fail(file_);
  bytes_ += text.size();
}

void BgzipWriter::close() {
  errno = 0;
  // The index has all blocks only when the last of them is written.
  if (bgzf_flush(handle_->file) != 0) fail(file_);
  if (bytes_ == 0) {
    // The library would write a number below 0 here, and not always the same.
    writeFile(blocksFile_, std::string(sizeof(uint64_t), '\0'));
  } else if (bgzf_index_dump(handle_->file, blocksFile_.c_str(), nullptr) != 0) {
    fail(blocksFile_);
  }
  const int result = bgzf_close(handle_->file);
  handle_->file = nullptr;
  if (result != 0) fail(file_);
}

}  // namespace velk::run
