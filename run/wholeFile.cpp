#include "run/wholeFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>

#include "run/diskFile.h"
#include "run/failure.h"
#include "run/signalCleanup.h"

namespace velk::run {
namespace {

// The unfinished file, locked. One that a process has just renamed, or removed, is no longer it.
std::unique_ptr<Descriptor> openPartial(const std::string& file, const std::string& partial) {
  for (;;) {
    auto output = std::make_unique<Descriptor>(partial, O_WRONLY | O_CREAT);
    if (!lockFile(output->get())) {
      if (errno != EWOULDBLOCK) failFile(partial, "locked");
      throw Failure(Status::kFailed, "another run writes to " + file);
    }
    if (isCalled(output->get(), partial)) return output;
  }
}

}  // namespace

void requireNoInput(const std::string& file, const std::vector<std::string>& inputs,
                    const std::string& what) {
  for (const std::string& input : inputs) {
    std::error_code ignored;
    if (!std::filesystem::equivalent(file, input, ignored)) continue;
    throw Failure(Status::kFailed, input + " is an input, and the " + what + " would replace it");
  }
}

void writeWhole(const std::string& file,
                const std::function<void(int descriptor, const std::string& name)>& write) {
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  const bool isThere = std::filesystem::exists(status);
  if (isThere && !std::filesystem::is_regular_file(status)) {
    Descriptor output(file, O_WRONLY);
    write(output.get(), file);
    if (!output.close()) failFile(file, "written");
    return;
  }
  const std::string target = isThere ? std::filesystem::canonical(file).string() : file;
  const std::string partial = target + ".partial";
  const std::unique_ptr<Descriptor> output = openPartial(file, partial);
  const SignalCleanup cleanup({partial}, {});
  try {
    if (ftruncate(output->get(), 0) != 0) failFile(partial, "written");
    write(output->get(), partial);
    syncFile(partial);
    if (std::rename(partial.c_str(), target.c_str()) != 0) failFile(file, "made");
  } catch (...) {
    std::remove(partial.c_str());
    throw;
  }
}

void writeWhole(const std::string& file, std::string_view text) {
  writeWhole(file, [text](int descriptor, const std::string& name) {
    writeDescriptor(descriptor, name, text);
  });
}

}  // namespace velk::run
