#include "run/foundStore.h"

#include <array>
#include <fstream>

#include "run/diskFile.h"
#include "run/native.h"
#include "run/resultNames.h"

namespace velk::run {
namespace {

constexpr uint64_t kNativeMemory = uint64_t{64} << 20;  // bytes

}  // namespace

FoundStore::FoundStore(const ResultFolder& folder, const Assembly& assembly,
                       const std::vector<Library>& libraries, const OutputOptions& options,
                       bool isNative)
    : folder_(folder),
      assembly_(assembly),
      libraries_(libraries),
      outputs_(folder, assembly, libraries, options),
      foundReads_(std::make_unique<std::atomic<uint64_t>[]>(libraries.size())) {
  if (!isNative) return;
  native_ = std::make_unique<SpillSorter>(folder.partial("native.spill"), kNativeMemory);
}

void FoundStore::take(int, const FoundEntry& entry) {
  outputs_.take(entry);
  std::array<bool, 2> isFound{};
  for (const FoundPlace& place : entry.places) isFound[static_cast<std::size_t>(place.mate)] = true;
  foundReads_[entry.library] +=
      static_cast<uint64_t>(isFound[0]) + static_cast<uint64_t>(isFound[1]);
  if (native_ == nullptr) return;
  native_->add({entry.input, entry.record, 0},
               nativeRecords(entry, libraries_[entry.library], assembly_));
  for (const FoundPlace& place : entry.places) {
    outputs_.takeRecord(assembly_.gapInFront(place.scaffold, place.contigBehind));
  }
}

uint64_t FoundStore::foundReads() const {
  uint64_t sum = 0;
  for (std::size_t n = 0; n < libraries_.size(); ++n) sum += foundReads_[n];
  return sum;
}

void FoundStore::addShare(const std::string& folder, const Share& share) {
  outputs_.addShare(folder, share.library, share.items);
  if (native_ != nullptr) native_->addSaved(folder + "/" + kShareNativeName, 0);
  foundReads_[share.library] += share.found;
}

void FoundStore::writeShare(Share& share) {
  share.items = outputs_.writeShare(share.library);
  if (native_ != nullptr) native_->save(folder_.partial(kShareNativeName));
  share.found = foundReads_[share.library];
  share.spilledBytes = spilledBytes();
}

void FoundStore::writeResults() {
  outputs_.write();
  if (native_ != nullptr) writeNative();
}

void FoundStore::writeNative() {
  const std::string file = folder_.partial("native/found.fa");
  std::ofstream stream(file);
  native_->forEach([&](const SortKey&, std::string_view text) {
    stream.write(text.data(), static_cast<std::streamsize>(text.size()));
  });
  stream.close();
  if (!stream) failFile(file, "written");
  std::vector<uint64_t> ofGaps;
  for (std::size_t gap = 0; gap < assembly_.gaps().size(); ++gap) {
    ofGaps.push_back(outputs_.counts().records(gap));
  }
  writeNativeTables(folder_.partial(kNativeName), assembly_, ofGaps);
}

}  // namespace velk::run
