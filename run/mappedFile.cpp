#include "run/mappedFile.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>

#include "run/diskFile.h"
#include "run/failure.h"

namespace velk::run {

MappedFile::MappedFile(const std::string& file) {
  const Descriptor input(file, O_RDONLY);
  struct stat status {};
  if (fstat(input.get(), &status) != 0) failFile(file, "read");
  if (!S_ISREG(status.st_mode)) throw Failure(Status::kFailed, file + " is no regular file");
  bytes_ = static_cast<uint64_t>(status.st_size);
  if (bytes_ == 0) return;
  void* const memory = mmap(nullptr, bytes_, PROT_READ, MAP_SHARED, input.get(), 0);
  if (memory == MAP_FAILED) failFile(file, "mapped");
  // File systems that have huge pages give them; others take no notice.
  madvise(memory, bytes_, MADV_HUGEPAGE);
  memory_ = static_cast<char*>(memory);
}

MappedFile::~MappedFile() {
  if (memory_ != nullptr) munmap(memory_, bytes_);
}

}  // namespace velk::run
