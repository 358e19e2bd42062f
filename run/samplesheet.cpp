// Libraries from a samplesheet, or from a library file of velk.
#include "run/givenLibraries.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

#include "libinfo/libinfo.h"
#include "placement/Read2Scaf.h"
#include "run/failure.h"

namespace velk::run {
namespace {

using Row = std::map<std::string, std::string>;

std::vector<std::string> columnsOf(std::string line) {
  if (line.ends_with('\r')) line.pop_back();
  std::vector<std::string> columns;
  std::istringstream stream(line);
  for (std::string column; std::getline(stream, column, '\t');) columns.push_back(column);
  return columns;
}

// A sheet while it is read.
class Sheet {
 public:
  explicit Sheet(const std::string& file) : file_(file), stream_(file) {
    if (!stream_) fail("can't be opened");
  }

  std::vector<Library> read() {
    readHeader();
    for (std::string line; std::getline(stream_, line);) {
      ++line_;
      const std::vector<std::string> columns = columnsOf(line);
      if (columns.empty() || columns[0].starts_with('#')) continue;
      if (columns.size() > names_.size()) fail("more columns than the first line names");
      Row row;
      for (std::size_t i = 0; i < columns.size(); ++i) {
        if (columns[i] != ".") row[names_[i]] = columns[i];
      }
      addRow(row);
    }
    if (stream_.bad()) fail("can't be read");
    if (libraries_.empty()) fail("no library in it");
    return libraries_;
  }

 private:
  [[noreturn]] void fail(const std::string& text) const {
    throw Failure(Status::kUsage,
                  file_ + (line_ == 0 ? "" : ", line " + std::to_string(line_)) + ": " + text);
  }

  void readHeader() {
    static const std::vector<std::string> kNames = {"library", "R1",     "R2",
                                                    "kind",    "insert", "orientation"};
    std::string line;
    std::getline(stream_, line);
    ++line_;
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";  // of spreadsheets
    if (line.starts_with(kByteOrderMark)) line.erase(0, kByteOrderMark.size());
    names_ = columnsOf(line);
    for (const std::string& name : names_) {
      if (std::find(kNames.begin(), kNames.end(), name) == kNames.end()) {
        fail("no column is named \"" + name +
             "\"; there are library, R1, R2, kind, insert and orientation");
      }
    }
    for (auto name = names_.begin(); name != names_.end(); ++name) {
      if (std::find(names_.begin(), name, *name) != name) {
        fail("two columns are named " + *name);
      }
    }
    for (const char* const name : {"library", "R1"}) {
      if (std::find(names_.begin(), names_.end(), name) == names_.end()) {
        fail(std::string("a column ") + name + " is missing");
      }
    }
  }

  std::string pathOf(const std::string& name) const {
    return (std::filesystem::path(file_).parent_path() / name).string();
  }

  void addRow(const Row& row) {
    Library made = libraryOf(row);
    const auto known = std::find_if(libraries_.begin(), libraries_.end(),
                                    [&](const Library& l) { return l.name == made.name; });
    if (known == libraries_.end()) {
      libraries_.push_back(std::move(made));
      return;
    }
    if (known->kind != made.kind || known->insert != made.insert ||
        known->givenOrientation != made.givenOrientation) {
      fail("library " + made.name + " has another kind, insert or orientation than above");
    }
    known->inputs.push_back(made.inputs.front());
  }

  Library libraryOf(const Row& row) const {
    const auto value = [&](const char* name) {
      const auto found = row.find(name);
      return found == row.end() ? std::string() : found->second;
    };
    Library library;
    library.name = value("library");
    if (library.name.empty() || value("R1").empty()) fail("library and R1 must have a value");
    const std::string kind = value("kind");
    const bool hasMates = !value("R2").empty();
    reads::InputFiles files{pathOf(value("R1")), hasMates ? pathOf(value("R2")) : "", false};
    if (kind == "single") {
      library.kind = LibraryKind::kSingle;
      if (hasMates) fail("a single library has no R2");
    } else if (kind.empty() || kind == "pairs" || kind == "mate-pairs" || kind == "interleaved") {
      library.kind = kind == "mate-pairs"        ? LibraryKind::kMatePairs
                     : kind.empty() && !hasMates ? LibraryKind::kSingle
                                                 : LibraryKind::kPairs;
      files.areInterleaved = library.arePairs() && !hasMates;
    } else {
      fail("no kind is named \"" + kind +
           "\"; there are pairs, mate-pairs, interleaved and single");
    }
    library.inputs.push_back(files);
    library.insert = insertOf(value("insert"));
    library.givenOrientation = orientationOf(value("orientation"));
    return library;
  }

  double insertOf(const std::string& text) const {
    if (text.empty()) return 0;
    int bases = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), bases);
    if (error != std::errc() || end != text.data() + text.size() || bases < 1) {
      fail("the insert \"" + text + "\" is no number of bases");
    }
    return bases;
  }

  std::optional<Orientation> orientationOf(const std::string& text) const {
    if (text.empty()) return std::nullopt;
    if (text == "FR") return Orientation::kInward;
    if (text == "RF") return Orientation::kOutward;
    fail("no orientation is named \"" + text + "\"; there are FR and RF");
  }

  std::string file_;
  std::ifstream stream_;
  std::size_t line_ = 0;
  std::vector<std::string> names_;
  std::vector<Library> libraries_;
};

Library libraryOf(const Lib& lib, int number) {
  Library library;
  library.name = "lib" + std::to_string(number);
  library.insert = lib.avg_ins;
  library.kind = lib.avg_ins > kLongestShortInsert ? LibraryKind::kMatePairs : LibraryKind::kPairs;
  for (Len_t i = 0; i < lib.pfilenum; ++i) {
    library.inputs.push_back(
        {lib.pairs[i].read1file, lib.pairs[i].read2file, lib.pairs[i].read2file.empty()});
  }
  for (Len_t i = 0; i < lib.s2filenum; ++i) {
    library.inputs.push_back({lib.single2[i].readfile, "", true});
  }
  return library;
}

Library singlesOf(const Lib& lib, int number) {
  Library library;
  library.name = "lib" + std::to_string(number) + "s";
  library.kind = LibraryKind::kSingle;
  for (Len_t i = 0; i < lib.sfilenum; ++i) library.inputs.push_back({lib.single[i].readfile});
  for (Len_t i = 0; i < lib.qfilenum; ++i) library.inputs.push_back({lib.singlequal[i].readfile});
  return library;
}

}  // namespace

std::vector<Library> readSampleSheet(const std::string& file) {
  return Sheet(file).read();
}

std::vector<Library> readLibraryFile(const std::string& file, int first) {
  Lib* libs = nullptr;
  int count = 0;
  Loadlib(file, libs, count);
  std::vector<Library> libraries;
  for (int n = 0; n < count; ++n) {
    for (const Library& library : {libraryOf(libs[n], first + n), singlesOf(libs[n], first + n)}) {
      if (!library.inputs.empty()) libraries.push_back(library);
    }
  }
  Libsclear(libs, count);
  return libraries;
}

}  // namespace velk::run
