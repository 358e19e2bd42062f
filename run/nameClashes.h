// Which names of found reads occur in more than one library. Those get their library's name in
// front where they are written, so that a name is one read's.
//
// Names are kept as hashes: once in many millions of millions a name is taken for another's.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "run/library.h"
#include "run/spillSorter.h"

namespace velk::run {

class NameClashes {
 public:
  /// `spillFile` as in SpillSorter. `memory`: bytes.
  NameClashes(const std::vector<Library>& libraries, std::string spillFile, uint64_t memory);

  /// Any thread may call it. Throws Failure.
  void add(uint32_t library, std::string_view name);

  /// Adds the names that another one has saved to `file`, and saves them. As in SpillSorter.
  void addSaved(const std::string& file, uint64_t names) { sorter_.addSaved(file, names); }
  void save(const std::string& file) { sorter_.save(file); }
  uint64_t names() const { return sorter_.items(); }

  /// Compares all names, once, before prefixOf(). Throws Failure.
  void find();

  /// What stands in front of a name of this library: nothing, or the library's name and ':'.
  std::string_view prefixOf(uint32_t library, std::string_view name) const;

  /// How many names occur in several libraries.
  uint64_t clashes() const { return shared_.size(); }

 private:
  std::vector<std::string> prefixes_;  // by library
  SpillSorter sorter_;                 // of hash and library
  std::vector<uint64_t> shared_;       // hashes, in ascending order
};

}  // namespace velk::run
