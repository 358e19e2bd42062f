#include "run/commandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
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
    throw Failure(Status::kUsage, error.what() + suggestion(app) + moreInHelp(app));
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
