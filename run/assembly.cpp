#include "run/assembly.h"

#include <algorithm>
#include <sstream>

#include "driver/velk.h"

namespace velk::run {

Assembly::Assembly(const std::string& file, const CutOptions& options,
                   const PlaceholderRule& placeholders)
    : file_(file) {
  setParameters(options);
  readFasta(file, notes_, [&](const std::string& name, const std::string& bases) {
    add(name, bases, placeholders);
  });
}

// Sets the run parameters by which the engine cuts scaffolds and indexes contigs.
void Assembly::setParameters(const CutOptions& options) const {
  CONTIGLEN = options.shortestContig;
  CuttEdge = options.cut;
  readLen = options.readLength;
  scaffold_file = file_;  // for messages
}

Assembly::Model::~Model() {
  for (const ScaffoldInfo& info : scaffolds) delete[] info.contigsInfo;
}

void Assembly::add(const std::string& name, const std::string& bases,
                   const PlaceholderRule& placeholders) {
  std::stringstream positions;
  const std::string id = std::to_string(model_.scaffolds.size() + 1);
  ScaffoldInfo& info = model_.scaffolds.emplace_back();
  uint32_t first = 0;
  splitScaffold(&info, bases, id, first, gapSum_, positions);
  Scaffold& scaffold = scaffolds_.emplace_back(Scaffold{name, bases.size(), {}, {}, gaps_.size()});
  std::string unused;
  uint64_t number = 0;
  ContigPlace place{};
  while (positions >> unused >> number >> place.start >> place.end) {
    if (number < info.contigsSum) {
      scaffold.contigs.push_back(place);
    } else {
      scaffold.lastBase = place;
    }
  }
  addGaps(bases, placeholders);
}

// Notes the gaps of the last scaffold.
void Assembly::addGaps(const std::string& bases, const PlaceholderRule& placeholders) {
  const Scaffold& scaffold = scaffolds_.back();
  const auto number = static_cast<uint32_t>(scaffolds_.size() - 1);
  for (uint32_t c = 1; c < scaffold.contigs.size(); ++c) {
    Gap gap{number,
            c,
            scaffold.contigs[c - 1].end,
            scaffold.contigs[c].start,
            0,
            model_.scaffolds.back().contigsInfo[c].frontGapSize};
    for (std::size_t at = bases.find('N', gap.start); at < gap.end; at = bases.find('N', at)) {
      const std::size_t end = std::min(bases.find_first_not_of('N', at), gap.end);
      gap.unknown += end - at;
      if (placeholders.holds(scaffold.name, at, end - at)) {
        gap.isPlaceholder = true;
        gap.placeholders.push_back(end - at);
      }
      at = end;
    }
    gaps_.push_back(gap);
  }
}

void Assembly::lengthenPlaceholders(uint64_t bases) {
  for (Gap& gap : gaps_) {
    for (const uint64_t written : gap.placeholders)
      gap.lengthened += std::max(bases, written) - written;
    gap.length += gap.lengthened;
    model_.scaffolds[gap.scaffold].contigsInfo[gap.contigBehind].frontGapSize = gap.length;
  }
}

}  // namespace velk::run
