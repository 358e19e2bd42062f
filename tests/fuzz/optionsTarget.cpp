// Options and the checks of their values. Input: the arguments, one a line.
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "driver/fatal.h"
#include "driver/velk.h"
#include "tests/fuzz/fuzz.h"
#include "tests/support/runParameters.h"

namespace velk::fuzz {
namespace {

constexpr std::size_t kMostArguments = 40;

// What the options should make of the arguments.
struct Model {
  test::RunParameters values;
  int status = kRanOn;
  int stoppedAt = 0;  // where no usage() ended the run
};

float asFloat(double value) {
  if (std::abs(value) <= static_cast<double>(std::numeric_limits<float>::max()) ||
      std::isnan(value)) {
    return static_cast<float>(value);
  }
  return value < 0 ? -std::numeric_limits<float>::infinity()
                   : std::numeric_limits<float>::infinity();
}

bool store(test::RunParameters& values, char letter, const std::string& value) {
  if (letter == 'l') values.lib_file = value;
  if (letter == 'c') values.contig_file = value;
  if (letter == 's') values.scaffold_file = value;
  if (letter == 'o') values.out_file = value;
  if (letter == 'O') values.OverRatio = std::strtod(value.c_str(), nullptr);
  if (letter == 'M') values.mapCut = std::strtod(value.c_str(), nullptr);
  if (letter == 'C') values.CuttEdge = intIn(value);
  if (letter == 'k') values.Kmer = intIn(value);
  if (letter == 't') values.thread_num = intIn(value);
  if (letter == 'r') values.readLen = intIn(value);
  if (letter == 'm') values.initSize = static_cast<uint64_t>(numberIn(value));
  if (letter == 'L') values.CONTIGLEN = intIn(value);
  if (letter == 'f') values.LoadFactor = asFloat(std::strtod(value.c_str(), nullptr));
  return letter != '\0' && std::string_view("lcsoOMCktrmLf").find(letter) != std::string::npos;
}

Model modelOf(const std::vector<std::string>& arguments) {
  Model model;
  std::size_t i = 1;
  for (; i < arguments.size() && arguments[i].starts_with('-'); i += 2) {
    const char letter = arguments[i].size() > 1 ? arguments[i][1] : '\0';
    if (i + 1 == arguments.size() || !store(model.values, letter, arguments[i + 1])) {
      model.status = kUserError;
      return model;
    }
  }
  model.stoppedAt = static_cast<int>(i);
  return model;
}

bool same(double one, double other) {
  return one == other || (std::isnan(one) && std::isnan(other));
}

void compareParameters(const test::RunParameters& model) {
  require(lib_file == model.lib_file && contig_file == model.contig_file &&
              scaffold_file == model.scaffold_file && out_file == model.out_file,
          "a file option has another value");
  require(same(OverRatio, model.OverRatio) && same(mapCut, model.mapCut) &&
              same(LoadFactor, model.LoadFactor),
          "a ratio has another value");
  require(CuttEdge == model.CuttEdge && Kmer == model.Kmer && thread_num == model.thread_num &&
              readLen == model.readLen && initSize == model.initSize &&
              CONTIGLEN == model.CONTIGLEN,
          "a number has another value");
}

std::string complaintAbout(const test::RunParameters& values) {
  if (values.thread_num < 1) return "[ERROR]: -t must be at least 1\n";
  if (values.Kmer < 0) return "[ERROR]: -k must be at least 0\n";
  if (values.CuttEdge < 0) return "[ERROR]: -C must be at least 0\n";
  if (values.readLen < 0) return "[ERROR]: -r must be at least 0\n";
  return "";
}

void compare(std::vector<std::string>& arguments) {
  std::vector<char*> pointers;
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  const Model model = modelOf(arguments);
  Said said;
  int stoppedAt = 0;
  const int status = statusOf(
      [&] { stoppedAt = mGetOptions(static_cast<int>(pointers.size()), pointers.data()); });
  require(status == model.status, "the options end the run, or do not");
  require(stoppedAt == model.stoppedAt, "the options end at another argument");
  compareParameters(model.values);
  if (status != kRanOn) {
    const std::string line = "kmer length(<=63), default=" + std::to_string(Kmer) + "\n";
    require(said.output().find(line) != std::string::npos, "the help does not list -k");
    return;
  }
  const std::string complaint = complaintAbout(model.values);
  require(statusOf(checkParameters) == (complaint.empty() ? kRanOn : int{kUserError}),
          "the check of the values ends the run, or does not");
  require(said.errors() == complaint, "the check of the values says something else");
}

}  // namespace

void tryInput(Input input) {
  std::vector<std::string> arguments{"velk"};
  for (const std::string& line : linesOf(input.rest())) {
    arguments.emplace_back(line.c_str());  // an argument ends at a NUL
    if (arguments.size() == kMostArguments) break;
  }
  compare(arguments);
}

}  // namespace velk::fuzz
