// The ground of the tests of reads: a folder to work in, files packed in every way, whole files
// read.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "reads/readInput.h"
#include "reads/recordSource.h"
#include "reads/storedFile.h"
#include "tests/support/assembly.h"
#include "tests/support/files.h"

namespace velk::test {

/// A record, kept.
struct Read {
  std::string name;
  std::string bases;
  std::string quality;

  bool operator==(const Read&) const = default;
};

void PrintTo(const Read& read, std::ostream* out);

/// The record that a view shows.
Read kept(const reads::RecordView& view);

/// What there is of a file: its records, then what it was refused with.
struct Records {
  std::vector<Read> reads;
  std::string error;

  bool operator==(const Records&) const = default;
};

void PrintTo(const Records& records, std::ostream* out);

/// All records of a file.
Records recordsOf(const std::string& file, reads::Helpers helpers = reads::Helpers::kNone);

/// All reads or pairs of an input, mate behind mate, through batches of `most`.
Records readsOf(const reads::InputFiles& files, std::size_t most = 3);

/// `text`, packed; kNone: as it stands.
std::string packed(const std::string& text, reads::Packing packing);

/// BAM of a text in SAM.
std::string bamOf(const std::string& sam);

/// `text` as BGZF, in blocks of `size` bytes.
std::string bgzipped(const std::string& text, std::size_t size);

/// All packings.
inline constexpr reads::Packing kPackings[] = {reads::Packing::kNone, reads::Packing::kGzip,
                                               reads::Packing::kZstd, reads::Packing::kXz,
                                               reads::Packing::kBzip2};

/// Fixture whose tests work in an empty folder, so that file names in messages are short and fixed.
class ReadsTest : public ::testing::Test {
 protected:
  ReadsTest() { std::filesystem::current_path(folder_.path("")); }
  ~ReadsTest() override { std::filesystem::current_path(cameFrom_); }

  /// Writes `text` to `name`, and returns the name.
  std::string write(const std::string& name, const std::string& text) const {
    folder_.write(name, text);
    return name;
  }

 private:
  std::filesystem::path cameFrom_ = std::filesystem::current_path();
  TemporaryFolder folder_;
};

}  // namespace velk::test
