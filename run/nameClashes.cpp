#include "run/nameClashes.h"

#include <algorithm>
#include <utility>

namespace velk::run {
namespace {

// FNV-1a, its bits mixed once more, since short names that differ in a digit are the rule.
uint64_t hashOf(std::string_view name) {
  uint64_t hash = 0xcbf29ce484222325;
  for (const char letter : name) {
    hash = (hash ^ static_cast<unsigned char>(letter)) * 0x100000001b3;
  }
  hash ^= hash >> 32;
  hash *= 0x9e3779b97f4a7c15;
  return hash ^ hash >> 29;
}

}  // namespace

NameClashes::NameClashes(const std::vector<Library>& libraries, std::string spillFile,
                         uint64_t memory)
    : sorter_(std::move(spillFile), memory) {
  for (const Library& library : libraries) prefixes_.push_back(library.name + ":");
}

void NameClashes::add(uint32_t library, std::string_view name) {
  if (prefixes_.size() > 1) sorter_.add({hashOf(name), library, 0}, {});
}

void NameClashes::find() {
  uint64_t hash = 0;
  uint64_t library = prefixes_.size();  // of the name before: none yet
  sorter_.forEach([&](const SortKey& key, std::string_view) {
    const bool isAgain = library < prefixes_.size() && key.first == hash;
    if (isAgain && key.second != library && (shared_.empty() || shared_.back() != hash)) {
      shared_.push_back(hash);
    }
    hash = key.first;
    library = key.second;
  });
}

std::string_view NameClashes::prefixOf(uint32_t library, std::string_view name) const {
  if (shared_.empty() || !std::binary_search(shared_.begin(), shared_.end(), hashOf(name))) {
    return {};
  }
  return prefixes_[library];
}

}  // namespace velk::run
