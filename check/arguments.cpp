#include "check/arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <string_view>

#include "driver/options.h"

namespace velk::check {
namespace {

constexpr const char* kVersion = "velk-check 1.13";

constexpr const char* kDescription =
    "Looks at what a velk run would read, before the run: at the options, the library file, the\n"
    "assembly and a sample of the reads. Prints what velk would ignore, lose or stop at, how to "
    "fix\n"
    "it, and the command line to run. Writes no file.\n";

constexpr const char* kFooter =
    "\nOPTION VALUE ...: velk's own arguments, unchanged:\n"
    "  -l FILE  library file            -s FILE  scaffold FASTA      -c FILE  contig FASTA\n"
    "  -o FILE  reads found             -t N     threads             -k N     k-mer length\n"
    "  -r N     longest read of a pair  -m N     slots of the table  -f X     load factor\n"
    "  -L N     shortest contig         -C N     cut of contig ends  -O X, -M X  shares\n"
    "\n"
    "Levels: error (velk stops, or the result would be wrong or lost), warning (the result may be\n"
    "less than it could be), note (changes no result).\n"
    "\n"
    "Exit status: 0 nothing above a note, 1 warnings, 2 errors, 3 wrong usage or a failure of\n"
    "velk-check itself.\n"
    "\n"
    "Example: velk-check -l reads.lib -s scaffolds.fa -o found.fa -t 4\n";

class Formatter : public CLI::Formatter {
 public:
  Formatter() { column_width(24); }
  std::string make_usage(const CLI::App* /*app*/, std::string /*name*/) const override {
    return "Usage: velk-check [--deep] [--json] [--sample N] OPTION VALUE ...\n";
  }
};

bool takesValue(const std::string& own) {
  return own == "--sample";
}

bool isOwn(std::string_view argument) {
  return argument.starts_with("--") || argument == "-h";
}

// Sorts the arguments into velk's and velk-check's own.
std::vector<std::string> takeOwn(int argc, char** argv, Arguments& arguments) {
  std::vector<std::string> own;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (isOwn(argument)) {
      own.push_back(argument);
      if (takesValue(argument) && i + 1 < argc) own.emplace_back(argv[++i]);
    } else if (argument.starts_with('-')) {
      if (argument.size() < 2 || kindOfOption(argument[1]) == OptionKind::kNone) {
        throw UsageError("velk has no option " + argument);
      }
      if (i + 1 == argc) throw UsageError("option " + argument + " has no value");
      arguments.velk.push_back(argument);
      arguments.velk.emplace_back(argv[++i]);
    } else {
      arguments.velk.push_back(argument);
      // velk looks at nothing behind a stray argument.
      while (++i < argc) {
        if (isOwn(argv[i])) own.emplace_back(argv[i]);
      }
    }
  }
  return own;
}

}  // namespace

Arguments parseArguments(int argc, char** argv) {
  Arguments arguments;
  CLI::App app(kDescription, "velk-check");
  app.footer(kFooter);
  app.formatter(std::make_shared<Formatter>());
  app.set_help_flag("-h,--help", "print this help");
  app.set_version_flag("--version", kVersion, "print the version");
  app.add_flag("--deep", arguments.deep,
               "look at all of every read file, with the checksums of gzip files");
  app.add_flag("--json", arguments.json, "print the report as a JSON document");
  app.add_option("--sample", arguments.sample,
                 "records looked at from the start of each read file [10000]")
      ->type_name("N")
      ->check(CLI::Range(uint64_t{1}, uint64_t{1000000000}).description(""));
  app.add_flag("--list-findings", arguments.listFindings, "print all kinds of findings");

  std::vector<std::string> own = takeOwn(argc, argv, arguments);
  std::reverse(own.begin(), own.end());  // as CLI11 wants it
  try {
    app.parse(own);
  } catch (const CLI::CallForHelp&) {
    throw TextWanted{app.help()};
  } catch (const CLI::CallForVersion& version) {
    throw TextWanted{std::string(version.what()) + "\n"};
  } catch (const CLI::ParseError& error) {
    throw UsageError(error.what());
  }
  if (argc <= 1) throw UsageError("no arguments");
  return arguments;
}

}  // namespace velk::check
