#include "streaming/filesAhead.h"

#include <sys/stat.h>

#include <algorithm>
#include <new>

#include "driver/velk.h"

namespace velk {
namespace {

bool isRegular(const std::string& file) {
  struct stat status {};
  return stat(file.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

}  // namespace

FilesAhead* filesAhead = nullptr;

FilesAhead::FilesAhead(std::vector<Turn> turns) : turns_(std::move(turns)) {
  filesAhead = this;
}

FilesAhead::~FilesAhead() {
  filesAhead = nullptr;
}

void FilesAhead::openNext() {
  opened_.clear();
  if (thread_num == 1 || begun_ >= turns_.size()) return;
  try {
    for (const std::string& file : turns_[begun_]) open(file);
  } catch (const std::bad_alloc&) {
    opened_.clear();  // there may be memory at its turn
  }
}

// A pipe is not touched: to open it is to wait, and its turn ends the run.
void FilesAhead::open(const std::string& file) {
  if (!isRegular(file)) return;
  auto input = std::make_unique<GzipInput>();
  if (!input->open(file)) return;
  input->inflateAhead(inflatersFor(thread_num));
  opened_.emplace_back(file, std::move(input));
}

std::unique_ptr<GzipInput> FilesAhead::take(const std::string& file) {
  const auto found = std::find_if(opened_.begin(), opened_.end(),
                                  [&](const auto& opened) { return opened.first == file; });
  if (found == opened_.end()) return nullptr;
  std::unique_ptr<GzipInput> input = std::move(found->second);
  opened_.erase(found);
  return input;
}

}  // namespace velk
