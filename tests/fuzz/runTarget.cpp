// Whole runs, each with one worker and with two.
#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "contig/contig.h"
#include "driver/velk.h"
#include "kmer/fetchKmers.h"
#include "streaming/readBuffer.h"
#include "streaming/workerPool.h"
#include "tests/fuzz/fuzz.h"
#include "tests/fuzz/readModel.h"
#include "tests/support/files.h"

// The program's main(), renamed.
int velkMain(int argc, char** argv);

// What a run that ends early holds by plain pointers.
extern "C" const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
  return "leak:velk::Loadlib\nleak:velk::InitialScaffold\nleak:allocateNames\n";
}

namespace velk::fuzz {
namespace {

struct RunInput {
  int batch = 1;                             // length of a batch
  std::vector<std::string> arguments;        // without the program's name and -t
  std::map<std::string, std::string> files;  // content by name
};

constexpr std::size_t kMostArguments = 30;
constexpr std::size_t kMostFiles = 8;
constexpr std::size_t kMember = 50;  // bytes of a gzip member
constexpr int64_t kMostSlots = 4000;

bool isPlainName(const std::string& name) {
  return !name.empty() && name.size() <= 20 && name != "." && name != ".." &&
         name.find('\0') == std::string::npos;
}

std::string gzipFileOf(const std::string& content) {
  if (content.starts_with("\x1f\x8b")) return content;
  return content.starts_with('!') ? content.substr(1) : storedAsGzip(content, kMember);
}

// The arguments without any -t, with small tables only.
std::vector<std::string> tamed(const std::vector<std::string>& lines) {
  std::vector<std::string> arguments;
  for (std::size_t i = 0; i < std::min(lines.size(), kMostArguments); ++i) {
    const std::string argument = lines[i].c_str();
    const bool isLetter = argument.size() > 1 && argument[0] == '-';
    if (isLetter && argument[1] == 't') {
      ++i;
      continue;
    }
    arguments.push_back(argument);
    if (isLetter && argument[1] == 'm' && i + 1 < lines.size()) {
      arguments.push_back(std::to_string(numberIn(lines[++i]) % kMostSlots));
    }
  }
  return arguments;
}

// A byte for the length of a batch, then parts between form feeds: the arguments, one a line, and
// the files, each with its name in the first line. What is in a file whose name ends in ".gz" is
// made a gzip file, unless it is one or begins with '!', which is left out.
//
// Nothing outside the working folder can be named: every '/' is made a '_'. Values of -t are left
// out, large ones of -m cut down.
RunInput runInput(Input input) {
  RunInput made;
  made.batch = 1 + input.next() % 8;
  std::string bytes(input.rest());
  std::replace(bytes.begin(), bytes.end(), '/', '_');
  const std::vector<std::string> parts = partsOf(bytes, '\f');
  made.arguments = tamed(linesOf(parts[0]));
  for (std::size_t i = 1; i < std::min(parts.size(), kMostFiles + 1); ++i) {
    const std::size_t end = std::min(parts[i].find('\n'), parts[i].size());
    const std::string name = parts[i].substr(0, end);
    if (!isPlainName(name)) continue;
    const std::string content = parts[i].substr(std::min(end + 1, parts[i].size()));
    made.files[name] = name.ends_with(".gz") ? gzipFileOf(content) : content;
  }
  return made;
}

using Files = std::map<std::string, std::string>;

struct Outcome {
  int status;
  std::string messages;  // on both streams
  Files files;           // all files of the folder afterwards
};

// The folder in which a run works, and the way back.
class WorkingFolder {
 public:
  WorkingFolder() : cameFrom_(open(".", O_PATH | O_DIRECTORY | O_CLOEXEC)) {
    static const test::TemporaryFolder kFolder;
    require(chdir(kFolder.path("").c_str()) == 0, "no working folder");
  }
  ~WorkingFolder() {
    require(fchdir(cameFrom_) == 0, "no way back");
    close(cameFrom_);
  }
  WorkingFolder(const WorkingFolder&) = delete;
  WorkingFolder& operator=(const WorkingFolder&) = delete;

  // Takes all files out of the folder.
  static Files take() {
    Files files;
    DIR* const folder = opendir(".");
    require(folder != nullptr, "the working folder cannot be read");
    while (const dirent* const entry = readdir(folder)) {
      if (entry->d_type == DT_REG) files[entry->d_name];
    }
    closedir(folder);
    for (auto& [name, content] : files) {
      content = contentOf(name);
      unlink(name.c_str());
    }
    return files;
  }

 private:
  int cameFrom_;
};

// Ends what a run has left behind: it was the process's task.
void cleanUp() {
  if (threads != nullptr) {
    sendSignal(2);
    releaseRows(thread_num);
  }
  delete[] readsA;
  delete[] readsB;
  readsA = readsB = nullptr;
  if (kmerHash != nullptr) freeKmerHash(kmerHash);
  kmerHash = nullptr;
  releaseScaffolds();
  delete[] readSumInEachGap;
  readSumInEachGap = nullptr;
  if (fout.is_open()) fout.close();
  fout.clear();
  foundNumInLib = totalFoundNum = 0;
  insertLength = bufferNum = 0;
}

Outcome run(const RunInput& input, const std::string& workers) {
  startAfresh();
  batchLimit = input.batch;
  for (const auto& [name, content] : input.files) writeFile(name, content);
  std::vector<std::string> arguments{"velk", "-t", workers};
  arguments.insert(arguments.end(), input.arguments.begin(), input.arguments.end());
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());

  Said said;
  int status = 0;
  const int ended =
      statusOf([&] { status = velkMain(static_cast<int>(pointers.size()), pointers.data()); });
  if (ended != kRanOn) status = ended;
  cleanUp();
  return {status, said.errors() + said.output(), WorkingFolder::take()};
}

// The records of a file of reads found, in an order that does not depend on the workers.
std::vector<std::string> sortedRecords(const std::string& content) {
  const std::vector<std::string> lines = linesOf(content);
  std::vector<std::string> records;
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    records.push_back(lines[i] + "\n" + lines[i + 1]);
  }
  std::sort(records.begin(), records.end());
  return records;
}

// The reads that a gap report counts.
uint64_t readsInReport(const std::string& content) {
  uint64_t reads = 0;
  for (const std::string& line : linesOf(content)) {
    const std::vector<std::string> fields = partsOf(line, '\t');
    if (fields.size() == 5) reads += static_cast<uint64_t>(numberIn(fields[2]));
  }
  return reads;
}

void requireSoundEnd(const RunInput& input, const Outcome& outcome) {
  constexpr std::array<int, 5> kStatuses = {0, 1, 2, 3, 255};
  require(std::count(kStatuses.begin(), kStatuses.end(), outcome.status) == 1, "an odd status");
  require(outcome.status == 0 || outcome.messages.ends_with('\n'), "a status without a message");
  const bool isDamaged = outcome.messages.find("damaged gzip file") != std::string::npos;
  require(outcome.status != 0 || !isDamaged, "status 0 of a damaged file");
  for (const auto& [name, content] : input.files) {
    const auto after = outcome.files.find(name);
    require(after != outcome.files.end(), "an input is gone");
    const bool mayBeReplaced = name.ends_with(".gapsinfo") || name.ends_with(".contig") ||
                               name.ends_with(".contigPos") || name == out_file;
    require(mayBeReplaced || after->second == content, "an input is changed");
  }
}

void compare(const RunInput& input) {
  const WorkingFolder folder;
  const Outcome one = run(input, "1");
  requireSoundEnd(input, one);
  const Outcome two = run(input, "2");
  require(one.status == two.status, "two workers end with another status");
  require(one.files.size() == two.files.size(), "two workers write other files");
  for (const auto& [name, content] : one.files) {
    const auto other = two.files.find(name);
    require(other != two.files.end(), "two workers write other files");
    if (name == out_file) {
      require(sortedRecords(content) == sortedRecords(other->second),
              "two workers find other reads");
    } else {
      require(content == other->second, "two workers write another file");
    }
  }
  if (one.status != 0) return;
  const auto found = one.files.find(out_file);
  const auto report = one.files.find(scaffold_file + ".gapsinfo");
  require(found != one.files.end() && report != one.files.end(), "status 0 without the results");
  if (found->second.find("\n>\n") == std::string::npos) {
    require(sortedRecords(found->second).size() == readsInReport(report->second),
            "the report counts other reads than were written");
  }
}

}  // namespace

void tryInput(Input input) {
  compare(runInput(input));
}

}  // namespace velk::fuzz
