#include "run/givenLibraries.h"

#include <algorithm>
#include <set>

#include "run/commandLine.h"
#include "run/failure.h"

namespace velk::run {
namespace {

class LibraryMaker {
 public:
  LibraryMaker(const GivenReads& given, const std::string& moreInHelp)
      : given_(given), moreInHelp_(moreInHelp) {}

  std::vector<Library> make() {
    if (given_.bare.size() == 2) addPairs(given_.bare[0], given_.bare[1], LibraryKind::kPairs);
    if (given_.bare.size() == 1 || given_.bare.size() > 2) {
      throw Failure(Status::kUsage, "two files of mates may stand behind the assembly, not " +
                                        std::to_string(given_.bare.size()) + moreInHelp_);
    }
    for (const auto& [one, other] : given_.pairs) addPairs(one, other, LibraryKind::kPairs);
    for (const std::string& file : given_.interleaved) {
      add(LibraryKind::kPairs, {{file, "", true}});
    }
    for (const auto& [one, other] : given_.matePairs) addPairs(one, other, LibraryKind::kMatePairs);
    for (const auto& singles : given_.single) {
      std::vector<reads::InputFiles> inputs;
      inputs.reserve(singles.size());
      for (const std::string& file : singles) inputs.push_back({file});
      add(LibraryKind::kSingle, inputs);
    }
    if (!given_.sheet.empty()) append(readSampleSheet(given_.sheet));
    if (!given_.library.empty()) {
      append(readLibraryFile(given_.library, static_cast<int>(libraries_.size()) + 1));
    }
    return std::move(libraries_);
  }

 private:
  void addPairs(const std::string& one, const std::string& other, LibraryKind kind) {
    add(kind, {{one, other, false}});
  }

  void add(LibraryKind kind, std::vector<reads::InputFiles> inputs) {
    Library library;
    library.name = "lib" + std::to_string(libraries_.size() + 1);
    library.kind = kind;
    library.inputs = std::move(inputs);
    libraries_.push_back(std::move(library));
  }

  void append(const std::vector<Library>& more) {
    libraries_.insert(libraries_.end(), more.begin(), more.end());
  }

  const GivenReads& given_;
  const std::string& moreInHelp_;
  std::vector<Library> libraries_;
};

void checkLibraries(const std::vector<Library>& libraries, const std::string& moreInHelp) {
  if (libraries.empty()) throw Failure(Status::kUsage, "no reads are given" + moreInHelp);
  std::set<std::string> names;
  for (const Library& library : libraries) {
    requireWord("the name of a library", library.name);
    if (!names.insert(library.name).second) {
      throw Failure(Status::kUsage, "two libraries have the name " + library.name);
    }
  }
}

}  // namespace

std::vector<Library> librariesOf(const GivenReads& given, const std::string& moreInHelp) {
  std::vector<Library> libraries = LibraryMaker(given, moreInHelp).make();
  checkLibraries(libraries, moreInHelp);
  return libraries;
}

void requireWord(const std::string& what, const std::string& word) {
  const auto isBad = [](char c) { return c < '!' || c > '~'; };
  if (!word.empty() && std::none_of(word.begin(), word.end(), isBad)) return;
  throw Failure(Status::kUsage, what + " must be a word of printable characters without blanks");
}

}  // namespace velk::run
