// The verb index: makes a saved index of an assembly, or checks one.
#include "run/verbs.h"

#include "driver/velk.h"
#include "run/assembly.h"
#include "run/checksum.h"
#include "run/failure.h"
#include "run/plan.h"
#include "run/preparation.h"
#include "run/results.h"
#include "run/savedIndex.h"
#include "run/session.h"
#include "run/wholeFile.h"

namespace velk::run {
namespace {

// The header without what follows from the parts.
saved::Header headerOf(const Arguments& arguments, const AssemblyNotes& notes,
                       const FileIdentity& assembly, const FileIdentity& ends) {
  saved::Header header{};
  header.magic = saved::kMagic;
  header.byteOrder = saved::kByteOrder;
  header.version = saved::kVersion;
  header.kmer = arguments.kmer;
  header.shortestContig = arguments.shortestContig;
  header.cut = arguments.cut;
  header.readLength = arguments.cut == 0 ? 0 : arguments.readLength;
  header.assembly = {assembly.bytes, saved::digitsOf(assembly.md5)};
  header.assemblyEnds = saved::digitsOf(ends.md5);
  header.notes = notes;
  if (!arguments.agp.empty()) {
    const FileIdentity agp = identityOf(arguments.agp, Summed::kAll);
    header.agp = {agp.bytes, saved::digitsOf(agp.md5)};
  }
  return header;
}

void requireRegular(const std::string& file) {
  if (factsOf(file).bytes) return;
  throw Failure(Status::kFailed,
                file + " is no regular file; the files of an index are read more than once");
}

}  // namespace

void makeIndex(const Arguments& arguments) {
  Kmer = arguments.kmer;  // read by the index
  Session session(arguments.quiet, arguments.force, arguments.threads);
  requireNoInput(arguments.folder, filesOf(arguments), "index");
  session.judge(checkFiles(arguments.assembly, {}));
  for (const std::string& file : filesOf(arguments)) requireRegular(file);
  session.begin("preparing");
  const FileIdentity ends = identityOf(arguments.assembly, Summed::kEnds);
  const Assembly assembly(arguments.assembly, cutOptionsOf(arguments, arguments.readLength),
                          readPlaceholders(arguments.placeholders, arguments.agp));
  session.judge(checkAssembly(assembly, !arguments.placeholders.empty() || !arguments.agp.empty()));
  session.judge(checkMemory(assembly, arguments.kmer));
  session.begin("indexing");
  SeedIndex index;
  setIndex(index, assembly, arguments.kmer, session.threads());
  if (!index.hasText()) throw Failure(Status::kPreflight, "there is nothing to index");
  session.begin("writing");
  const FileIdentity whole = identityOf(arguments.assembly, Summed::kAll);
  if (!(identityOf(arguments.assembly, Summed::kEnds) == ends)) {
    throw Failure(Status::kFailed, arguments.assembly + " changed while it was read");
  }
  const uint64_t bytes =
      saveIndex(arguments.folder, headerOf(arguments, assembly.notes(), whole, ends),
                {assembly, index, arguments.placeholders}, session.threads());
  session.end();
  session.say("Indexed " + countText(index.text().windows()) + " k-mers of " + arguments.assembly +
              " in " + arguments.folder + ", " + countText(bytes / 1000000 + 1) + " MB.");
}

void makeIndexOfPlan(const PlannedRequest& request) {
  const PlanInUse plan(request);
  requireNoInput(request.output, plan.files(), "index");
  plan.requireCommonFiles();
  Arguments arguments = plan.arguments();
  arguments.libraries.clear();  // the reads need not be there
  arguments.readLength = plan.fixed().readLength;
  arguments.threads = request.threads;
  arguments.force = request.isForced;
  arguments.quiet = request.isQuiet;
  makeIndex(arguments);
}

void checkIndex(const std::string& file, const Arguments& arguments) {
  Session session(arguments.quiet, arguments.force, arguments.threads);
  session.begin("checking");
  const auto saved = std::make_shared<const SavedIndex>(file);
  const saved::Header& header = saved->header();
  Kmer = static_cast<int>(header.kmer);  // read by the index
  saved->requireSums(session.threads());
  const Assembly assembly(file,
                          {static_cast<int>(header.shortestContig), static_cast<int>(header.cut),
                           static_cast<int>(header.readLength)},
                          saved);
  SeedIndex index;
  setIndex(index, assembly, Kmer, session.threads());
  session.end();
  session.say(file + " is whole: " + countText(assembly.scaffolds().size()) + " scaffolds, " +
              countText(index.text().windows()) + " k-mers of " + std::to_string(header.kmer) +
              " bases.");
}

}  // namespace velk::run
