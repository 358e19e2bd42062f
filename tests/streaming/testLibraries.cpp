#include "tests/streaming/testLibraries.h"

#include "streaming/library.h"
#include "tests/streaming/streamingTest.h"

namespace velk::test {
namespace {

template <class Entry>
Entry* namesIn(const std::vector<std::string>& files, Len_t& count) {
  count = static_cast<Len_t>(files.size());
  if (files.empty()) return nullptr;
  auto* const entries = new Entry[files.size()];
  for (std::size_t j = 0; j < files.size(); ++j) entries[j].readfile = files[j];
  return entries;
}

}  // namespace

TestLibraries::TestLibraries(const std::vector<TestLibrary>& libraries)
    : libs_(new Lib[libraries.size()]), count_(static_cast<int>(libraries.size())) {
  for (std::size_t i = 0; i < libraries.size(); ++i) {
    const TestLibrary& from = libraries[i];
    Lib& lib = libs_[i];
    lib.avg_ins = from.averageInsert;
    lib.pfilenum = static_cast<Len_t>(from.pairs.size());
    if (lib.pfilenum != 0) lib.pairs = new Pair[lib.pfilenum];
    for (std::size_t j = 0; j < from.pairs.size(); ++j) {
      lib.pairs[j] = {from.pairs[j].first, from.pairs[j].second};
    }
    lib.single2 = namesIn<Single>(from.single2, lib.s2filenum);
    lib.single = namesIn<Single>(from.single, lib.sfilenum);
    lib.singlequal = namesIn<SingleQual>(from.singlequal, lib.qfilenum);
    singlequal_.emplace_back(lib.singlequal);
  }
}

std::string TestLibraries::stream() {
  const CapturedErrors errors;
  libread2gap(libs_, count_);
  const std::string text = errors.text();
  const char* const digits = "0123456789";
  const std::size_t from = text.find_first_of(digits, text.find("Used time: "));
  if (from == std::string::npos) return text;
  return text.substr(0, from).append("N").append(text, text.find_first_not_of(digits, from));
}

void TestLibraries::streamAloud() {
  libread2gap(libs_, count_);
}

}  // namespace velk::test
