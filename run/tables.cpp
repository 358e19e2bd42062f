#include "run/tables.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <cstring>
#include <optional>

#include "run/failure.h"

namespace velk::run {
namespace {

constexpr uint64_t kHighestScore = 1000;  // of BED

constexpr std::array kKindNames{"exact", "estimate", "contained", "anchor"};
static_assert(kKindNames.size() == kReadKinds);

std::string lineOfNames(const std::vector<Library>& libraries) {
  std::string line =
      "gap\tscaffold\tfrom\tto\tN\tlength\tplaceholder\t"
      "contig_before\tbases_before\tcontig_behind\tbases_behind";
  for (const Library& library : libraries) {
    for (const char* kind : kKindNames) line += "\t" + library.name + ":" + kind;
  }
  return line + "\timplied_length\timplied_by\n";
}

}  // namespace

std::string gapTable(const Assembly& assembly, const std::vector<Library>& libraries,
                     const GapCounts& counts) {
  std::string text = lineOfNames(libraries);
  const auto add = [&](uint64_t number) { text += "\t" + std::to_string(number); };
  for (uint64_t g = 0; g < assembly.gaps().size(); ++g) {
    const Gap& gap = assembly.gaps()[g];
    const Scaffold& scaffold = assembly.scaffolds()[gap.scaffold];
    text += std::to_string(g) + "\t" + scaffold.name;
    for (const uint64_t number : {gap.start, gap.end, gap.unknown, gap.length}) add(number);
    text += "\t";
    text += gap.isPlaceholder ? "yes" : "no";
    for (const uint64_t contig : {gap.contigBehind - 1UL, gap.contigBehind + 0UL}) {
      add(contig);
      add(scaffold.contigs[contig].end - scaffold.contigs[contig].start);
    }
    for (uint64_t library = 0; library < libraries.size(); ++library) {
      for (std::size_t kind = 0; kind < kReadKinds; ++kind) {
        add(counts.count(g, library, static_cast<ReadKind>(kind)));
      }
    }
    const std::optional<int64_t> implied = counts.impliedLength(g, libraries);
    text += "\t" + (implied ? std::to_string(*implied) : ".");
    add(counts.spans(g));
    text += "\n";
  }
  return text;
}

std::string gapBed(const Assembly& assembly, const GapCounts& counts) {
  std::string text;
  for (uint64_t g = 0; g < assembly.gaps().size(); ++g) {
    const Gap& gap = assembly.gaps()[g];
    text += assembly.scaffolds()[gap.scaffold].name;
    for (const uint64_t number :
         {gap.start, gap.end, g, std::min(kHighestScore, counts.belonging(g))}) {
      text += "\t" + std::to_string(number);
    }
    text += "\t.\n";
  }
  return text;
}

std::string insertTable(const std::vector<Library>& libraries) {
  std::string text = "library\torientation\tfrom\tto\tpairs\n";
  for (const Library& library : libraries) {
    for (std::size_t o = 0; o < library.inserts.size(); ++o) {
      const std::vector<uint64_t>& bins = library.inserts[o].bins();
      for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        if (bins[bin] == 0) continue;
        text.append(library.name).append("\t").append(kOrientationNames[o]);
        for (const uint64_t number :
             {InsertHistogram::startOf(bin), InsertHistogram::startOf(bin + 1), bins[bin]}) {
          text.append("\t").append(std::to_string(number));
        }
        text += "\n";
      }
    }
  }
  return text;
}

namespace {

static_assert(std::endian::native == std::endian::little, "gaps.idx has its numbers so");

constexpr std::string_view kMark = "VELKGAP\x01";  // with the version

// Behind the mark.
struct IndexHead {
  uint64_t gaps;
  uint64_t reach;
};
constexpr std::size_t kEntries = kMark.size() + sizeof(IndexHead);  // where they begin

}  // namespace

std::string gapIndexText(const std::vector<GapEntry>& entries, uint64_t reach) {
  std::string text(kMark);
  const IndexHead head{entries.size() - 1, reach};
  text.append(reinterpret_cast<const char*>(&head), sizeof head);
  text.append(reinterpret_cast<const char*>(entries.data()), entries.size() * sizeof(GapEntry));
  return text;
}

GapIndex::GapIndex(const std::string& file) : file_(file), descriptor_(file, O_RDONLY) {
  std::array<char, kMark.size()> mark{};
  IndexHead head{};
  struct stat status {};
  const auto size =
      fstat(descriptor_.get(), &status) == 0 ? static_cast<uint64_t>(status.st_size) : 0;
  if (size >= kEntries) {
    read(mark.data(), mark.size(), 0);
    read(&head, sizeof head, mark.size());
  }
  if (std::string_view(mark.data(), mark.size()) != kMark ||
      (size - kEntries) / sizeof(GapEntry) != head.gaps + 1) {
    throw Failure(Status::kFailed, file_ + " is no index of gaps, or is damaged");
  }
  gaps_ = head.gaps;
  reach_ = head.reach;
}

void GapIndex::read(void* bytes, std::size_t count, uint64_t from) const {
  const ssize_t got = pread(descriptor_.get(), bytes, count, static_cast<off_t>(from));
  if (got == static_cast<ssize_t>(count)) return;
  if (got >= 0) errno = EIO;
  failFile(file_, "read");
}

std::array<GapEntry, 2> GapIndex::entriesOf(uint64_t gap) const {
  std::array<GapEntry, 2> entries{};
  read(entries.data(), sizeof entries, kEntries + gap * sizeof(GapEntry));
  return entries;
}

}  // namespace velk::run
