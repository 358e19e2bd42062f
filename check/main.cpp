// velk-check: looks at what a velk run would read, before the run.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>

#include "check/advice.h"
#include "check/arguments.h"
#include "check/rehearsal.h"
#include "check/report.h"
#include "check/survey.h"
#include "driver/outputFile.h"

namespace velk::check {
namespace {

constexpr int kOwnFailure = 3;

bool wantsColour() {
  const char* const noColour = std::getenv("NO_COLOR");
  return isatty(STDOUT_FILENO) != 0 && (noColour == nullptr || *noColour == '\0');
}

int fail(const std::string& message) {
  std::cerr << "velk-check: " << message << "\n";
  return kOwnFailure;
}

// Whether all that was printed is out.
int finished(int status) {
  std::cout.flush();
  return std::cout.good() ? status : fail("can't write the report");
}

Advice check(Survey& survey) {
  checkArguments(survey);
  checkLibrary(survey);
  checkOutputs(survey);
  checkReads(survey);
  checkAssembly(survey);
  checkPlacement(survey);
  return advise(survey);
}

int run(int argc, char** argv) {
  RefusingListener refusing;
  const ListenerInUse inUse(refusing);
  openStandardDescriptors();
  Survey survey;
  survey.arguments = parseArguments(argc, argv);
  if (survey.arguments.listFindings) {
    printKinds(std::cout);
    return finished(0);
  }
  const Advice advice = check(survey);
  if (survey.arguments.json) {
    printJson(std::cout, survey, advice);
  } else {
    printText(std::cout, survey, advice, wantsColour());
  }
  return finished(statusOf(survey.findings));
}

}  // namespace
}  // namespace velk::check

int main(int argc, char** argv) {
  using namespace velk::check;
  ::signal(SIGPIPE, SIG_IGN);
  try {
    return run(argc, argv);
  } catch (const TextWanted& wanted) {
    std::cout << wanted.text;
    return finished(0);
  } catch (const UsageError& error) {
    return fail(std::string(error.what()) + " (velk-check --help tells more)");
  } catch (const Refusal& refusal) {
    return fail(refusal.message);
  } catch (const std::bad_alloc&) {
    return fail("out of memory");
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
