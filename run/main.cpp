// velk-run: from any assembly and any reads to the reads of its gaps, in one command.
#include <csignal>
#include <exception>
#include <iostream>
#include <new>
#include <string>

#include "driver/listener.h"
#include "driver/outputFile.h"
#include "reads/recordSource.h"
#include "report/report.h"
#include "run/arguments.h"
#include "run/commandLine.h"
#include "run/failure.h"
#include "run/verbs.h"

namespace velk::run {
namespace {

// The engine's messages of progress are not those of this program; its failures end the run.
class QuietListener final : public Listener {
 public:
  void say(std::string_view) override {}
  [[noreturn]] void end(ExitStatus, std::string_view message) override {
    std::string text(message);
    while (text.ends_with('\n')) text.pop_back();
    constexpr std::string_view kMark = "[ERROR]: ";
    if (text.starts_with(kMark)) text.erase(0, kMark.size());
    throw Failure(Status::kFailed, text);
  }
};

int fail(Status status, const std::string& what) {
  std::cerr << "[ERROR]: " << what << std::endl;
  return static_cast<int>(status);
}

std::string makeReport(const std::string& folder, const std::string& summary) {
  return report::writeReport(folder, summary, folder);
}

void doIndex(const IndexArguments& index) {
  const Arguments& given = index.arguments;
  if (!index.toCheck.empty()) {
    checkIndex(index.toCheck, given);
  } else if (!index.plan.empty()) {
    makeIndexOfPlan(
        {index.plan, given.folder, index.root, "", given.threads, given.force, given.quiet});
  } else {
    makeIndex(given);
  }
}

void doVerb(int argc, char** argv) {
  if (asksFor("extract", argc, argv)) {
    const ExtractArguments arguments = parseExtract(argc, argv);
    extractReads(arguments.request, arguments.output);
  } else if (asksFor("index", argc, argv)) {
    doIndex(parseIndex(argc, argv));
  } else if (asksFor("plan", argc, argv)) {
    const PlanArguments plan = parsePlan(argc, argv);
    makePlan(plan.arguments, plan.root);
  } else if (asksFor("task", argc, argv)) {
    const PlannedArguments arguments = parseTask(argc, argv);
    runTask(arguments.request, arguments.task);
  } else if (asksFor("gather", argc, argv)) {
    const PlannedArguments arguments = parseGather(argc, argv);
    gather(arguments.request, arguments.shares, makeReport);
  } else if (hasPlan(argc, argv)) {
    runPlan(parseRunPlan(argc, argv).request, makeReport);
  } else {
    requireNoVerbLike(argc, argv);
    runAll(parseArguments(argc, argv), makeReport);
  }
}

int guarded(int argc, char** argv) {
  QuietListener quiet;
  const ListenerInUse inUse(quiet);
  try {
    doVerb(argc, argv);
    return static_cast<int>(Status::kWhole);
  } catch (const TextWanted& wanted) {
    std::cout << wanted.text << std::flush;
    return std::cout.good() ? static_cast<int>(Status::kWhole)
                            : fail(Status::kFailed, "can't write to standard output");
  } catch (const Failure& failure) {
    return fail(failure.status, failure.what());
  } catch (const reads::InputError& error) {
    return fail(Status::kFailed, error.what());
  } catch (const std::bad_alloc&) {
    return fail(Status::kFailed, "out of memory");
  } catch (const std::exception& error) {
    return fail(Status::kFailed, error.what());
  }
}

}  // namespace
}  // namespace velk::run

int main(int argc, char** argv) {
  velk::openStandardDescriptors();
  // A write that these would kill the run for fails with a message instead.
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  return velk::run::guarded(argc, argv);
}
