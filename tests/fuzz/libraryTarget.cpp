// The library file. Input: a byte for readLen, then the file.
#include <algorithm>
#include <limits>
#include <string>
#include <vector>

#include "driver/velk.h"
#include "libinfo/libinfo.h"
#include "tests/fuzz/fuzz.h"

namespace velk::fuzz {
namespace {

using Names = std::vector<std::string>;

// A section as it should be loaded.
struct Section {
  Names pairs1, pairs2;  // of the same length
  Names single, single2, singlequal;
  int minInsert = 0, maxInsert = 0, insert = 0, cutOff = 0, reverse = 0, assembly = 3;
  uint32_t pairReads = 0, singleReads = 0;
};

struct Model {
  std::vector<Section> sections;
  int maxSmallInsert = 0;
  int maxInsert = 0;
};

void storeFile(Section& section, const std::string& key, const std::string& value) {
  if (key == "q1" || key == "f1") {
    section.pairs1.push_back(value);
    section.pairs2.emplace_back();
  }
  if ((key == "q2" || key == "f2") && !section.pairs2.empty()) section.pairs2.back() = value;
  if (key == "f") section.single.push_back(value);
  if (key == "p") section.single2.push_back(value);
  if (key == "q") section.singlequal.push_back(value);
}

void storeNumber(Model& model, const std::string& key, int number) {
  Section& section = model.sections.back();
  if (key == "reads_sum") section.singleReads = static_cast<uint32_t>(number);
  if (key == "pair_reads_sum") section.pairReads = static_cast<uint32_t>(number);
  if (key == "min_ins") section.minInsert = number;
  if (key == "max_ins") section.maxInsert = number;
  if (key == "rd_len_cutoff") section.cutOff = number;
  if (key == "reverse_seq") section.reverse = number;
  if (key == "asm_flags") section.assembly = number;
  if (key != "avg_ins") return;
  section.insert = number;
  if (number < 2000) model.maxSmallInsert = std::max(model.maxSmallInsert, number);
  model.maxInsert = std::max(model.maxInsert, number);
}

Model modelOf(std::string_view text) {
  Model model;
  for (const std::string& line : linesOf(text)) {
    const std::size_t equals = line.find('=');
    if (line.find("[LIB]") != std::string::npos) {
      model.sections.emplace_back();
    } else if (!model.sections.empty() && equals != std::string::npos) {
      const std::string key = line.substr(0, equals);
      std::string value = line.substr(equals + 1);
      if (value.size() > 2 && value.ends_with('\r')) value.resize(value.size() - 1);
      storeFile(model.sections.back(), key, value);
      storeNumber(model, key, intIn(value));
    }
  }
  return model;
}

// "WHAT of lib I is N", when there are any.
std::string countLine(const std::string& what, std::size_t i, std::size_t n, const char* is) {
  if (n == 0) return "";
  return what + " file number of lib " + std::to_string(i) + is + std::to_string(n) + "\n";
}

std::string messagesOf(const Model& model, const std::string& file, int bigGap) {
  std::string text = "Starting load lib file " + file +
                     "\nFind lib number: " + std::to_string(model.sections.size()) + "\n";
  for (std::size_t i = 0; i < model.sections.size(); ++i) {
    const Section& section = model.sections[i];
    text += countLine("single fa", i, section.single.size(), " is ");
    text += countLine("pair", i, section.pairs1.size(), " is ");
    text += countLine("PE in single", i, section.single2.size(), " is ");
    text += countLine("single fq", i, section.singlequal.size(), "is");
  }
  return text + "Lib file load finished!\nMax small insert is " +
         std::to_string(model.maxSmallInsert) + "\tbig gap length: " + std::to_string(bigGap) +
         "\t Max insert: " + std::to_string(model.maxInsert) + "\n";
}

template <class Entry>
void compareNames(const Names& model, const Entry* entries, Len_t count) {
  require(model.size() == count, "another number of files");
  for (std::size_t i = 0; i < model.size(); ++i) {
    require(model[i] == entries[i].readfile, "another file name");
  }
}

void compareSection(const Section& model, const Lib& lib) {
  compareNames(model.single, lib.single, lib.sfilenum);
  compareNames(model.single2, lib.single2, lib.s2filenum);
  compareNames(model.singlequal, lib.singlequal, lib.qfilenum);
  require(model.pairs1.size() == lib.pfilenum, "another number of pairs");
  for (std::size_t i = 0; i < model.pairs1.size(); ++i) {
    require(model.pairs1[i] == lib.pairs[i].read1file && model.pairs2[i] == lib.pairs[i].read2file,
            "another file name of a pair");
  }
  require(model.minInsert == lib.min_ins && model.maxInsert == lib.max_ins &&
              model.insert == lib.avg_ins && model.cutOff == lib.rd_len_cutoff &&
              model.reverse == lib.reverse && model.assembly == lib.asm_flag &&
              model.pairReads == lib.preadSum && model.singleReads == lib.sreadSum,
          "another number in a library");
}

void compare(std::string_view text) {
  static const MemoryFile kFile;
  kFile.fill(text);
  const Model model = modelOf(text);
  Said said;
  Lib* libs = nullptr;
  int libSum = 0;
  require(statusOf([&] { Loadlib(kFile.name(), libs, libSum); }) == kRanOn,
          "a library file ends the run");
  require(static_cast<std::size_t>(libSum) == model.sections.size(), "another number of libraries");
  for (int i = 0; i < libSum; ++i) {
    compareSection(model.sections[static_cast<std::size_t>(i)], libs[i]);
  }
  const int64_t bigGap = int64_t{readLen} + model.maxSmallInsert;
  require(MAXINSERT == model.maxInsert && BIGGAPLEN == bigGap, "other insert limits");
  require(said.errors() == messagesOf(model, kFile.name(), static_cast<int>(bigGap)) &&
              said.output().empty(),
          "other messages");
  Libsclear(libs, libSum);
}

}  // namespace

void tryInput(Input input) {
  readLen = input.next();
  compare(input.rest());
}

}  // namespace velk::fuzz
