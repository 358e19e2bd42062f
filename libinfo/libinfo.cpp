#include "libinfo/libinfo.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <vector>

#include "driver/fatal.h"
#include "driver/listener.h"
#include "driver/textInput.h"
#include "driver/velk.h"

namespace velk {
namespace {

// The arrays behind Lib::singlequal: no record releases them, the end of the process does.
std::vector<std::unique_ptr<SingleQual[]>> singlequalArrays;

bool isHeader(const std::string& line) {
  return line.find("[LIB]") != std::string::npos;
}

using Lines = std::vector<std::string>;

// All lines of `input`, so that the passes below see one and the same file.
Lines readLines(TextInput& input) {
  Lines lines;
  for (std::string line; input.readLine(line);) lines.push_back(line);
  return lines;
}

// One pass: onHeader() for every section header, onKey(id, value) for every key line in a section.
template <class OnHeader, class OnKey>
void forEachLine(const Lines& lines, OnHeader onHeader, OnKey onKey) {
  bool inSection = false;
  std::string id;
  std::string value;
  for (const std::string& line : lines) {
    if (isHeader(line)) {
      inSection = true;
      onHeader();
    } else if (inSection && splitColumn(line, id, value)) {
      onKey(id, value);
    }
  }
}

void countFiles(const Lines& lines, Lib* libs) {
  int index = -1;
  forEachLine(
      lines, [&] { ++index; },
      [&](const std::string& id, const std::string&) {
        Lib& lib = libs[index];
        if (id == "q1" || id == "f1") ++lib.pfilenum;
        if (id == "f") ++lib.sfilenum;
        if (id == "p") ++lib.s2filenum;
        if (id == "q") ++lib.qfilenum;
      });
}

// Reports the file counts of library i and allocates its arrays of file names.
void allocateNames(Lib& lib, int i) {
  const std::string library = std::to_string(i);
  if (lib.sfilenum != 0) {
    say("single fa file number of lib " + library + " is " + std::to_string(lib.sfilenum) + "\n");
    lib.single = new Single[lib.sfilenum];
  }
  if (lib.pfilenum != 0) {
    say("pair file number of lib " + library + " is " + std::to_string(lib.pfilenum) + "\n");
    lib.pairs = new Pair[lib.pfilenum];
  }
  if (lib.s2filenum != 0) {
    say("PE in single file number of lib " + library + " is " + std::to_string(lib.s2filenum) +
        "\n");
    lib.single2 = new Single[lib.s2filenum];
  }
  if (lib.qfilenum != 0) {
    // KEPT: no blanks around "is" (Loadlib.PrintsTheFileCounts)
    say("single fq file number of lib " + library + "is" + std::to_string(lib.qfilenum) + "\n");
    singlequalArrays.push_back(std::make_unique<SingleQual[]>(lib.qfilenum));
    lib.singlequal = singlequalArrays.back().get();
  }
}

// Stores key lines in the library records, section by section.
class Filler {
 public:
  Filler(Lib* libs, int maxInsert) : libs_(libs), maxInsert_(maxInsert) {}

  int maxSmallInsert() const { return maxSmallInsert_; }
  int maxInsert() const { return maxInsert_; }

  void nextSection() {
    ++index_;
    pair_ = single_ = single2_ = singlequal_ = -1;
  }

  void store(const std::string& id, const std::string& value) {
    if (!storeFile(id, value)) storeNumber(id, lenientInt(value));
  }

 private:
  bool storeFile(const std::string& id, const std::string& value) {
    Lib& lib = libs_[index_];
    if (id == "q1" || id == "f1") {
      lib.pairs[++pair_].read1file = value;
    } else if (id == "q2" || id == "f2") {
      if (pair_ >= 0) lib.pairs[pair_].read2file = value;  // else there is no pair to complete
    } else if (id == "f") {
      lib.single[++single_].readfile = value;
    } else if (id == "p") {
      lib.single2[++single2_].readfile = value;
    } else if (id == "q") {
      lib.singlequal[++singlequal_].readfile = value;
    } else {
      return false;
    }
    return true;
  }

  void storeNumber(const std::string& id, int number) {
    Lib& lib = libs_[index_];
    if (id == "reads_sum") lib.sreadSum = static_cast<Len_t>(number);
    if (id == "pair_reads_sum") lib.preadSum = static_cast<Len_t>(number);
    if (id == "min_ins") lib.min_ins = number;
    if (id == "max_ins") lib.max_ins = number;
    if (id == "rd_len_cutoff") lib.rd_len_cutoff = number;
    if (id == "reverse_seq") lib.reverse = number;
    if (id == "asm_flags") lib.asm_flag = number;
    if (id == "avg_ins") {
      // KEPT: a value that a later line overwrites still counts (Loadlib.OverwrittenInsertCounts)
      lib.avg_ins = number;
      if (number < MINLARGEINSERT) maxSmallInsert_ = std::max(maxSmallInsert_, number);
      maxInsert_ = std::max(maxInsert_, number);
    }
  }

  Lib* libs_;
  int index_ = -1;  // the current section
  int pair_ = -1;   // last entry stored of each kind
  int single_ = -1;
  int single2_ = -1;
  int singlequal_ = -1;
  int maxSmallInsert_ = 0;  // bases
  int maxInsert_;           // bases
};

}  // namespace

Lib::~Lib() {
  delete[] single;
  delete[] pairs;
  delete[] single2;
}

bool splitColumn(const std::string& line, std::string& id, std::string& value) {
  const std::size_t equals = line.find('=');
  if (equals == std::string::npos) return false;
  id = line.substr(0, equals);
  value = line.substr(equals + 1);
  // KEPT: shorter values keep their carriage return (SplitColumn.ShortValueKeepsCarriageReturn)
  if (value.size() >= 3 && value.back() == '\r') value.pop_back();
  return true;
}

void Loadlib(const std::string& file, Lib*& libs, int& libsNum) {
  libsNum = 0;
  TextInput input(file);
  if (!input.isOpen()) fatal(kInputError, "Fail to open " + file + "\n");
  say("Starting load lib file " + file + "\n");

  const Lines lines = readLines(input);
  libsNum = static_cast<int>(std::count_if(lines.begin(), lines.end(), isHeader));
  say("Find lib number: " + std::to_string(libsNum) + "\n");
  libs = new Lib[static_cast<std::size_t>(libsNum)];

  countFiles(lines, libs);
  for (int i = 0; i < libsNum; ++i) allocateNames(libs[i], i);

  Filler filler(libs, MAXINSERT);
  forEachLine(
      lines, [&] { filler.nextSection(); },
      [&](const std::string& id, const std::string& value) { filler.store(id, value); });
  say("Lib file load finished!\n");

  MAXINSERT = filler.maxInsert();
  const int64_t bigGap = int64_t{readLen} + filler.maxSmallInsert();
  BIGGAPLEN = static_cast<int>(std::min<int64_t>(bigGap, std::numeric_limits<int>::max()));
  say("Max small insert is " + std::to_string(filler.maxSmallInsert()) + "\tbig gap length: " +
      std::to_string(BIGGAPLEN) + "\t Max insert: " + std::to_string(MAXINSERT) + "\n");
}

void releaseSingleQuals() {
  singlequalArrays.clear();
}

void Libsclear(Lib* libs, int /*libsNum*/) {
  delete[] libs;
}

}  // namespace velk
