#include "driver/options.h"

#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <limits>
#include <variant>

#include "driver/velk.h"

namespace velk {
namespace {

// `value` as a float; what a float cannot hold becomes an infinity of the same sign.
float narrowed(double value) {
  constexpr double kLargest = std::numeric_limits<float>::max();
  if (value > kLargest) return std::numeric_limits<float>::infinity();
  if (value < -kLargest) return -std::numeric_limits<float>::infinity();
  return static_cast<float>(value);
}

// The run parameters of the options; the type says how a value is read.
using Parameter = std::variant<std::string*, int*, uint64_t*, double*, float*>;

struct Option {
  char letter;
  Parameter parameter;
};

constexpr Option kOptions[] = {
    {'l', &lib_file},   {'c', &contig_file}, {'s', &scaffold_file}, {'o', &out_file},
    {'O', &OverRatio},  {'M', &mapCut},      {'C', &CuttEdge},      {'k', &Kmer},
    {'t', &thread_num}, {'r', &readLen},     {'m', &initSize},      {'L', &CONTIGLEN},
    {'f', &LoadFactor},
};

const Option* optionOf(char letter) {
  const auto* const found =
      std::find_if(std::begin(kOptions), std::end(kOptions),
                   [&](const Option& option) { return option.letter == letter; });
  return found == std::end(kOptions) ? nullptr : found;
}

// Stores a value as it stands on the command line.
struct Storing {
  const char* value;

  void operator()(std::string* text) const { *text = value; }
  void operator()(int* number) const { *number = lenientInt(value); }
  void operator()(uint64_t* number) const {
    *number = static_cast<uint64_t>(std::strtol(value, nullptr, 10));
  }
  void operator()(double* number) const { *number = std::atof(value); }
  void operator()(float* number) const { *number = narrowed(std::atof(value)); }
};

// Stores `value` in the run parameter of option `letter`; returns false for an unknown letter.
bool setParameter(char letter, const char* value) {
  const Option* const option = optionOf(letter);
  if (option != nullptr) std::visit(Storing{value}, option->parameter);
  return option != nullptr;
}

struct KindOf {
  OptionKind operator()(const std::string* /*text*/) const { return OptionKind::kText; }
  OptionKind operator()(const int* /*number*/) const { return OptionKind::kWhole; }
  OptionKind operator()(const uint64_t* /*number*/) const { return OptionKind::kWhole; }
  OptionKind operator()(const double* /*number*/) const { return OptionKind::kReal; }
  OptionKind operator()(const float* /*number*/) const { return OptionKind::kReal; }
};

}  // namespace

OptionKind kindOfOption(char letter) {
  const Option* const option = optionOf(letter);
  return option == nullptr ? OptionKind::kNone : std::visit(KindOf{}, option->parameter);
}

int mGetOptions(int rgc, char** rgv) {
  int index = 1;
  while (index < rgc) {
    const char* argument = rgv[index];
    if (argument[0] != '-') return index;
    if (index + 1 == rgc) usage();  // -h, unknown, or a value is missing
    // KEPT: only the second character counts, so -lib is -l (Options.OnlySecondCharacterCounts)
    if (!setParameter(argument[1], rgv[index + 1])) usage();
    index += 2;
  }
  return index;
}

}  // namespace velk
