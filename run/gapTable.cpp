#include "run/gapTable.h"

#include <algorithm>
#include <array>
#include <optional>

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

}  // namespace velk::run
