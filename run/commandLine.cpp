#include "run/commandLine.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "run/failure.h"

namespace velk::run {
namespace {

// How many letters have to be put in, taken out or exchanged to make one word of the other.
std::size_t distanceOf(std::string_view one, std::string_view other) {
  std::vector<std::size_t> row(other.size() + 1);  // of the part of `one` that was looked at
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (const char letter : one) {
    std::size_t diagonal = row[0]++;
    for (std::size_t j = 0; j < other.size(); ++j) {
      const std::size_t exchanged = diagonal + (letter == other[j] ? 0 : 1);
      diagonal = row[j + 1];
      row[j + 1] = std::min({exchanged, row[j] + 1, diagonal + 1});
    }
  }
  return row.back();
}

// The option that was meant by one that is not known; empty if none is like it.
std::string optionLike(const CLI::App& app, const std::string& unknown) {
  constexpr std::size_t kFarthest = 2;
  std::string like;
  std::size_t least = kFarthest + 1;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      const std::string known = "--" + name;
      const std::size_t distance = known.starts_with(unknown) ? 0 : distanceOf(unknown, known);
      if (distance >= least) continue;
      least = distance;
      like = known;
    }
  }
  return like;
}

std::string suggestion(const CLI::App& app) {
  constexpr std::size_t kShortest = 4;  // "--" and two letters
  for (std::string unknown : app.remaining()) {
    unknown.erase(std::min(unknown.find('='), unknown.size()));
    if (!unknown.starts_with("--") || unknown.size() < kShortest) continue;
    const std::string like = optionLike(app, unknown);
    if (!like.empty()) return "; did you mean " + like + " by " + unknown + "?";
  }
  return "";
}

}  // namespace

namespace {

// What the library's message leaves unsaid.
std::string advice(const CLI::Error& error, int argc) {
  const std::string_view what = error.what();
  if (what.starts_with("assembly is required") && argc > 1) {
    return "; it comes first, as options of reads take all files behind them";
  }
  if (what.starts_with("Could not convert")) return ", which is no number";
  if (what.starts_with("gaps is required")) {
    return ": numbers of gaps, as in gaps.tsv, or ranges, as 3-7, behind the folder";
  }
  return "";
}

}  // namespace

std::string moreInHelp(const CLI::App& app) {
  return " (" + app.get_name() + " --help tells more)";
}

void parseLine(CLI::App& app, int argc, const char* const* argv) {
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    throw TextWanted{app.help()};
  } catch (const CLI::CallForVersion&) {
    throw TextWanted{app.version() + "\n"};
  } catch (const CLI::Error& error) {
    requireValues(app);
    throw Failure(Status::kUsage,
                  error.what() + advice(error, argc) + suggestion(app) + moreInHelp(app));
  }
}

void requireValues(const CLI::App& app) {
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& value : option->results()) {
      if (value.size() < 2 || value.front() != '-' || app.get_option_no_throw(value) == nullptr) {
        continue;
      }
      throw Failure(Status::kUsage, option->get_name() + ": " + value +
                                        " stands where one of its values (" +
                                        option->get_type_name() + ") should" + moreInHelp(app));
    }
  }
}

void requireNoVerbLike(int argc, const char* const* argv) {
  constexpr std::size_t kFarthest = 2;
  constexpr std::array<std::string_view, 5> kVerbs{"extract", "index", "plan", "task", "gather"};
  if (argc < 2 || access(argv[1], F_OK) == 0) return;
  for (const std::string_view verb : kVerbs) {
    if (distanceOf(argv[1], verb) > kFarthest) continue;
    throw Failure(Status::kUsage, std::string(argv[1]) + ": no such file; did you mean the verb " +
                                      std::string(verb) + "? (velk-run --help tells more)");
  }
}

void parseWithPlan(CLI::App& app, int argc, const char* const* argv) {
  app.allow_extras();
  parseLine(app, argc, argv);
  const std::vector<std::string> more = app.remaining();
  if (more.empty()) return;
  const auto option = std::find_if(more.begin(), more.end(),
                                   [](const std::string& one) { return one.starts_with('-'); });
  refuseWithPlan(app, option == more.end() ? more.front() : *option);
}

void refuseWithPlan(const CLI::App& app, const std::string& given) {
  throw Failure(Status::kUsage,
                given + " can't be given with a plan, which has the files and options of its run" +
                    suggestion(app) + moreInHelp(app));
}

bool asksFor(std::string_view verb, int argc, const char* const* argv) {
  return argc > 1 && argv[1] == verb;
}

}  // namespace velk::run
