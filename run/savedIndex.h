// An index on disk (run/savedFormat.h), written; and opened: the assembly's names, contigs and
// gaps, and the seed index of its contigs, mapped read-only and shared by all processes of a
// machine.
//
// It is checked before it is used: the header, the place and size of every part, the sums of the
// small parts; Assembly's constructor checks every record, and setIndex() what look-ups rely on.
// The sums of the large parts are taken beside a run, which has no result before they are right.
// Whatever these hold, nothing leads outside of memory. Any thread may ask.
#pragma once

#include <cstdint>
#include <future>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kmer/seedIndex.h"
#include "run/arguments.h"
#include "run/checksum.h"
#include "run/diskFile.h"
#include "run/savedFormat.h"

namespace velk::run {

class SavedIndex {
 public:
  /// Throws Failure, which names the file, where it can't be read or is no sound index.
  explicit SavedIndex(const std::string& file);

  const std::string& file() const { return file_; }
  const saved::Header& header() const { return header_; }

  /// The checksum of the header, and so of all that it has checksums of.
  std::string checksum() const { return {header_.md5.data(), header_.md5.size()}; }

  /// The values of a part. They must not be written to.
  template <class T>
  std::span<T> part(saved::Part part) const {
    const saved::PartPlace& place = placeOf(part);
    return {reinterpret_cast<T*>(mapped_.memory() + place.offset), place.bytes / sizeof(T)};
  }

  // Each throws Failure with Status::kPreflight, saying what differs, unless the index is that of
  // a run with these options or files.

  void requireOptions(const Arguments& arguments) const;
  void requireReadLength(int readLength) const;

  /// `ends`: by the first and last bytes, which takes no time; `whole`: by all of them.
  void requireAssemblyEnds(const std::string& assembly, const FileIdentity& ends) const;
  void requireAssembly(const std::string& assembly, const FileIdentity& whole) const;
  void requireAgp(const std::optional<FileIdentity>& agp) const;

  /// Makes it the index of the assembly, which was made of this file. Throws Failure.
  void setIndex(SeedIndex& index, const Assembly& assembly) const;

  /// Throws Failure unless all parts have their sums.
  void requireSums(int threads) const;

  /// Throws the Failure of a damaged index: `what` is wrong.
  [[noreturn]] void failDamaged(const std::string& what) const;

 private:
  const saved::PartPlace& placeOf(saved::Part part) const {
    return header_.parts[static_cast<std::size_t>(part)];
  }
  std::string_view textOf(saved::Part part) const {
    const auto text = this->part<char>(part);
    return {text.data(), text.size()};
  }
  void checkHeader();
  void checkOptions() const;
  void checkParts() const;
  void requireSum(saved::Part part) const;
  [[noreturn]] void failOther(const std::string& what) const;
  void requireSame(const char* option, const std::string& ofIndex, const std::string& now) const;

  std::string file_;
  MappedFile mapped_;
  saved::Header header_{};
};

/// Takes the sums of all parts beside what follows. get() waits for them, and throws Failure unless
/// they are right. `index` may be null.
std::shared_future<void> sumBeside(std::shared_ptr<const SavedIndex> index);

namespace saved {

/// `md5`: of 32 digits.
Md5Digits digitsOf(const std::string& md5);

}  // namespace saved

struct ToSave {
  const Assembly& assembly;
  const SeedIndex& index;
  const std::vector<uint64_t>& placeholders;  // lengths given
};

/// Makes `file`, whole or not at all, and returns its bytes. `header`: without parts and sums.
/// Throws Failure, and std::bad_alloc.
uint64_t saveIndex(const std::string& file, saved::Header header, const ToSave& toSave,
                   int threads);

}  // namespace velk::run
