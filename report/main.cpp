// velk-report: a page, a drawing or a text of what velk-run has found.
#include <sys/ioctl.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "driver/outputFile.h"
#include "report/arguments.h"
#include "report/report.h"
#include "run/commandLine.h"
#include "run/diskFile.h"
#include "run/failure.h"
#include "run/resultNames.h"
#include "run/wholeFile.h"

namespace velk::report {
namespace {

using run::Failure;
using run::Status;

int fail(Status status, const std::string& what) {
  std::cerr << "[ERROR]: " << what << std::endl;
  return static_cast<int>(status);
}

// Columns of the terminal; 80 where there is none.
std::size_t widthOfTerminal() {
  constexpr std::size_t kUsual = 80;
  constexpr std::size_t kLeast = 40;
  struct winsize size {};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col != 0) {
    return std::max<std::size_t>(kLeast, size.ws_col);
  }
  return kUsual;
}

void print(const std::string& text) {
  run::writeDescriptor(STDOUT_FILENO, "standard output", text);
}

bool isPrinted(const std::string& output) {
  return output.empty() || output == "-";
}

void put(const std::string& text, const std::string& output) {
  if (isPrinted(output)) {
    print(text);
  } else {
    run::writeWhole(output, text);
  }
}

// What an output never replaces: the files that are read, and all others of a result.
std::vector<std::string> inputsOf(const Arguments& arguments) {
  std::vector<std::string> files;
  if (!arguments.found.empty()) {
    const std::string& scaffolds = arguments.folders.front();
    files = {arguments.found, scaffolds};
    for (const char* end : {".gapsinfo", ".contigPos", ".contig"}) files.push_back(scaffolds + end);
    return files;
  }
  for (const std::string& folder : arguments.folders) {
    files.push_back(folder + "/" + run::kSummaryName);
    for (const char* name : run::resultForm().names) files.push_back(folder + "/" + name);
  }
  return files;
}

// Of velk's own files.
void runOnFiles(const Arguments& arguments, const VelkFiles& files) {
  if (arguments.asText) {
    print(textOf(files, widthOfTerminal()));
  } else {
    put(arguments.gap ? drawingOf(files, *arguments.gap) : pageOf(files), arguments.output);
  }
}

void run(const Arguments& arguments) {
  if (!isPrinted(arguments.output)) {
    run::requireNoInput(arguments.output, inputsOf(arguments), "report");
  }
  const std::string& folder = arguments.folders.front();
  const bool areTwo = arguments.folders.size() == 2;
  if (!arguments.found.empty()) {
    runOnFiles(arguments, {arguments.found, folder});
  } else if (arguments.gap) {
    put(drawingOf(folder, *arguments.gap), arguments.output);
  } else if (arguments.asText) {
    const std::size_t width = widthOfTerminal();
    print(areTwo ? comparisonTextOf(folder, arguments.folders[1], width) : textOf(folder, width));
  } else if (areTwo) {
    put(comparisonOf(folder, arguments.folders[1]), arguments.output);
  } else {
    reportOn(folder);
  }
}

int guarded(int argc, char** argv) {
  try {
    run(parseArguments(argc, argv));
    return static_cast<int>(Status::kWhole);
  } catch (const run::TextWanted& wanted) {
    std::cout << wanted.text << std::flush;
    return std::cout.good() ? static_cast<int>(Status::kWhole)
                            : fail(Status::kFailed, "can't write to standard output");
  } catch (const Failure& failure) {
    return fail(failure.status, failure.what());
  } catch (const std::bad_alloc&) {
    return fail(Status::kFailed, "out of memory");
  } catch (const std::exception& error) {
    return fail(Status::kFailed, error.what());
  }
}

}  // namespace
}  // namespace velk::report

int main(int argc, char** argv) {
  velk::openStandardDescriptors();
  // A write that these would kill the program for fails with a message instead.
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  return velk::report::guarded(argc, argv);
}
